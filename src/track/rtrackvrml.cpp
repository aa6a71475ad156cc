#include "track/rtrackvrml.h"

#include "foundation/qinfo.h"
#include "foundation/qreport.h"

RTrackVRML::RTrackVRML(const RTrackHost& newHost) : RTrack(newHost)
{}

RTrackVRML::~RTrackVRML() = default;

bool RTrackVRML::Load()
{
  return RTrack::Load();
}

bool RTrackVRML::Save()
{
  return RTrack::Save();
}

bool RTrackVRML::CollisionOBB()
{
  qlog(QLOG_FATAL, "RTrackVRML::CollisionOBB", "RTrackVRML:CollisionOBB() is OBSOLETE; use AABBTree");
  return false;
}

bool RTrackVRML::AddNode(std::unique_ptr<RTrackNode> node)
{
  if (nodes.Add(std::move(node)))
    return true;
  QWARN("RTrackVRML:AddNodes(); out of nodes");
  return false;
}

bool RTrackVRML::RemoveNode(int i)
{
  return nodes.Remove(i);
}

RTrackNode* RTrackVRML::FindNode(const std::string&) const
{
  return nullptr;
}

void RTrackVRML::ApplyVisibility()
{}
