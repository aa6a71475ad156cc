#pragma once

#include "geometry/dgpulink.h"
#include "geometry/dgpushader.h"

#include <array>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// All shader programs. A reference to one is its number in the table, counted from 1; 0 is no program.
class DGPUShaderManager
{
public:
  static constexpr int MAX_OPTIONS = 31;

  // Takes the compiler of DGlobal, when programs are on there. A second call is reported.
  void Init();
  bool IsInitialized() const { return initialized; }
  // For each program that is compiled from now on. Reported when there is no space.
  void AddCompilerOption(std::string_view option);
  void ClearCompilerOptions() { options.clear(); }
  const std::vector<std::string>& GetCompilerOptions() const { return options; }

  // The program of a file, compiled at the first call for it. 0 when it can't be, which is reported the first time.
  int MakeObject(DProgramStage stage, const std::string& file);
  // Null, reported, for a number that isn't in the table.
  DGPUShader* GetGPUShader(int ref);
  // The program of its stage until another is bound or all are released.
  void Bind(int ref);
  void Release();
  // What the bound programs are linked to; null when none is bound or they can't be linked, reported once for each
  // combination.
  DGPULink* GetLink();
  // Reads all programs again that were read from the file; each keeps what it has when that fails.
  void Reload(const std::string& file);
  void Clear(); // while the context still stands

private:
  using Combination = std::array<int, DPROGRAM_STAGES>;
  struct Linked
  {
    Combination generations{};
    std::unique_ptr<DGPULink> link;
  };

  bool initialized = false;
  std::array<std::string, DPROGRAM_STAGES> profiles;
  std::vector<std::string> options;
  std::vector<std::unique_ptr<DGPUShader>> shaders;
  std::map<std::pair<DProgramStage, std::string>, int> byFile;
  Combination bound{};
  std::map<Combination, Linked> links;
  Linked* current = nullptr; // of what is bound
};
// The one of the process.
DGPUShaderManager& DTheGPUShaders();
