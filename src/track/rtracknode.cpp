#include "track/rtracknode.h"

RTrackNode::RTrackNode() = default;
RTrackNode::~RTrackNode() = default;

void RTrackNode::CalcBounds()
{}

const char* RTrackNode::FlagName(uint32_t flag)
{
  static constexpr struct
  {
    uint32_t flag;
    const char* name;
  } names[] = {
      {SKY, "Sky"},
      {COLLIDE, "Collide"},
      {SURFACE, "Surface"},
      {RELATIVE_POS, "RelativePos"},
      {INVISIBLE, "Invisible"},
      {LIGHTMAP, "Lightmap"},
      {RECEIVE_SHADOW, "ReceiveShadow"},
      {RECEIVE_LIGHT, "ReceiveLight"},
      {MOVABLE, "Movable"},
      {HIDE_WHEN_DARK, "Hide when dark"},
      {HIDE_WHEN_LIGHT, "Hide when light"},
  };
  for (const auto& n : names)
    if (n.flag == flag)
      return n.name;
  return "F_???";
}
