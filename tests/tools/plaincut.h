#pragma once

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

// The cutters as one would tell them: seek, read a line, test it, write it, and read the header again for each file.
// Slow, and without a word to the user; what they leave must be what the fast ones leave.
namespace plain {

using Files = std::map<std::string, std::string>; // by name, without the directory

// Lines as fgets with a buffer of 1024 gives them.
class Lines
{
public:
  explicit Lines(std::string_view input) : text(input) {}
  bool Read(std::string& line)
  {
    line.clear();
    while (at < text.size() && line.size() < 1023) {
      line += text[at++];
      if (line.back() == '\n')
        break;
    }
    return !line.empty();
  }
  bool ReadTo(const std::string& word, std::string& line)
  {
    while (Read(line))
      if (line.find(word) != std::string::npos)
        return true;
    return false;
  }
  size_t Tell() const { return at; }
  void Seek(size_t offset) { at = offset; }

private:
  std::string_view text;
  size_t at = 0;
};

inline bool Holds(const std::string& line, const std::string& word)
{
  return line.find(word) != std::string::npos;
}

inline int Number(const std::string& line, const std::string& word)
{
  return std::atoi(line.c_str() + line.find(word) + word.size());
}

inline std::string Quoted(const std::string& line)
{
  const size_t first = line.find('"');
  return first == std::string::npos ? "unknown" : line.substr(first + 1, line.find('"', first + 1) - first - 1);
}

inline std::string Printed(const char* format, int number)
{
  char text[100];
  std::snprintf(text, sizeof text, format, number);
  return text;
}

inline std::string Lower(std::string text)
{
  for (char& c : text)
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  return text;
}

// Leaves the lines behind the one that ends the header.
inline std::string Header(Lines& in, int materialCountLine)
{
  std::string out, line;
  in.Seek(0);
  for (int i = 0; in.Read(line) && i < materialCountLine; ++i)
    out += line;
  return out + "\t*MATERIAL_COUNT 1\n";
}

// -1: there is no object.
inline int MaterialCountLine(Lines& in)
{
  int found = 0;
  std::string line;
  for (int number = 0; in.Read(line); ++number) {
    if (Holds(line, "*GEOMOBJECT"))
      return found;
    if (Holds(line, "*MATERIAL_COUNT"))
      found = number;
  }
  return -1;
}

inline bool Cut(std::string_view text, Files& files)
{
  Lines in(text);
  std::string line;
  const int materialCountLine = MaterialCountLine(in);
  if (materialCountLine < 0)
    return false;
  size_t resume = 0;
  while (true) {
    in.Seek(resume);
    if (!in.ReadTo("*GEOMOBJECT", line) || !in.ReadTo("*NODE_NAME", line))
      return true;
    const std::string name = Quoted(line);
    resume = in.Tell();
    if (!in.ReadTo("*MATERIAL_REF", line))
      return true;
    const int materialRef = Number(line, "*MATERIAL_REF");
    if (name.find_first_of("/\\") != std::string::npos)
      return true;
    std::string out = Header(in, materialCountLine);
    if (in.ReadTo("*MATERIAL " + std::to_string(materialRef), line)) {
      out += "\t*MATERIAL 0 {\n";
      while (in.Read(line) && !Holds(line, "*MATERIAL ") && !Holds(line, "*GEOMOBJECT"))
        out += line;
      out += "}\n";
    }
    in.Seek(resume);
    out += "*GEOMOBJECT {\n";
    while (in.Read(line) && !Holds(line, "*MATERIAL_REF") && line[0] != '}')
      out += line;
    files[name + ".ase"] = out + "\t*MATERIAL_REF 0\n}\n";
  }
}

struct Material
{
  int count = 0;
  std::map<int, std::string> names;
};

class MultiSub
{
public:
  MultiSub(std::string_view text, Files& target) : in(text), files(target) {}
  bool Run();

private:
  bool ReadMaterials();
  std::string CopyMaterial(int material, int submaterial);
  bool CopyGeom(int submaterial, std::string& out);
  // Does it stay, it is rewritten.
  bool Renumber(std::string& line, const std::string& keyword, const std::map<int, int>& mapFace);
  void Close(const std::string& name, const std::string& out);

  Lines in;
  Files& files;
  std::map<int, Material> materials;
  int materialCountLine = 0;
  std::string line;
};

inline bool MultiSub::ReadMaterials()
{
  int depth = 0, material = -1, submaterial = -1;
  in.Seek(0);
  for (int number = 0; in.Read(line); ++number) {
    depth += Holds(line, "{");
    depth -= Holds(line, "}");
    if (Holds(line, "*GEOMOBJECT"))
      return true;
    if (Holds(line, "*MATERIAL_COUNT"))
      materialCountLine = number;
    if (Holds(line, "*MATERIAL ")) {
      material = Number(line, "*MATERIAL ");
      submaterial = -1;
      if (material >= 6000)
        return false;
    }
    if (Holds(line, "*NUMSUBMTLS ") && depth <= 2 && material >= 0)
      materials[material].count = std::min(Number(line, "*NUMSUBMTLS "), 1000);
    if (Holds(line, "*SUBMATERIAL ")) {
      submaterial = Number(line, "*SUBMATERIAL ");
      if (submaterial >= 1000)
        return false;
    }
    if (Holds(line, "*MATERIAL_NAME ") && submaterial >= 0)
      materials[material].names[submaterial] = Lower(Quoted(line));
  }
  return false;
}

inline std::string MultiSub::CopyMaterial(int material, int submaterial)
{
  if (!in.ReadTo("*MATERIAL " + std::to_string(material), line) ||
      !in.ReadTo("*SUBMATERIAL " + std::to_string(submaterial), line))
    return {};
  std::string out = "\t*MATERIAL 0 {\n";
  while (in.Read(line) && !Holds(line, "*MATERIAL ") && !Holds(line, "*GEOMOBJECT") && !Holds(line, "*SUBMATERIAL"))
    out += line;
  return out + "}\n";
}

inline bool MultiSub::Renumber(std::string& text, const std::string& keyword, const std::map<int, int>& mapFace)
{
  const auto found = mapFace.find(Number(text, keyword));
  if (found == mapFace.end() || found->second < 0)
    return false;
  const size_t number = text.find_first_of("0123456789", text.find(keyword) + keyword.size());
  text = "\t\t\t" + keyword + Printed("%4d  ", found->second) + text.substr(text.find('\t', number));
  return true;
}

inline bool MultiSub::CopyGeom(int submaterial, std::string& out)
{
  out += "*GEOMOBJECT {\n";
  const size_t start = in.Tell();
  const std::string id = "MESH_MTLID " + std::to_string(submaterial);
  const auto hasId = [&](const std::string& l) { return Holds(l, id + "\r") || Holds(l, id + "\n"); };
  const auto ends = [](const std::string& l) { return Holds(l, "*MATERIAL_REF") || l[0] == '}'; };
  int count = 0;
  while (in.Read(line)) {
    count += hasId(line);
    if (ends(line))
      break;
  }
  if (count == 0)
    return false;
  in.Seek(start);
  std::map<int, int> mapFace;
  int face = 0, newFace = 0;
  while (in.Read(line)) {
    if (Holds(line, "*MESH_NUMFACES ")) {
      line = Printed("\t\t*MESH_NUMFACES %d\n", count);
    } else if (Holds(line, "*MESH_NUMTVFACES ")) {
      line = Printed("\t\t*MESH_NUMTVFACES %d\n", count);
    } else if (Holds(line, "*MESH_NUMCVFACES ")) {
      line = Printed("\t\t*MESH_NUMCVFACES %d\n", count);
    } else if (Holds(line, "*MESH_FACE ")) {
      mapFace[face++] = hasId(line) ? newFace : -1;
      if (!hasId(line))
        continue;
      line = Printed("\t\t\t*MESH_FACE %4d: ", newFace++) + line.substr(line.find(':') + 1);
      if (const size_t at = line.find("*MESH_MTLID"); at != std::string::npos)
        line = line.substr(0, at) + "*MESH_MTLID 0\n";
    } else if (Holds(line, "*MESH_TFACE ")) {
      if (!Renumber(line, "*MESH_TFACE ", mapFace))
        continue;
    } else if (Holds(line, "*MESH_FACENORMAL ")) {
      if (!Renumber(line, "*MESH_FACENORMAL ", mapFace)) {
        for (int i = 0; i < 3; ++i)
          in.Read(line);
        continue;
      }
    } else if (Holds(line, "*MESH_CFACE ")) {
      if (!Renumber(line, "*MESH_CFACE ", mapFace))
        continue;
    } else if (ends(line)) {
      break;
    }
    out += line;
  }
  out += "\t*MATERIAL_REF 0\n}\n";
  return true;
}

inline void MultiSub::Close(const std::string& name, const std::string& out)
{
  std::string result = name + ".ase";
  for (int i = 2; files.contains(result); ++i)
    result = name + "_occ" + std::to_string(i) + ".ase";
  files[result] = out;
}

inline bool MultiSub::Run()
{
  if (!ReadMaterials())
    return false;
  size_t search = 0, behindName = 0;
  while (true) {
    int materialRef = 0, submaterial = 0;
    do {
      in.Seek(search);
      if (!in.ReadTo("*GEOMOBJECT", line) || !in.ReadTo("*NODE_NAME", line))
        return true;
      const std::string object = Quoted(line);
      behindName = in.Tell();
      if (!in.ReadTo("*MATERIAL_REF", line))
        return true;
      materialRef = Number(line, "*MATERIAL_REF");
      const std::string name =
          Lower(materials[materialRef].names[submaterial] + "_" + std::to_string(submaterial) + "_" + object);
      if (name.find_first_of("/\\") != std::string::npos)
        return true;
      std::string out = Header(in, materialCountLine);
      out += CopyMaterial(materialRef, submaterial);
      in.Seek(behindName);
      if (CopyGeom(submaterial, out))
        Close(name, out);
    } while (++submaterial < materials[materialRef].count);
    search = behindName;
  }
}

} // namespace plain
