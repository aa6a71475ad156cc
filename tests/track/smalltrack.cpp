#include "track/smalltrack.h"

#include "geometry/dgeode.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr const char* SPECIAL = R"(; special data of a small track
custom
{
  secret=42 ; not ours
}
grid
{
  count=1
  pos0
  {
    from
    {
      x=1.5
      y=0.25
      z=-3
    }
    note=pole position
  }
  pos7
  {
    from
    {
      x=7
    }
  }
}
timeline
{
  count=2
  ; the start
  line0
  {
    name=start
  }
  line1
  {
    name=split
    from
    {
      x=-4
      z=30
    }
    to
    {
      x=4
      z=30
    }
  }
}
triggerline
{
  count=1
  line0
  {
    command=say hello
    name=greeting
  }
}
tcam
{
  count=1
  cam0
  {
    radius=50
    zoom_edge=20
    zoom_close=60
    zoom_far=30
    src
    {
      k=5
    }
    keyframes
    {
      count=1
      keyframe0
      {
        t=2
        fov=35
      }
    }
    sm_profile=3
  }
}
waypoint
{
  count=1
  wp0
  {
    pos=1 2 3
    lon=4.5
  }
}
audio
{
  count=1
  source0
  {
    sample=birds/lark.wav
    pos=5 0 5
    radius=25
  }
}
gfx
{
  sky=0.1 0.2 0.3 1
  fog
  {
    mode=1
  }
}
marshal_posts
{
  count=1
  post0
  {
    user_id=12
  }
}
)";

constexpr const char* TRAFFIC = R"(; traffic
waypoints
{
  count=2
  waypoint0
  {
    pos=0 0 0
    forward=1
    left=-1
    right=-1
    velocity=30
  }
  waypoint1
  {
    pos=0 0 50
    forward=0
    left=-1
    right=-1
  }
}
cars
{
  car0
  {
    car=van
    waypoint=1
  }
}
)";

constexpr const char* GEOMETRY = R"(objects
{
  box
  {
    file=box.dof
  }
  tower
  {
    file= Tower.DOF
    flags=1
  }
}
)";

} // namespace

SmallTrack::SmallTrack() : inRoot(root.Path())
{
  Write("track.ini", "track\n{\n  name=Small\n  id=small\n}\n");
}

std::string SmallTrack::Path(std::string_view leaf) const
{
  const std::string directory = root.Path("data/tracks/small");
  return leaf.empty() ? directory : directory + "/" + std::string(leaf);
}

void SmallTrack::Write(std::string_view leaf, std::string_view content) const
{
  root.Write("data/tracks/small/" + std::string(leaf), content);
}

std::string SmallTrack::Text(std::string_view leaf) const
{
  return FileText(Path(leaf));
}

std::unique_ptr<RTrackVRML> SmallTrack::New() const
{
  auto track = std::make_unique<RTrackVRML>();
  track->SetName("small");
  return track;
}

std::unique_ptr<RTrackVRML> SmallTrack::Load() const
{
  auto track = New();
  return track->Load() ? std::move(track) : nullptr;
}

void SmallTrack::WriteRoad(int lines) const
{
  std::string text = "; the road\nlines\n{\n  lateral_divisions=2\n  count=" + std::to_string(lines) + "\n}\n";
  for (int i = 0; i < lines; ++i) {
    const std::string z = std::to_string(i * 10);
    text += "line" + std::to_string(i) + "\n{\n  cp0=-4 0 " + z + "\n  cp1=4 0 " + z + "\n}\n";
  }
  Write("spline.ini", text);
}

void SmallTrack::WriteModel(std::string_view leaf) const
{
  DGeode geode("box");
  geode.AddMaterial()->name = "wall";
  DGeob* geob = geode.AddGeob();
  for (int i = 0; i < 8; ++i)
    geob->vertex.push_back({i & 1 ? 1 : -1, i & 2 ? 2 : 0, i & 4 ? 1 : -1});
  for (int i :
       {0, 2, 1, 1, 2, 3, 4, 5, 6, 5, 7, 6, 0, 1, 4, 1, 5, 4, 2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 3, 7, 5})
    geob->index.push_back(static_cast<uint16_t>(i));
  geob->AddBurst({.start = 0, .count = 3 * geob->IndexCount()});
  geob->FinalizeGeob();
  fs::create_directories(Path());
  if (!geode.ExportDOF(Path(leaf)))
    throw std::runtime_error("can't write a model");
}

void SmallTrack::WriteAll() const
{
  Write("special.ini", SPECIAL);
  Write("traffic.ini", TRAFFIC);
  Write("geometry.ini", GEOMETRY);
  WriteRoad(10);
  WriteModel("box.dof");
  WriteModel("tower.dof");
}

std::map<std::string, std::string> SmallTrack::SavedFiles() const
{
  std::map<std::string, std::string> files;
  for (const char* leaf : {"special.ini", "spline.ini", "traffic.ini", "geometry.ini"})
    files[leaf] = Text(leaf);
  return files;
}

int SmallTrack::StrayFiles() const
{
  int count = 0;
  for (const auto& entry : fs::directory_iterator(Path())) {
    const std::string extension = entry.path().extension();
    count += entry.path().filename() != "cache" && extension != ".ini" && extension != ".dof";
  }
  return count;
}
