#pragma once

#include "fuzzing/check.h"
#include "support/unattendedui.h"
#include "tools/asecut.h"
#include "tools/asecutmultisub.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

// A directory in memory with the scene in it; one for all runs of the process. It is the current one during a run only:
// the fuzzer finds its corpus by relative paths.
class FuzzScene
{
public:
  FuzzScene()
  {
    namespace fs = std::filesystem;
    std::string name = (fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path()) / "pavex_cutXXXXXX";
    FUZZ_CHECK(::mkdtemp(name.data()) != nullptr);
    path = name;
  }
  ~FuzzScene()
  {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  FuzzScene(const FuzzScene&) = delete;
  FuzzScene& operator=(const FuzzScene&) = delete;

  void Enter(std::string_view bytes)
  {
    before = std::filesystem::current_path();
    std::filesystem::current_path(path);
    std::ofstream(path / "scene.ase", std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  // What was written lies in the directory under a name to its end, and nothing lies beside the directory.
  void Leave(const char* directory)
  {
    namespace fs = std::filesystem;
    fs::current_path(before);
    for (const auto& entry : fs::directory_iterator(path))
      FUZZ_CHECK(entry.path().filename() == "scene.ase" || entry.path().filename() == directory);
    if (!fs::exists(path / directory))
      return;
    for (const auto& entry : fs::directory_iterator(path / directory)) {
      FUZZ_CHECK(entry.is_regular_file() && entry.path().string().ends_with(".ase"));
      CheckEnd(entry.path());
      fs::remove(entry.path());
    }
  }

private:
  static void CheckEnd(const std::filesystem::path& file)
  {
    constexpr std::string_view END = "\t*MATERIAL_REF 0\n}\n";
    std::ifstream in(file, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    FUZZ_CHECK(text.ends_with(END));
  }

  std::filesystem::path path;
  std::filesystem::path before;
};

// Whatever the scene is, what is cut from it is whole and stays in its directory.
inline void FuzzCut(std::string_view bytes)
{
  static FuzzScene scene;
  const QuietReports quiet;
  scene.Enter(bytes);
  UnattendedUi ui;
  static_cast<void>(ASECut("scene.ase", ui));
  scene.Leave("output");
}

inline void FuzzCutMultiSub(std::string_view bytes)
{
  static FuzzScene scene;
  const QuietReports quiet;
  scene.Enter(bytes);
  UnattendedUi ui;
  static_cast<void>(ASECutMultiSub("scene.ase", "parts", true, ui));
  scene.Leave("parts");
}
