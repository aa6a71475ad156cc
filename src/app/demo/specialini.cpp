#include "app/demo/trackfiles.h"

// What the simulator must know beyond the scenery: special.ini.

namespace {

constexpr int GRID_CARS = 20;

// A place on the road's plane, and one a car's length ahead.
struct CarPlace
{
  DVector3 from, to;
};

CarPlace PlaceCar(const DemoCourse& course, double distance, double offset)
{
  const double at = std::fmod(distance + course.length, course.length);
  const int i = static_cast<int>(at / course.spacing);
  const DemoSection &a = course.At(i), &b = course.At(i + 1);
  const double t = at / course.spacing - i;
  const auto point = [&](double lateral, double ahead) {
    const DemoPlan p = glm::mix(a.Lateral(lateral), b.Lateral(lateral), t) + a.tangent * ahead;
    return DemoAt(p, DemoMix(a.HeightAt(lateral), b.HeightAt(lateral), t) +
                         (b.height - a.height) / course.spacing * ahead);
  };
  return {point(offset, 0), point(offset, 3)};
}

void WriteLine(DemoIni& ini, std::string_view name, const DVector3& from, const DVector3& to)
{
  ini.Open(name).Coordinates("from", from).Coordinates("to", to);
}

// Across the road and a little beyond its edges.
void WriteLineAt(DemoIni& ini, std::string_view name, const DemoSection& s)
{
  const DVector3 left = s.Edge(DEMO_LEFT), right = s.Edge(DEMO_RIGHT), beyond = (right - left) * 0.15f;
  WriteLine(ini, name, left - beyond, right + beyond);
}

void WriteGrid(DemoIni& ini, const DemoCourse& course)
{
  ini.Comment("The starting grid, two by two, 8 m apart.").Open("grid").Key("count", GRID_CARS);
  for (int n = 0; n < GRID_CARS; ++n) {
    const double back = -12 - 8.0 * n;
    const DemoSection& s = course.At(course.IndexAt(back));
    const size_t side = n % 2 == 0 ? DEMO_LEFT : DEMO_RIGHT;
    const CarPlace place = PlaceCar(course, back, s.Sign(static_cast<int>(side)) * s.half[side] * 0.45);
    WriteLine(ini, DemoNumbered("pos", n, 1), place.from, place.to);
    ini.Close();
  }
  ini.Close();
}

void WritePits(DemoIni& ini, const DemoCourse& course)
{
  const DemoPits& pits = course.pits;
  const int boxes = pits.Exist() ? 10 : 0;
  ini.Open("pit").Key("count", boxes).Key("side", pits.side);
  const auto lateral = [&](double distance, double intoLane) {
    const DemoSection& s = course.At(course.IndexAt(distance));
    const DemoSide& side = s.side[static_cast<size_t>(pits.side)];
    return s.Sign(pits.side) * (s.half[static_cast<size_t>(pits.side)] + side.island + side.lane * intoLane);
  };
  for (int n = 0; n < boxes; ++n) {
    const double d = DemoMix(pits.boxesFrom + 8, pits.boxesTo - 8, (n + 0.5) / boxes);
    const DemoSection& s = course.At(course.IndexAt(d));
    CarPlace place = PlaceCar(course, d, lateral(d, 0.72));
    const float edge = static_cast<float>(s.EdgeHeight(pits.side) - 0.02);
    place.from.y = place.to.y = edge; // the lane is level
    WriteLine(ini, DemoNumbered("pos", n, 1), place.from, place.to);
    ini.Close();
  }
  ini.Comment("in, in at the speed limit, out at the speed limit, out");
  const double stations[] = {pits.from + 40, pits.boxesFrom - 20, pits.boxesTo + 20, pits.to - 40};
  for (int n = 0; n < 4; ++n) {
    ini.Open(DemoNumbered("inout_line", n, 1));
    DVector3 ends[2] = {};
    if (pits.Exist())
      for (int k = 0; k < 2; ++k) {
        const DemoSection& s = course.At(course.IndexAt(stations[n]));
        ends[k] = DemoAt(s.Lateral(lateral(stations[n], k)), s.EdgeHeight(pits.side));
      }
    ini.Key("from", ends[0]).Key("to", ends[1]).Close();
  }
  ini.Close();
}

void WriteLines(DemoIni& ini, const DemoCourse& course)
{
  ini.Comment("Start and finish, then the two intermediate times.").Open("timeline").Key("count", 3);
  const char* names[] = {"Start/finish", "Sector 1", "Sector 2"};
  for (int n = 0; n < 3; ++n) {
    WriteLineAt(ini, DemoNumbered("line", n, 1), course.At(course.IndexAt(course.length * n * 0.34)));
    ini.Key("name", names[n]).Close();
  }
  ini.Key("point_to_point", 0)
      .Key("auto_return", 0)
      .Comment("of line 0, in road widths")
      .Key("start_width", 1.5)
      .Close();
  const struct
  {
    const char *name, *command;
    double at;
  } triggers[] = {{"Behind the start", "echo first metres", 0.02},
                  {"Lake view", "audio fade water 1", 0.24},
                  {"Back straight", "echo back straight", 0.45},
                  {"Last bend", "audio fade water 0", 0.9}};
  ini.Open("triggerline").Key("count", 4);
  for (int n = 0; n < 4; ++n) {
    WriteLineAt(ini, DemoNumbered("line", n, 1), course.At(course.IndexAt(course.length * triggers[n].at)));
    ini.Key("name", triggers[n].name).Key("command", triggers[n].command).Close();
  }
  ini.Close();
}

void WriteSpring(DemoIni& ini, const char* name)
{
  ini.Open(name).Key("k", 0.0).Key("mass", 1.0).Key("damping", 10.0).Key("maxdist", 10.0).Close();
}

void WriteKeyframes(DemoIni& ini, const DVector3& from, const DVector3& to)
{
  ini.Open("keyframes").Key("count", 2);
  for (int n = 0; n < 2; ++n) {
    const DVector3& p = n == 0 ? from : to;
    ini.Open(DemoNumbered("keyframe", n, 1)).Key("fov", 40.0 - 8 * n).Key("x", static_cast<double>(p.x));
    ini.Key("y", static_cast<double>(p.y)).Key("z", static_cast<double>(p.z));
    ini.Key("pitch", -6.0).Key("roll", 0.0).Key("yaw", 20.0 * n).Key("t", 60.0 * n).Close();
  }
  ini.Close();
}

void WriteCameras(DemoIni& ini, const DemoCourse& course)
{
  const int count = std::clamp(static_cast<int>(course.length / 160), 3, 120);
  ini.Comment("Television cameras along the lap, on the side where a bend opens.").Open("tcam").Key("count", count);
  for (int n = 0; n < count; ++n) {
    const int i = course.IndexAt(course.length * (n + 0.5) / count);
    const DemoSection& s = course.At(i);
    const int side = s.curvature > 0 ? DEMO_LEFT : DEMO_RIGHT;
    const double out = s.half[static_cast<size_t>(side)] + std::max(3.0, s.side[static_cast<size_t>(side)].barrier + 2);
    const DVector3 pos = DemoAt(s.Lateral(s.Sign(side) * out), s.height + 4 + n % 3);
    const DemoSection& ahead = course.At(i + 3);
    ini.Open(DemoNumbered("cam", n, 1)).Coordinates("pos", pos);
    ini.Coordinates("pos2", DemoAt(DemoPlan(pos.x, pos.z) + (ahead.at - s.at), static_cast<double>(pos.y)));
    const bool dolly = n % 7 == 3;
    ini.Coordinates("posdolly", dolly ? pos + DemoAt(s.tangent * 12.0, 0) : DVector3(0.0f));
    ini.Coordinates("rot", DVector3(0.0f)).Coordinates("rot2", DVector3(0.0f));
    ini.Key("radius", 110.0).Key("group", 0).Key("zoom_edge", 14.0).Key("zoom_close", 48.0).Key("zoom_far", 18.0);
    ini.Key("flags", dolly ? 9 : 1);
    WriteSpring(ini, "src");
    WriteSpring(ini, "dst");
    ini.Open("cube").Key("edge", DemoAt(course.At(i - 18).at, course.At(i - 18).height));
    ini.Key("close", DemoAt(s.at, s.height)).Key("far", DemoAt(course.At(i + 18).at, course.At(i + 18).height)).Close();
    if (n == 1)
      WriteKeyframes(ini, pos, pos + DVector3(0, 6, 0));
    else
      ini.Open("keyframes").Key("count", 0).Close();
    ini.Close();
  }
  ini.Close();
}

void WriteWayPoints(DemoIni& ini, const DemoCourse& course)
{
  const int count = std::clamp(static_cast<int>(course.length / 60), 8, 390);
  ini.Open("waypoint").Key("count", count);
  for (int n = 0; n < count; ++n) {
    const DemoSection& s = course.At(course.IndexAt(course.length * n / count));
    ini.Open(DemoNumbered("wp", n, 1)).Key("pos", DemoAt(s.at, s.height));
    ini.Key("posdir", DemoAt(s.at + s.tangent * 5.0, s.height)).Key("left", s.Edge(DEMO_LEFT));
    ini.Key("right", s.Edge(DEMO_RIGHT)).Key("lon", s.distance).Close();
  }
  ini.Close();
}

void WriteSounds(DemoIni& ini, const DemoCourse& course)
{
  const DemoSection& stand = course.At(course.IndexAt(-25));
  const bool lake = course.lake.radius > 0;
  ini.Open("audio").Key("count", lake ? 2 : 1).Open("source0").Key("sample", "crowd.wav");
  ini.Key("pos", DemoAt(stand.Lateral(-stand.half[DEMO_LEFT] - 25), stand.height + 6)).Key("radius", 120.0).Close();
  if (lake)
    ini.Open("source1")
        .Key("sample", "water.wav")
        .Key("pos", DemoAt(course.lake.centre, course.lake.level))
        .Key("radius", course.lake.radius * 1.2)
        .Close();
  ini.Close();
}

void WriteSurfaces(DemoIni& ini)
{
  struct Surface
  {
    const char *type, *pattern;
    double grip, rolling, noise;
    const char* dust;
  };
  static constexpr Surface surfaces[] = {
      {"road", "asphalt", 1.0, 1.0, 0.0, "0.6 0.6 0.6"},   {"road", "pitlane", 0.98, 1.0, 0.0, "0.6 0.6 0.6"},
      {"road", "concrete", 0.95, 1.0, 0.0, "0.7 0.7 0.7"}, {"kerb", "kerb", 0.9, 1.0, 0.02, "0.8 0.4 0.4"},
      {"grass", "grass", 0.55, 2.5, 0.03, "0.4 0.5 0.2"},  {"gravel", "gravel", 0.6, 6.0, 0.04, "0.8 0.7 0.5"},
      {"water", "water", 0.2, 9.0, 0.0, "0.8 0.9 1.0"},    {"stone", "plain", 0.8, 1.0, 0.0, "0.7 0.7 0.7"},
  };
  ini.Comment("What the materials are under a tyre; a pattern names materials, the last that fits wins.")
      .Open("surfaces");
  int n = 0;
  for (const Surface& s : surfaces) {
    ini.Open(DemoNumbered("surf", n++, 1)).Key("type", s.type).Key("subtype", 0).Key("grip_factor", s.grip);
    ini.Key("rolling_resistance_factor", s.rolling).Key("dust_color", s.dust).Key("pattern", s.pattern);
    if (s.noise > 0)
      ini.Key("road_noise", s.noise)
          .Key("road_noise_frequency", "1.5")
          .Key("road_noise_amplitude", "1")
          .Key("road_noise_threshold", "0 0 0 0");
    ini.Close();
  }
  ini.Close();
}

void WriteMarshals(DemoIni& ini, const DemoCourse& course)
{
  const auto posts = DemoPosts(course);
  ini.Open("marshal_posts").Key("count", static_cast<int>(posts.size()));
  for (size_t n = 0; n < posts.size(); ++n) {
    const std::string name = DemoNumbered("post", static_cast<int>(n), 2);
    ini.Open(DemoNumbered("post", static_cast<int>(n), 1)).Key("actors", 1).Open("actor0").Key("type", 0);
    for (const char* state : {"yellow", "green", "red"})
      ini.Key(std::string("state_") + state, name + "_" + state);
    ini.Close()
        .Key("spline_from", posts[n].from)
        .Key("spline_to", posts[n].to)
        .Key("user_id", static_cast<int>(n) + 1)
        .Close();
  }
  ini.Close();
}

} // namespace

std::string DemoSpecialIni(const DemoCourse& course)
{
  DemoIni ini;
  ini.Comment("What the simulator must know of this track beyond its scenery.");
  ini.Comment("Lengths in metres, y is up. The editor writes what it changes and leaves the rest as it stands.");
  WriteGrid(ini, course);
  WritePits(ini, course);
  WriteLines(ini, course);
  WriteCameras(ini, course);
  WriteWayPoints(ini, course);
  WriteSounds(ini, course);
  ini.Open("gfx")
      .Key("sky", "0.55 0.68 0.86 1.0")
      .Key("night", 0)
      .Key("exposure", 1.0)
      .Key("colorgrade", "colorgrade_default.tga");
  ini.Comment("towards the sun").Key("sun", DemoSun() * 1500.0f);
  ini.Open("sun").Key("enable", 1).Key("intensity", 1.0).Key("year", 2008).Key("month", 7).Key("day", 20);
  ini.Key("latitude", 52.0).Key("longitude", 5.0).Key("timezone", 1.0).Key("azimuth_offset", 0.0);
  ini.Key("ambient", "0.62 0.64 0.68 1").Key("diffuse", "0.80 0.76 0.68 1").Key("specular", "0.4 0.4 0.38 1").Close();
  ini.Open("fog").Comment("0 exponential, 1 its square, 2 linear").Key("mode", 0).Key("density", 0.00035);
  ini.Key("start", 200.0)
      .Key("end", 4000.0)
      .Key("color", "0.80 0.86 0.91 1")
      .Key("rayleigh", 0.0024)
      .Key("mie", 0.00013)
      .Close();
  ini.Open("shadows").Key("intensity_projected", 0.3).Close().Close();
  ini.Open("env").Open("wind").Key("direction", "1 0 0.3").Key("power", 2.5).Key("power_variance", 0.3).Close();
  ini.Key("rain", 0.0).Key("snow", 0.0).Key("clouds", 0.6).Key("sunny", 0.9).Close();
  WriteSurfaces(ini);
  WriteMarshals(ini, course);
  ini.Open("pacecar").Key("turn_off_distance", 200.0).Close();
  return ini.Take();
}
