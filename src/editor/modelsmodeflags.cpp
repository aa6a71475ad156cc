#include "editor/modelsmodeflags.h"

#include "editor/editstate.h"
#include "track/rtracknode.h"

SharedFlags CompareFlags(std::span<const SelectedNode> nodes)
{
  if (nodes.empty())
    return {};
  uint32_t all = ~uint32_t{0};
  uint32_t any = 0;
  for (const SelectedNode& selected : nodes) {
    all &= selected.node->flags;
    any |= selected.node->flags;
  }
  return {all, any & ~all};
}

std::string FlagNames(uint32_t flags)
{
  std::string names;
  for (uint32_t bit = 1; bit != 0; bit <<= 1)
    if (flags & bit)
      names += std::string(RTrackNode::FlagName(bit)) + " ";
  return names;
}
