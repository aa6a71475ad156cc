#include "platform/qcgsource.h"

#include "platform/qcgsemantics.h"
#include "platform/qcgtokens.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>

namespace {

using Tokens = std::vector<QCgToken>;

struct Variable
{
  std::string type, name, array; // array: "[4]"
  std::string semantic;          // as in the source, "state.matrix.mvp"
  std::string initial;
  std::vector<std::pair<std::string, int>> annotations;
  bool in = true, out = false, uniform = false, constant = false, isStatic = false;
};

const char* Prefix(DProgramStage stage)
{
  return stage == DProgramStage::VERTEX ? "vp" : stage == DProgramStage::FRAGMENT ? "fp" : "gp";
}

// Flags of parameters become numbers: GLSL 1.20 has no unsigned ones, which they would be.
std::string Type(const std::string& type)
{
  return type.starts_with("bool") ? "float" + type.substr(4) : type;
}

int Components(const std::string& type)
{
  return !type.empty() && type.back() >= '1' && type.back() <= '4' ? type.back() - '0' : 1;
}

int ArrayLength(const std::string& array)
{
  return array.empty() ? 1 : std::clamp(std::atoi(array.c_str() + 1), 1, 16);
}

std::vector<float> Numbers(std::string_view text)
{
  std::vector<float> numbers;
  const Tokens tokens = QCgTokens(text);
  bool minus = false;
  for (const QCgToken& t : tokens) {
    const char c = t.text.empty() ? ' ' : t.text[0];
    if ((c >= '0' && c <= '9') || c == '.')
      numbers.push_back((minus ? -1.0f : 1.0f) * std::strtof(t.text.c_str(), nullptr));
    else if (t.Is("true") || t.Is("false"))
      numbers.push_back(t.Is("true") ? 1.0f : 0.0f);
    minus = c == '-';
  }
  return numbers;
}

class Rewriter
{
public:
  Rewriter(std::string_view source, DProgramStage programStage, const std::string& fileName) :
      tokens(QCgTokens(source)), stage(programStage), file(fileName)
  {}
  QCgSource Run();

private:
  bool Fail(size_t at, const std::string& what);
  size_t Semicolon(size_t from) const;
  std::vector<std::pair<size_t, size_t>> Parts(size_t from, size_t to) const; // between commas
  Variable ReadVariable(size_t from, size_t to, const Variable* before = nullptr) const;
  void ReadAnnotations(size_t from, size_t to, Variable& v) const;
  void Erase(size_t from, size_t to);
  size_t Struct(size_t at);
  size_t Declaration(size_t at);
  void Global(size_t from, size_t to);
  std::string Hoist(const Variable& v);
  std::string StateName(const std::string& path, const std::string& name, const std::string& glsl);
  size_t Function(size_t at, size_t paren);
  void Body(size_t from, size_t to);
  void Words();
  std::vector<Variable> Elements(const Variable& v, const std::string& value) const;
  void TakeIn(const Variable& element);
  void GiveOut(const Variable& element);
  void Wrap();

  Tokens tokens;
  DProgramStage stage;
  std::string file;
  QCgSource result;
  std::map<std::string, std::vector<Variable>> structs;
  std::vector<Variable> mainParameters;
  std::optional<Variable> mainResult; // without a type: void
  std::string stateDeclarations;
  std::set<std::string> bound; // names of bindings so far
  std::string wrapParameters, wrapBefore, wrapAfter;
};

bool Rewriter::Fail(size_t at, const std::string& what)
{
  if (result.error.empty())
    result.error = QCgPlace(tokens, at, file) + ": " + what;
  return false;
}

void Rewriter::Erase(size_t from, size_t to)
{
  for (size_t i = from; i < to; ++i)
    tokens[i].text.clear();
}

// Behind the semicolon that ends a declaration; those in brackets and annotations don't.
size_t Rewriter::Semicolon(size_t from) const
{
  bool value = false, annotation = false;
  for (size_t i = from; i < tokens.size(); ++i) {
    const QCgToken& t = tokens[i];
    if (t.Is("{") || t.Is("(") || t.Is("["))
      i = QCgClose(tokens, i) - 1;
    else if (t.Is("="))
      value = !annotation || value;
    else if (t.Is("<") && !value)
      annotation = true;
    else if (t.Is(">"))
      annotation = false;
    else if (t.Is(";") && !annotation)
      return i + 1;
  }
  return tokens.size();
}

std::vector<std::pair<size_t, size_t>> Rewriter::Parts(size_t from, size_t to) const
{
  std::vector<std::pair<size_t, size_t>> parts;
  size_t start = from;
  for (size_t i = from; i < to; ++i) {
    if (tokens[i].Is("(") || tokens[i].Is("{") || tokens[i].Is("["))
      i = QCgClose(tokens, i) - 1;
    else if (tokens[i].Is(",")) {
      parts.emplace_back(start, i);
      start = i + 1;
    }
  }
  if (start < to)
    parts.emplace_back(start, to);
  return parts;
}

void Rewriter::ReadAnnotations(size_t from, size_t to, Variable& v) const
{
  for (size_t i = from; i + 3 < to; ++i)
    if (tokens[i].Is("int") && tokens[i + 2].Is("=")) {
      const bool minus = tokens[i + 3].Is("-");
      const int number = std::atoi(tokens[std::min(i + (minus ? 4 : 3), to)].text.c_str());
      v.annotations.emplace_back(tokens[i + 1].text, minus ? -number : number);
    }
}

Variable Rewriter::ReadVariable(size_t from, size_t to, const Variable* before) const
{
  Variable v;
  size_t i = from;
  const auto more = [&] { return i < to; };
  if (before) {
    v.type = before->type;
    v.uniform = before->uniform;
  } else {
    for (; more(); ++i) {
      const QCgToken& t = tokens[i];
      if (t.Is("out"))
        v.in = false;
      if (t.Is("out") || t.Is("inout"))
        v.out = true;
      else if (t.Is("uniform"))
        v.uniform = true;
      else if (t.Is("const"))
        v.constant = true;
      else if (t.Is("static"))
        v.isStatic = true;
      else if (!t.Is("in") && !t.Is("varying") && !t.Is("packed") && !t.Is("extern") && !t.Is("inline"))
        break;
    }
    if (more())
      v.type = Type(tokens[i++].text);
  }
  if (more())
    v.name = tokens[i++].text;
  while (more() && tokens[i].Is("[")) {
    const size_t end = std::min(QCgClose(tokens, i), to);
    for (; i < end; ++i)
      v.array += tokens[i].text;
  }
  if (more() && tokens[i].Is(":"))
    for (++i; more() && !tokens[i].Is("=") && !tokens[i].Is("<"); ++i)
      v.semantic += tokens[i].text;
  if (more() && tokens[i].Is("<")) {
    const size_t start = i;
    while (more() && !tokens[i].Is(">"))
      ++i;
    ReadAnnotations(start + 1, i++, v);
  }
  if (more() && tokens[i].Is("="))
    v.initial = QCgJoin(tokens, i + 1, to);
  return v;
}

size_t Rewriter::Struct(size_t at)
{
  const std::string& name = tokens[at + 1].text;
  const size_t end = QCgClose(tokens, at + 2);
  std::vector<Variable> members;
  for (size_t i = at + 3; i + 1 < end;) {
    const size_t next = std::min(Semicolon(i), end);
    const Variable* before = nullptr;
    std::string text;
    for (const auto& [from, to] : Parts(i, next - 1)) {
      members.push_back(ReadVariable(from, to, before));
      before = &members.back();
      text += before->type + " " + before->name + before->array + "; ";
    }
    if (before) {
      Erase(i, next);
      tokens[i].text = text;
    }
    i = next;
  }
  structs[name] = std::move(members);
  return Semicolon(end);
}

// Declares a parameter as a global; nothing for one that isn't set by the program's user.
std::string Rewriter::Hoist(const Variable& v)
{
  if (!v.annotations.empty() && v.name == "Annotations")
    result.annotations = v.annotations;
  const std::string state = QCgState(v.semantic);
  if (!state.empty())
    result.states.push_back({std::string(Prefix(stage)) + "." + v.name, state});
  const bool known = std::any_of(result.parameters.begin(), result.parameters.end(),
                                 [&v](const DProgramParameter& p) { return p.name == v.name; });
  if (known)
    return {};
  DProgramParameter p;
  p.name = v.name;
  p.isSampler = v.type.starts_with("sampler");
  p.uniform = std::string(Prefix(stage)) + (p.isSampler ? "_" : ".") + v.name;
  if (p.isSampler && v.semantic.starts_with("TEXUNIT"))
    p.unit = std::atoi(v.semantic.c_str() + 7);
  if (!p.isSampler)
    p.initial = Numbers(v.initial);
  result.parameters.push_back(p);
  return "uniform " + v.type + " " + v.name + v.array + "; ";
}

void Rewriter::Global(size_t from, size_t to)
{
  std::string text;
  const Variable first = ReadVariable(from, to);
  if (first.isStatic || first.type.empty())
    return;
  if (first.constant && !first.initial.empty()) {
    tokens[from].text = "static " + tokens[from].text;
    return;
  }
  const Variable* before = nullptr;
  for (const auto& [start, end] : Parts(from, to)) {
    text += Hoist(ReadVariable(start, end, before));
    before = &first;
  }
  Erase(from, to + 1);
  tokens[from].text = text;
}

size_t Rewriter::Declaration(size_t at)
{
  for (size_t i = at; i < tokens.size(); ++i) {
    if (tokens[i].Is("("))
      return Function(at, i);
    if (tokens[i].Is(";") || tokens[i].Is("=") || tokens[i].Is(":") || tokens[i].Is("<") || tokens[i].Is(","))
      break;
    if (tokens[i].Is("["))
      i = QCgClose(tokens, i) - 1;
  }
  const size_t end = Semicolon(at);
  Global(at, end - 1);
  return end;
}

size_t Rewriter::Function(size_t at, size_t paren)
{
  const bool isMain = paren > at && tokens[paren - 1].Is("main");
  const size_t close = QCgClose(tokens, paren);
  std::string hoisted, signature;
  for (const auto& [from, to] : Parts(paren + 1, close - 1)) {
    Variable v = ReadVariable(from, to);
    if (v.type == "void" && v.name.empty())
      continue;
    if (isMain && v.uniform) {
      hoisted += Hoist(v);
      continue;
    }
    const char* way = v.out ? v.in ? "inout " : "out " : "";
    signature += (signature.empty() ? "" : ", ") + std::string(way) + v.type + " " + v.name + v.array;
    if (!isMain && !v.initial.empty())
      signature += " = " + v.initial;
    if (isMain)
      mainParameters.push_back(std::move(v));
  }
  size_t body = close;
  while (body < tokens.size() && !tokens[body].Is("{") && !tokens[body].Is(";"))
    ++body;
  if (isMain) {
    mainResult = ReadVariable(at, paren - 1);
    for (size_t i = close + 1; i < body; ++i)
      mainResult->semantic += tokens[i].text;
    tokens[paren - 1].text = "cg_main";
  }
  Erase(close, body);
  Erase(paren + 1, close - 1);
  tokens[paren].text = "(" + signature;
  for (size_t i = at; i < paren; ++i)
    if (tokens[i].Is("inline"))
      tokens[i].text.clear();
  tokens[at].text = hoisted + tokens[at].text;
  if (body >= tokens.size() || tokens[body].Is(";"))
    return body + 1;
  const size_t end = QCgClose(tokens, body);
  Body(body, end);
  return end;
}

// "glstate.matrix.mvp" and its like within a function.
void Rewriter::Body(size_t from, size_t to)
{
  for (size_t i = from; i < to; ++i) {
    if (!tokens[i].Is("glstate"))
      continue;
    std::string path, name = "cgstate", known, glsl;
    size_t knownEnd = i;
    for (size_t j = i; j < to && (tokens[j].IsWord() || tokens[j].Is(".") || tokens[j].Is("[")); ++j) {
      if (tokens[j].Is("[")) { // the number and the bracket behind it
        path += "[" + tokens[j + 1].text + "]";
        j += 2;
      } else {
        path += tokens[j].text;
      }
      if (const std::string state = QCgState(path); !state.empty()) {
        known = path;
        glsl = state;
        knownEnd = j + 1;
      }
    }
    if (known.empty()) {
      Fail(i, "'" + path + "' : state that isn't known");
      return;
    }
    for (const char c : known.substr(7))
      name += c == '.' || c == '[' ? "_" : c == ']' ? "" : std::string(1, c);
    Erase(i, knownEnd);
    tokens[i].text = name;
    StateName(known, name, glsl);
  }
}

std::string Rewriter::StateName(const std::string& path, const std::string& name, const std::string& glsl)
{
  const std::string member = std::string(Prefix(stage)) + "." + name;
  if (!bound.insert(member).second)
    return member;
  stateDeclarations += path.starts_with("glstate.matrix") ? "uniform float4x4 " : "uniform float4 ";
  stateDeclarations += name + "; ";
  result.states.push_back({member, glsl});
  return member;
}

// What this HLSL has no word for.
void Rewriter::Words()
{
  for (QCgToken& t : tokens) {
    if (t.text.starts_with("fixed") && t.text.size() <= 8)
      t.text = "half" + t.text.substr(5);
    else if (t.Is("tex2Dproj"))
      t.text = "cg_tex2Dproj";
  }
}

// The parts of a parameter that have a semantic of their own, named as they are read and written.
std::vector<Variable> Rewriter::Elements(const Variable& v, const std::string& value) const
{
  std::vector<Variable> members;
  const auto found = structs.find(v.type);
  if (found == structs.end()) {
    members.push_back(v);
    members.back().name = value;
  } else {
    members = found->second;
    for (Variable& m : members) {
      if (m.semantic.empty())
        m.semantic = "USER_" + m.name;
      m.name = value + "." + m.name;
    }
  }
  std::vector<Variable> elements;
  for (const Variable& m : members) {
    const std::string semantic = QCgSemantic(m.semantic.empty() ? "USER_" + v.name : m.semantic);
    for (int i = 0; i < ArrayLength(m.array); ++i) {
      elements.push_back(m);
      elements.back().semantic = QCgSemanticBehind(semantic, i);
      if (!m.array.empty())
        elements.back().name += "[" + std::to_string(i) + "]";
    }
  }
  return elements;
}

void Rewriter::TakeIn(const Variable& element)
{
  const std::string name = "cgi_" + element.semantic;
  if (bound.insert(name).second) {
    wrapParameters += (wrapParameters.empty() ? "" : ", ") + ("float4 " + name) + " : CGI_" + element.semantic;
    result.bindings.push_back({name, QCgInput(stage, element.semantic)});
    const int location = stage == DProgramStage::VERTEX ? QCgAttributeLocation(element.semantic) : -1;
    if (location >= 0)
      result.attributes.push_back({"cga_" + element.semantic, location});
  }
  const char* parts[] = {"", ".x", ".xy", ".xyz", ""};
  wrapBefore += "  " + element.name + " = " + name + parts[Components(element.type)] + ";\n";
}

void Rewriter::GiveOut(const Variable& element)
{
  const std::string& semantic = element.semantic;
  const std::string name = "cgo_" + semantic;
  const bool scalar = QCgIsScalar(semantic);
  const bool fragment = stage == DProgramStage::FRAGMENT;
  const bool isColor = semantic.starts_with("COLOR");
  if (fragment && !isColor && semantic != "DEPTH") {
    Fail(0, "'" + semantic + "' : no output of a fragment program");
    return;
  }
  if (!bound.insert(name).second)
    return;
  wrapParameters += (wrapParameters.empty() ? "out " : ", out ") + std::string(scalar ? "float " : "float4 ") + name;
  if (fragment)
    wrapParameters += isColor ? " : SV_Target" + semantic.substr(5) : " : SV_Depth";
  else
    wrapParameters += semantic == "POSITION" ? " : SV_Position" : " : CGO_" + semantic;
  if (!fragment && semantic != "POSITION")
    result.bindings.push_back({name, QCgVertexOutput(semantic)});
  const int count = Components(element.type);
  const char* fill[] = {"", ", 0.0, 0.0, 1.0)", ", 0.0, 1.0)", ", 1.0)"};
  if (scalar)
    wrapAfter += "  " + name + " = " + element.name + (count > 1 ? ".x;\n" : ";\n");
  else if (count == 4)
    wrapAfter += "  " + name + " = " + element.name + ";\n";
  else
    wrapAfter += "  " + name + " = float4(" + element.name + fill[count] + ";\n";
}

// The entry that carries what the pipeline has to the program's own and back.
void Rewriter::Wrap()
{
  std::string arguments;
  for (size_t i = 0; i < mainParameters.size(); ++i) {
    const Variable& v = mainParameters[i];
    const std::string local = "cgp_" + std::to_string(i);
    const bool isStruct = structs.contains(v.type);
    wrapBefore += "  " + v.type + " " + local + v.array;
    wrapBefore += isStruct ? " = (" + v.type + ")0;\n" : ";\n";
    for (const Variable& element : Elements(v, local)) {
      if (v.in)
        TakeIn(element);
      if (v.out)
        GiveOut(element);
    }
    arguments += (i ? ", " : "") + local;
  }
  std::string call = "  cg_main(" + arguments + ");\n";
  if (mainResult->type != "void") {
    call = "  " + mainResult->type + " cgr = cg_main(" + arguments + ");\n";
    for (const Variable& element : Elements(*mainResult, "cgr"))
      GiveOut(element);
  }
  result.text += "\nvoid main(" + wrapParameters + ")\n{\n" + wrapBefore + call + wrapAfter + "}\n";
}

QCgSource Rewriter::Run()
{
  Words();
  for (size_t i = 0; i + 1 < tokens.size();) {
    if (tokens[i].Is(";"))
      ++i;
    else if (tokens[i].Is("struct") && i + 2 < tokens.size() && tokens[i + 2].Is("{"))
      i = Struct(i);
    else if (tokens[i].Is("typedef") || tokens[i].Is("interface"))
      i = Semicolon(i);
    else
      i = Declaration(i);
  }
  if (!mainResult)
    Fail(tokens.size(), "no function 'main'");
  if (!result.error.empty())
    return result;
  result.text = "#pragma pack_matrix(row_major)\n"
                "float4 cg_tex2Dproj(sampler2D s, float3 p) { return tex2Dproj(s, float4(p.xy, 0.0, p.z)); }\n"
                "float4 cg_tex2Dproj(sampler2D s, float4 p) { return tex2Dproj(s, p); }\n" +
                stateDeclarations + "\n#line 1 \"" + file + "\"\n" + QCgJoin(tokens, 0, tokens.size());
  Wrap();
  if (!result.error.empty())
    result.text.clear();
  return result;
}

} // namespace

QCgSource QRewriteCg(std::string_view source, DProgramStage stage, const std::string& file)
{
  return Rewriter(source, stage, file).Run();
}
