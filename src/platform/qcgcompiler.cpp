#include "platform/qcgcompiler.h"

#include "foundation/qfile.h"
#include "platform/qcgcache.h"
#include "platform/qcgsource.h"

#include <glslang/Include/ResourceLimits.h>
#include <glslang/Public/ResourceLimits.h>
#include <glslang/Public/ShaderLang.h>
#include <glslang/SPIRV/GlslangToSpv.h>
#include <spirv_cross/spirv_cross_c.h>

#include <algorithm>
#include <cctype>
#include <memory>

namespace {

constexpr auto MESSAGES = static_cast<EShMessages>(EShMsgDefault | EShMsgReadHlsl | EShMsgSpvRules |
                                                   EShMsgHlslLegalization | EShMsgHlslDX9Compatible);

EShLanguage Language(DProgramStage stage)
{
  return stage == DProgramStage::VERTEX ? EShLangVertex : EShLangFragment;
}

std::string Directory(const std::string& file)
{
  const size_t slash = file.find_last_of("/\\");
  return slash == file.npos ? std::string() : file.substr(0, slash + 1);
}

// Files that a program includes stand beside the one that names them.
class Includer : public glslang::TShader::Includer
{
public:
  IncludeResult* includeLocal(const char* header, const char* includer, size_t depth) override
  {
    const std::string path = Directory(includer) + header;
    auto content = std::make_unique<std::string>();
    if (depth > 32 || !QReadFile(path, *content, true))
      return nullptr;
    const std::string* kept = content.release();
    return new IncludeResult(path, kept->data(), kept->size(), const_cast<std::string*>(kept));
  }
  IncludeResult* includeSystem(const char* header, const char* includer, size_t depth) override
  {
    return includeLocal(header, includer, depth);
  }
  void releaseInclude(IncludeResult* result) override
  {
    if (!result)
      return;
    delete static_cast<std::string*>(result->userData);
    delete result;
  }
};

std::string Preamble(std::span<const std::string> options)
{
  std::string text;
  for (const std::string& option : options) {
    if (!option.starts_with("-D") || option.size() < 3)
      continue;
    std::string define = option.substr(2);
    const size_t equals = define.find('=');
    equals == define.npos ? define += " 1" : define.replace(equals, 1, " ");
    text += "#define " + define + "\n";
  }
  return text;
}

// glslang's state of a compilation.
class Shader
{
public:
  Shader(DProgramStage stage, const std::string& text, const std::string& name) :
      shader(Language(stage)), source(text), file(name), string(source.c_str()),
      length(static_cast<int>(source.size())), fileName(file.c_str())
  {
    // It keeps these pointers.
    shader.setStringsWithLengthsAndNames(&string, &length, &fileName, 1);
    shader.setEntryPoint("main");
    shader.setEnvInput(glslang::EShSourceHlsl, Language(stage), glslang::EShClientVulkan, 100);
    shader.setEnvClient(glslang::EShClientVulkan, glslang::EShTargetVulkan_1_0);
    shader.setEnvTarget(glslang::EShTargetSpv, glslang::EShTargetSpv_1_0);
    shader.setAutoMapBindings(true);
    shader.setAutoMapLocations(true);
  }
  glslang::TShader shader;

private:
  std::string source, file;
  const char* string;
  int length;
  const char* fileName;
};

bool Preprocess(DProgramStage stage, const std::string& source, const std::string& file, const std::string& preamble,
                std::string& text, std::string& listing)
{
  Shader s(stage, source, file);
  s.shader.setPreamble(preamble.c_str());
  Includer includer;
  const bool good =
      s.shader.preprocess(GetDefaultResources(), 110, ENoProfile, false, false, MESSAGES, &text, includer);
  if (!good)
    listing = s.shader.getInfoLog();
  return good;
}

bool ToSpirv(DProgramStage stage, const std::string& hlsl, const std::string& file, std::vector<uint32_t>& spirv,
             std::string& listing)
{
  Shader s(stage, hlsl, file);
  const bool parsed = s.shader.parse(GetDefaultResources(), 110, false, MESSAGES);
  listing = s.shader.getInfoLog();
  if (!parsed)
    return false;
  glslang::TProgram program;
  program.addShader(&s.shader);
  if (!program.link(MESSAGES) || !program.mapIO()) {
    listing += program.getInfoLog();
    return false;
  }
  glslang::SpvOptions options;
  options.disableOptimizer = false;
  glslang::GlslangToSpv(*program.getIntermediate(Language(stage)), spirv, &options);
  return true;
}

// SPIRV-Cross's state of a translation.
class Translation
{
public:
  Translation() { spvc_context_create(&context); }
  ~Translation() { spvc_context_destroy(context); }
  Translation(const Translation&) = delete;
  Translation& operator=(const Translation&) = delete;
  bool ToGlsl(std::span<const uint32_t> spirv, const std::string& prefix, std::string& glsl);
  const char* Error() const { return spvc_context_get_last_error_string(context); }

private:
  bool Name(const std::string& prefix);

  spvc_context context = nullptr;
  spvc_compiler compiler = nullptr;
};

// Parameters of both stages are set apart by their names.
bool Translation::Name(const std::string& prefix)
{
  spvc_resources resources = nullptr;
  if (spvc_compiler_create_shader_resources(compiler, &resources) != SPVC_SUCCESS)
    return false;
  const spvc_reflected_resource* list = nullptr;
  size_t count = 0;
  spvc_resources_get_resource_list_for_type(resources, SPVC_RESOURCE_TYPE_UNIFORM_BUFFER, &list, &count);
  for (size_t i = 0; i < count; ++i) {
    spvc_compiler_set_name(compiler, list[i].id, prefix.c_str());
    spvc_compiler_set_name(compiler, list[i].base_type_id, (prefix + "_parameters").c_str());
  }
  spvc_resources_get_resource_list_for_type(resources, SPVC_RESOURCE_TYPE_SAMPLED_IMAGE, &list, &count);
  for (size_t i = 0; i < count; ++i)
    spvc_compiler_set_name(compiler, list[i].id, (prefix + "_" + list[i].name).c_str());
  return true;
}

bool Translation::ToGlsl(std::span<const uint32_t> spirv, const std::string& prefix, std::string& glsl)
{
  spvc_parsed_ir ir = nullptr;
  spvc_compiler_options options = nullptr;
  const char* text = nullptr;
  const bool ready = spvc_context_parse_spirv(context, spirv.data(), spirv.size(), &ir) == SPVC_SUCCESS &&
                     spvc_context_create_compiler(context, SPVC_BACKEND_GLSL, ir, SPVC_CAPTURE_MODE_TAKE_OWNERSHIP,
                                                  &compiler) == SPVC_SUCCESS &&
                     spvc_compiler_create_compiler_options(compiler, &options) == SPVC_SUCCESS;
  if (!ready)
    return false;
  spvc_compiler_options_set_uint(options, SPVC_COMPILER_OPTION_GLSL_VERSION, 120);
  spvc_compiler_options_set_bool(options, SPVC_COMPILER_OPTION_GLSL_ES, SPVC_FALSE);
  spvc_compiler_options_set_bool(options, SPVC_COMPILER_OPTION_GLSL_ENABLE_420PACK_EXTENSION, SPVC_FALSE);
  spvc_compiler_install_compiler_options(compiler, options);
  if (!Name(prefix) || spvc_compiler_compile(compiler, &text) != SPVC_SUCCESS)
    return false;
  glsl = text;
  return true;
}

bool IsWordCharacter(char c)
{
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// Where name stands as a whole word at or behind from.
size_t FindWord(const std::string& text, const std::string& name, size_t from)
{
  for (size_t i = from; (i = text.find(name, i)) != text.npos; i += name.size()) {
    const bool starts = i == 0 || !IsWordCharacter(text[i - 1]);
    if (starts && (i + name.size() >= text.size() || !IsWordCharacter(text[i + name.size()])))
      return i;
  }
  return text.npos;
}

void ReplaceWord(std::string& text, const std::string& name, const std::string& with)
{
  for (size_t i = 0; (i = FindWord(text, name, i)) != text.npos; i += with.size())
    text.replace(i, name.size(), with);
}

// Takes out the line that declares a name; false when nothing does.
bool Undeclare(std::string& text, const std::string& name)
{
  const size_t at = FindWord(text, name, 0);
  if (at == text.npos)
    return false;
  const size_t start = text.rfind('\n', at) + 1;
  const size_t end = text.find('\n', at);
  const std::string_view row = std::string_view(text).substr(start, end - start);
  if (row.starts_with("attribute ") || row.starts_with("varying "))
    text.erase(start, end - start + 1);
  return true;
}

// The names of the pipeline in place of the rewritten source's.
void Bind(const QCgSource& source, std::string& glsl)
{
  std::string declarations;
  for (const QCgSource::Binding& b : source.bindings) {
    if (!Undeclare(glsl, b.name))
      continue;
    ReplaceWord(glsl, b.name, b.glsl);
    if (b.glsl.starts_with("cg"))
      declarations += (b.glsl.starts_with("cga_") ? "attribute vec4 " : "varying vec4 ") + b.glsl + ";\n";
  }
  for (const QCgSource::State& s : source.states)
    ReplaceWord(glsl, s.name, s.glsl);
  const size_t body = glsl.find("void main()");
  glsl.insert(body == glsl.npos ? 0 : body, declarations);
}

const char* PrefixOf(DProgramStage stage)
{
  return stage == DProgramStage::VERTEX ? "vp" : "fp";
}

DCompiledProgram CompileText(DProgramStage stage, const std::string& text, const std::string& file)
{
  DCompiledProgram program;
  QCgSource source = QRewriteCg(text, stage, file);
  std::vector<uint32_t> spirv;
  if (source.text.empty()) {
    program.listing = source.error;
    return program;
  }
  if (!ToSpirv(stage, source.text, file, spirv, program.listing))
    return program;
  Translation translation;
  if (!translation.ToGlsl(spirv, PrefixOf(stage), program.code)) {
    program.code.clear();
    program.listing += file + ": " + translation.Error();
    return program;
  }
  Bind(source, program.code);
  program.parameters = std::move(source.parameters);
  program.attributes = std::move(source.attributes);
  program.annotations = std::move(source.annotations);
  return program;
}

DCompiledProgram Compile(const QCgCache& cache, DProgramStage stage, const std::string& file,
                         std::span<const std::string> options)
{
  static const bool ready = glslang::InitializeProcess();
  DCompiledProgram program;
  std::string source, text;
  if (!QReadFile(file, source, true)) {
    program.listing = file + ": can't be read";
    return program;
  }
  if (stage == DProgramStage::GEOMETRY || !ready) {
    program.listing = file + ": geometry programs aren't compiled";
    return program;
  }
  if (!Preprocess(stage, source, file, Preamble(options), text, program.listing))
    return program;
  const std::string key = std::string(PrefixOf(stage)) + ":" + file + "\n" + text;
  if (auto kept = cache.Find(key))
    return *std::move(kept);
  program = CompileText(stage, text, file);
  if (!program.code.empty())
    cache.Keep(key, program);
  return program;
}

} // namespace

DProgramCompiler QCgCompiler(const std::string& cacheDirectory)
{
  DProgramCompiler compiler;
  compiler.profile = [](DProgramStage stage) { return stage == DProgramStage::GEOMETRY ? "" : "glsl120"; };
  compiler.compile = [cache = QCgCache(cacheDirectory)](DProgramStage stage, const std::string& file,
                                                        std::span<const std::string> options) {
    return Compile(cache, stage, file, options);
  };
  return compiler;
}
