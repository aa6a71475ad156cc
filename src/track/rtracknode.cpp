#include "track/rtracknode.h"

#include "geometry/dgeob.h"
#include "geometry/dgeode.h"
#include "scene/worldgeodenode.h"

RTrackNode::RTrackNode() = default;
RTrackNode::~RTrackNode() = default;

DGeode* RTrackNode::Geode() const
{
  return sceneNode ? sceneNode->GetGeode() : nullptr;
}

float RTrackNode::LodDistance(int level) const
{
  const WorldLODNode* node = sceneNode ? sceneNode->GetLOD() : nullptr;
  return node && level >= 0 && level < LODS ? node->GetLODDistance(level) : 0;
}

void RTrackNode::CalcBounds()
{
  center = DVector3(0.0f);
  radius = 0;
  DGeode* geode = Geode();
  if (!geode || geode->GetNoofGeobs() == 0)
    return;
  const DBox box = geode->GetBoundingBox();
  center = box.Center();
  radius = box.Radius();
}

void RTrackNode::ApplyFlags()
{
  CopyFlagsToGeobs();
  CopyFlagToBursts(RECEIVE_SHADOW);
  CopyFlagToBursts(RECEIVE_LIGHT);
}

void RTrackNode::CopyFlagsToGeobs()
{
  for (int level = 0; sceneNode && level < sceneNode->GeodeCount(); ++level)
    for (const auto& geob : sceneNode->GetGeode(level)->geob)
      geob->userFlags = flags;
}

void RTrackNode::CopyFlagToBursts(Flag flag)
{
  constexpr uint32_t BURST_SHADOW = 4;
  constexpr uint32_t BURST_LIGHT = 8;
  const uint32_t bit = flag == RECEIVE_SHADOW ? BURST_SHADOW : BURST_LIGHT;
  if (!Geode())
    return;
  for (const auto& geob : Geode()->geob)
    for (DBurst& burst : geob->burst)
      burst.flags = flags & flag ? burst.flags | bit : burst.flags & ~bit;
}

void RTrackNode::SetVisible(bool on)
{
  if (sceneNode)
    sceneNode->SetVisible(on);
}

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
