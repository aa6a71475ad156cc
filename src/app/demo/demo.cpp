#include "app/demo/demo.h"

#include "app/demo/datafiles.h"
#include "app/demo/fontmaker.h"
#include "app/demo/writer.h"
#include "foundation/qreport.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

constexpr const char* USAGE =
    "pavex-demo [--root DIR]                                  writes data/tracks/lakeside below DIR (default: .)\n"
    "pavex-demo [--root DIR] --centreline FILE.csv --name NAME  the same from a line of x, y, width right, width left\n"
    "    --exports: also export/scenery.ase and scenery_multisub.ase, and SCGT/wrl/*.wrl, in the track's directory\n"
    "pavex-demo [--root DIR] --font FILE.ttf                  writes data/fonts/eurostile11.dtf and .tga\n"
    "pavex-demo [--root DIR] --data                           writes the small pictures of the data root\n";

struct Options
{
  std::string root = ".", centreline, name, font;
  bool data = false, exports = false, help = false;
};

bool ParseOptions(const std::vector<std::string>& arguments, Options& options)
{
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::string& a = arguments[i];
    std::string* value = a == "--root"         ? &options.root
                         : a == "--centreline" ? &options.centreline
                         : a == "--name"       ? &options.name
                         : a == "--font"       ? &options.font
                                               : nullptr;
    if (a == "--data")
      options.data = true;
    else if (a == "--exports")
      options.exports = true;
    else if (a == "--help")
      options.help = true;
    else if (!value || i + 1 == arguments.size() || arguments[i + 1].empty()) {
      QERR("Unknown or incomplete argument '%s'", a.c_str());
      return false;
    } else
      *value = arguments[++i];
  }
  if (options.centreline.empty() != options.name.empty()) {
    QERR("--centreline and --name go together");
    return false;
  }
  return true;
}

// A directory's name, and the track's id.
bool IsTrackName(const std::string& name)
{
  return !name.empty() && name.size() <= 32 &&
         name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_") == std::string::npos;
}

bool ReadLine(const Options& options, DemoLine& line)
{
  constexpr uintmax_t MOST = 16 << 20;
  std::error_code error;
  const uintmax_t size = std::filesystem::file_size(options.centreline, error); // an error for anything but a file
  std::ifstream file(options.centreline, std::ios::binary);
  if (error || !file || size > MOST) {
    QERR("Can't read '%s'", options.centreline.c_str());
    return false;
  }
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  std::string problem;
  if (!DemoParseLine(text, line, problem)) {
    QERR("'%s' is no centre line: %s", options.centreline.c_str(), problem.c_str());
    return false;
  }
  return true;
}

bool MakeTrack(const Options& options)
{
  DemoLine line;
  const std::string name = options.name.empty() ? "lakeside" : options.name;
  if (!IsTrackName(name)) {
    QERR("'%s' is no track name: 1 to 32 of A-Z, a-z, 0-9 and _", name.c_str());
    return false;
  }
  if (options.centreline.empty())
    line = DemoLakesideLine();
  else if (!ReadLine(options, line))
    return false;
  const DemoCourse course = DemoMakeCourse(name, line);
  const DemoScenery scenery = DemoBuildScenery(course);
  if (!DemoWriteTrack(options.root, course, scenery, options.exports))
    return false;
  std::printf("%s: %.0f m, %d cross-sections, %zu nodes, %d triangles\n", name.c_str(), course.length, course.Count(),
              scenery.nodes.size(), scenery.Triangles());
  return true;
}

} // namespace

int DemoMain(const std::vector<std::string>& arguments)
{
  Options options;
  if (!ParseOptions(arguments, options)) {
    std::fputs(USAGE, stderr);
    return 1;
  }
  if (options.help) {
    std::fputs(USAGE, stdout);
    return 0;
  }
  bool done = true;
  if (options.data)
    done = DemoWriteData(options.root);
  if (done && !options.font.empty())
    done = DemoMakeFont(options.root, options.font);
  if (options.data || !options.font.empty())
    return done ? 0 : 1;
  return MakeTrack(options) ? 0 : 1;
}
