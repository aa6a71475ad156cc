// Paints a track's scenery from given places, without a window, into pictures to look at.
// scene_view TRACKDIR WIDTH HEIGHT [OUT.ppm X Y Z YAW PITCH FOV]...
#include "foundation/qinfo.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dpipe.h"
#include "geometry/dworld.h"
#include "scene/ddirector.h"
#include "scene/worldgeodenode.h"
#include "scene/worldrenderer.h"
#include "scene/worldscene.h"

#include <SDL.h>
#include <epoxy/gl.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

// The keys of the nodes, in file order: what stands before a brace one level down.
std::vector<std::string> NodesOf(const std::string& path)
{
  std::vector<std::string> names;
  std::string before;
  int depth = 0;
  if (FILE* file = std::fopen(path.c_str(), "r")) {
    char line[512];
    while (std::fgets(line, sizeof line, file)) {
      const std::string text(line);
      const auto from = text.find_first_not_of(" \t");
      const auto to = text.find_last_not_of(" \t\r\n");
      const std::string word = from == std::string::npos ? "" : text.substr(from, to - from + 1);
      if (word == "{" && ++depth == 2)
        names.push_back(before);
      else if (word == "}")
        --depth;
      else
        before = word;
    }
    std::fclose(file);
  }
  return names;
}

void LoadNodes(WorldScene& scene, const std::string& dir, std::vector<std::unique_ptr<WorldGeodeNode>>& nodes)
{
  const QInfo info(dir + "/geometry.ini");
  for (const std::string& name : NodesOf(dir + "/geometry.ini")) {
    const std::string key = "objects." + name;
    std::string file;
    if (!info.GetString(key + ".file", file))
      continue;
    float lod[10] = {};
    for (int i = 0; i < 10; ++i)
      lod[i] = info.GetFloat(key + ".lod" + std::to_string(i) + "_z");
    auto node = std::make_unique<WorldGeodeNode>(&scene, name.c_str());
    if (!node->Load(dir + "/" + file, lod, false))
      continue;
    for (int level = 0; level < node->GeodeCount(); ++level)
      for (const auto& geob : node->GetGeode(level)->geob)
        geob->userFlags = static_cast<uint32_t>(info.GetInt(key + ".flags", 6));
    scene.AddNode(node.get());
    nodes.push_back(std::move(node));
  }
}

void WritePicture(const char* path, int width, int height)
{
  const auto rowSize = static_cast<size_t>(width) * 3;
  std::vector<unsigned char> pixels(rowSize * static_cast<size_t>(height));
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadPixels(0, 0, width, height, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
  if (FILE* file = std::fopen(path, "wb")) {
    std::fprintf(file, "P6 %d %d 255\n", width, height);
    for (int y = height - 1; y >= 0; --y)
      std::fwrite(pixels.data() + rowSize * static_cast<size_t>(y), 1, rowSize, file);
    std::fclose(file);
  }
}

double MilliSeconds()
{
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace

int main(int argc, char** argv)
{
  if (argc < 4)
    return 2;
  const std::string dir = argv[1];
  const int width = std::atoi(argv[2]), height = std::atoi(argv[3]);
  setenv("SDL_VIDEODRIVER", "offscreen", 0);
  SDL_Init(SDL_INIT_VIDEO);
  SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 24);
  SDL_Window* window = SDL_CreateWindow("view", 0, 0, width, height, SDL_WINDOW_OPENGL);
  SDL_GLContext context = SDL_GL_CreateContext(window);
  if (!context)
    return 1;
  DGlobals().hasContext = true;
  WorldScene scene;
  scene.GetRenderer()->SetPipe(&DThePipe());
  scene.GetRenderer()->CreateStats();
  if (const char* flags = std::getenv("VIEW_FLAGS"))
    scene.GetRenderer()->SetFlags(static_cast<uint32_t>(std::strtoul(flags, nullptr, 0)));
  if (const char* samples = std::getenv("VIEW_ANISOTROPY"))
    DGlobals().maxAnisotropy = std::atoi(samples);
  DGlobals().mapPath.Add(dir);
  scene.GetWorld()->LoadShaders(dir + "/track.shd");
  std::vector<std::unique_ptr<WorldGeodeNode>> nodes;
  LoadNodes(scene, dir, nodes);

  DCameraAnimated camera;
  DRail rail;
  rail.AddCamera(&camera);
  DDirector director;
  director.AddRail(&rail);
  director.SetRail(0, 0);
  scene.SetFrameport(0, &director, {0, 0, width, height});
  for (int i = 4; i + 6 < argc; i += 7) {
    const auto number = [&](int n) { return static_cast<float>(std::atof(argv[i + n])); };
    camera.Go({number(1), number(2), number(3)}, DVector3(0.0f), number(4), number(5), 0);
    camera.SetFOV(number(6));
    double best = 1e9;
    for (int frame = 0; frame < 4; ++frame) {
      const double start = MilliSeconds();
      glClearColor(scene.background.r, scene.background.g, scene.background.b, 1);
      glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
      scene.Paint();
      glFinish();
      best = std::min(best, MilliSeconds() - start);
    }
    WritePicture(argv[i], width, height);
    const RenderStats& stats = *scene.GetRenderer()->GetStats();
    std::printf("%s: %.1f ms, %zu blocks, %d draws, %d set-ups, %lld triangles, %d state changes, error %x\n", argv[i],
                best, scene.GetRenderBlocks().size(), stats.drawCalls, stats.shaderChanges,
                static_cast<long long>(stats.Triangles()), DThePipe().Changes(), glGetError());
  }
  nodes.clear();
  return 0;
}
