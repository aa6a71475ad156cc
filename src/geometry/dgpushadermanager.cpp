#include "geometry/dgpushadermanager.h"

#include "foundation/qreport.h"
#include "geometry/dglobal.h"

namespace {

constexpr size_t Index(DProgramStage stage)
{
  return static_cast<size_t>(stage);
}

} // namespace

void DGPUShaderManager::Init()
{
  const DProgramCompiler& compiler = DGlobals().programCompiler;
  if (!DGlobals().programsOn || !compiler.profile)
    return;
  if (initialized) {
    QERR("DGPUShaderManager:Init() called twice");
    return;
  }
  initialized = true;
  for (const DProgramStage stage : {DProgramStage::VERTEX, DProgramStage::FRAGMENT, DProgramStage::GEOMETRY})
    profiles[Index(stage)] = compiler.profile(stage);
  const std::string& geometry = profiles[Index(DProgramStage::GEOMETRY)];
  qinfo("CG profiles: vertex=%s, fragment=%s, geometry=%s", profiles[0].c_str(), profiles[1].c_str(),
        geometry.empty() ? "unknown" : geometry.c_str());
  if (geometry.empty())
    QWARN("DGPUShaderManager::Init() Geometry shading is not supported on this card (ATI/Intel?).");
}

void DGPUShaderManager::AddCompilerOption(std::string_view option)
{
  if (options.size() < MAX_OPTIONS)
    options.emplace_back(option);
  else
    QERR("DGPUShaderManager:AddCompilerOption(%s) out of space", std::string(option).c_str());
}

int DGPUShaderManager::MakeObject(DProgramStage stage, const std::string& file)
{
  const auto [entry, isNew] = byFile.try_emplace({stage, file}, 0);
  if (!isNew)
    return entry->second;
  auto shader = std::make_unique<DGPUShader>(stage);
  if (!shader->LoadAndCreateFromFile(file, DGlobals().programCompiler, options))
    return 0;
  shaders.push_back(std::move(shader));
  return entry->second = static_cast<int>(shaders.size());
}

DGPUShader* DGPUShaderManager::GetGPUShader(int ref)
{
  if (ref < 1 || ref > static_cast<int>(shaders.size())) {
    QERR("DGPUShaderManager:GetGPUShader(ref=%d) out of range", ref);
    return nullptr;
  }
  DGPUShader* shader = shaders[static_cast<size_t>(ref - 1)].get();
  if (!shader)
    QERR("DGPUShaderManager:GetGPUShader(ref=%d) gives 0-pointer", ref);
  return shader;
}

void DGPUShaderManager::Bind(int ref)
{
  if (ref == 0) {
    QWARN("DGPUShaderManager:Bind(0) is not accepted");
    return;
  }
  const DGPUShader* shader = GetGPUShader(ref);
  if (!shader || profiles[Index(shader->stage)].empty() || bound[Index(shader->stage)] == ref)
    return;
  bound[Index(shader->stage)] = ref;
  current = nullptr;
}

void DGPUShaderManager::Release()
{
  bound = {};
  current = nullptr;
}

DGPULink* DGPUShaderManager::GetLink()
{
  if (current)
    return current->link.get();
  if (bound == Combination{} || !DGlobals().hasContext)
    return nullptr;
  std::array<const DGPUShader*, DPROGRAM_STAGES> stages{};
  Combination generations{};
  for (size_t i = 0; i < bound.size(); ++i)
    if (bound[i]) {
      stages[i] = shaders[static_cast<size_t>(bound[i] - 1)].get();
      generations[i] = stages[i]->GetGeneration();
    }
  Linked& linked = links[bound];
  if (linked.generations != generations) {
    linked.generations = generations;
    linked.link = DGPULink::Create(stages);
  }
  current = &linked;
  return linked.link.get();
}

void DGPUShaderManager::Reload(const std::string& file)
{
  for (const auto& shader : shaders)
    if (shader->file == file)
      shader->LoadAndCreateFromFile(file, DGlobals().programCompiler, options);
  for (const DProgramStage stage : {DProgramStage::VERTEX, DProgramStage::FRAGMENT, DProgramStage::GEOMETRY})
    if (const auto failed = byFile.find({stage, file}); failed != byFile.end() && failed->second == 0)
      byFile.erase(failed);
  current = nullptr;
}

void DGPUShaderManager::Clear()
{
  Release();
  links.clear();
  shaders.clear();
  byFile.clear();
  options.clear();
  initialized = false;
}

DGPUShaderManager& DTheGPUShaders()
{
  // Never destroyed: at the end of the process the context may be gone, and the driver takes all back anyway.
  static DGPUShaderManager& manager = *new DGPUShaderManager;
  return manager;
}
