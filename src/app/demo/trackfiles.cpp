#include "app/demo/trackfiles.h"

#include <charconv>

DemoIni& DemoIni::Open(std::string_view name)
{
  text += Indent() + std::string(name) + "\n" + Indent() + "{\n";
  ++level;
  return *this;
}

DemoIni& DemoIni::Close()
{
  --level;
  text += Indent() + "}\n";
  return *this;
}

DemoIni& DemoIni::Comment(std::string_view comment)
{
  text += Indent() + "; " + std::string(comment) + "\n";
  return *this;
}

DemoIni& DemoIni::Blank()
{
  text += "\n";
  return *this;
}

DemoIni& DemoIni::Key(std::string_view key, std::string_view value)
{
  text += Indent() + std::string(key) + "=" + std::string(value) + "\n";
  return *this;
}

DemoIni& DemoIni::Key(std::string_view key, int value)
{
  return Key(key, std::to_string(value));
}

DemoIni& DemoIni::Key(std::string_view key, double value)
{
  return Key(key, DemoNumber(value));
}

DemoIni& DemoIni::Key(std::string_view key, const DVector3& value)
{
  return Key(key, DemoNumber(value.x) + " " + DemoNumber(value.y) + " " + DemoNumber(value.z));
}

DemoIni& DemoIni::Coordinates(std::string_view key, const DVector3& value)
{
  return Open(key)
      .Key("x", static_cast<double>(value.x))
      .Key("y", static_cast<double>(value.y))
      .Key("z", static_cast<double>(value.z))
      .Close();
}

std::string DemoNumber(double value)
{
  char buffer[64];
  const auto [end, error] = std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::fixed, 6);
  const std::string_view text(buffer, static_cast<size_t>(end - buffer));
  return text == "-0.000000" ? "0.000000" : std::string(text);
}

std::vector<DemoPost> DemoPosts(const DemoCourse& course)
{
  // One outside each bend before its apex, and more where the way between two is long.
  std::vector<DemoPost> posts;
  const auto add = [&](int section, int side) { posts.push_back({course.Wrap(section), side, 0, 0}); };
  for (const DemoCorner& c : course.corners)
    add((c.first + c.apex) / 2, 1 - c.inside);
  add(course.IndexAt(course.length * 0.02), DEMO_LEFT);
  std::sort(posts.begin(), posts.end(), [](const DemoPost& a, const DemoPost& b) { return a.section < b.section; });
  const int widest = static_cast<int>(260 / course.spacing);
  for (size_t i = 0; i < posts.size() && posts.size() < 60; ++i) {
    const int next = i + 1 < posts.size() ? posts[i + 1].section : posts[0].section + course.Count();
    if (next - posts[i].section > widest * 1.4)
      posts.insert(posts.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                   {posts[i].section + std::min(widest, (next - posts[i].section) / 2), DEMO_LEFT, 0, 0});
  }
  // Two that would stand together are one.
  for (size_t i = 1; i < posts.size();)
    if (posts[i].section - posts[i - 1].section < 8)
      posts.erase(posts.begin() + static_cast<std::ptrdiff_t>(i));
    else
      ++i;
  for (DemoPost& p : posts)
    p.section = course.Wrap(p.section);
  std::sort(posts.begin(), posts.end(), [](const DemoPost& a, const DemoPost& b) { return a.section < b.section; });
  for (size_t i = 0; i < posts.size(); ++i) {
    posts[i].from = posts[i].section;
    posts[i].to = i + 1 < posts.size() ? posts[i + 1].section : course.Count();
  }
  return posts;
}

std::string DemoTrackIni(const DemoCourse& course)
{
  std::string title = course.name;
  if (!title.empty() && title[0] >= 'a' && title[0] <= 'z')
    title[0] = static_cast<char>(title[0] - 'a' + 'A');
  DemoIni ini;
  ini.Comment("Who and what this track is. The editor only reads this file.").Open("track");
  ini.Key("name", title).Key("creator", "pavex-demo").Key("type", "vrml");
  ini.Key("length", std::to_string(std::lround(course.length)) + " m").Key("id", course.name);
  ini.Key("version", "049f").Key("preview", 1).Key("racing_class", 0).Key("skin", 0).Close();
  return ini.Take();
}

std::string DemoSplineIni(const DemoCourse& course)
{
  DemoIni ini;
  ini.Comment("The road's cross-sections: cp0 the left edge, cp1 the right one.").Open("lines");
  ini.Key("count", course.Count()).Key("paint_start", 0).Key("paint_end", course.Count() - 1);
  ini.Key("lateral_divisions", 4).Key("use_mesh_hits", 0).Close();
  for (int i = 0; i < course.Count(); ++i) {
    const DemoSection& s = course.At(i);
    ini.Open(DemoNumbered("line", i, 1)).Key("cp0", s.Edge(DEMO_LEFT)).Key("cp1", s.Edge(DEMO_RIGHT));
    ini.Key("long_grip", 1.0).Key("elevation", 0.0).Key("flags", 0).Close();
  }
  return ini.Take();
}

std::string DemoTrafficIni(const DemoCourse& course)
{
  DemoIni ini;
  ini.Comment("A ring of way points in the middle of the road, slower in the bends.").Open("waypoints");
  const int step = 6, count = std::min(course.Count() / step, 4000);
  ini.Key("count", count);
  for (int n = 0; n < count; ++n) {
    const DemoSection& s = course.At(n * step);
    double k = 0;
    for (int a = 0; a < 2 * step; ++a)
      k = std::max(k, std::abs(course.At(n * step + a).curvature));
    const int speed = static_cast<int>(std::clamp(std::sqrt(9.0 / std::max(k, 1e-4)), 12.0, 55.0));
    ini.Open(DemoNumbered("waypoint", n, 1)).Key("pos", DemoAt(s.at, s.height)).Key("forward", (n + 1) % count);
    ini.Key("left", -1).Key("right", -1).Key("flags", 0).Key("velocity", speed).Close();
  }
  ini.Close().Open("cars");
  const char* cars[] = {"van", "hatchback"};
  for (int n = 0; n < 2; ++n)
    ini.Open(DemoNumbered("car", n, 1)).Key("car", cars[n]).Key("waypoint", n * count / 2).Close();
  return ini.Close().Take();
}

std::string DemoGeometryIni(const DemoScenery& scenery)
{
  DemoIni ini;
  ini.Comment("The scenery: 1 sky, 2 collide, 4 surface, 16 not seen at first. Models with a lod<N>_z have coarser "
              "levels beside them.");
  ini.Open("objects");
  for (const DemoNode& node : scenery.nodes) {
    ini.Open(node.name).Key("file", node.name + ".dof").Key("flags", node.flags);
    for (size_t i = 0; i < node.distances.size(); ++i)
      ini.Key(DemoNumbered("lod", static_cast<int>(i), 1) + "_z", static_cast<int>(std::lround(node.distances[i])));
    ini.Close();
  }
  return ini.Close().Take();
}

std::string DemoShaderFile()
{
  struct Entry
  {
    const char *material, *map, *parent, *comment;
  };
  static constexpr Entry entries[] = {
      {"asphalt", "asphalt.tga", "vf_standard", nullptr},
      {"pitlane", "pitlane.tga", "vf_standard", nullptr},
      {"grass", "grass.tga", "vf_standard", nullptr},
      {"gravel", "gravel.tga", "vf_standard", nullptr},
      {"kerb", "kerb.tga", "vf_standard", nullptr},
      {"concrete", "concrete.tga", "vf_standard", nullptr},
      {"plain", "plain.tga", "vf_standard", "what is painted: its colour is in the vertices"},
      {"water", "water.tga", "vf_standard", nullptr},
      {"crowd", "crowd.tga", "vf_standard", nullptr},
      {"garages", "garages.tga", "vf_standard", nullptr},
      {"signs", "signs.tga", "vf_standard", nullptr},
      {"armco", "armco.tga", "vf_standard_transparent", nullptr},
      {"trees", "trees.tga", "vf_standard_transparent", nullptr},
      {"fence", "fence.tga", "vf_standard_transparent", "a net: thinner than a pixel from afar, so it is blended"},
  };
  DemoIni ini;
  ini.Comment("How the materials of this track are drawn: a tree shader_<material> for each.");
  ini.Comment("The trees vf_... are only there to be inherited from.");
  for (const char* parent : {"vf_standard", "vf_standard_transparent"}) {
    ini.Open(parent).Open("vertex_shader").Key("file", "dyn_standard_v.cg").Close();
    ini.Open("fragment_shader").Key("file", "standard_f.cg").Close();
    ini.Key("diffuse", "0.75 0.72 0.66 1").Key("ambient", "0.62 0.65 0.70 1").Key("specular", "0 0 0 1").Close();
  }
  for (const Entry& e : entries) {
    ini.Blank();
    if (e.comment)
      ini.Comment(e.comment);
    ini.Open(std::string("shader_") + e.material + "~" + e.parent);
    const bool leafy = std::string_view(e.parent) != "vf_standard";
    if (leafy)
      ini.Key("cull", "none").Key("cast_shadow", 1);
    ini.Open("layer0").Key("map", e.map).Key("wrap_s", "repeat").Key("wrap_t", "repeat");
    if (std::string_view(e.material) == "fence")
      ini.Key("blendfunc", "blend").Key("depthwrite", 0);
    else if (leafy)
      ini.Comment("the holes are cut out, so nothing needs sorting").Key("alphafunc", "gequal 110");
    ini.Close().Close();
  }
  ini.Blank().Open("shader_sky~vf_standard").Key("sky", 1).Key("fog", 0).Key("cull", "none");
  ini.Open("layer0").Key("map", "sky.tga").Key("wrap_t", "clamp").Key("depthwrite", 0).Close().Close();
  return ini.Take();
}
