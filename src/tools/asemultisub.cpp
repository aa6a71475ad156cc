#include "tools/asemultisub.h"

#include "foundation/qreport.h"
#include "foundation/qstring.h"
#include "geometry/dtextreader.h"
#include "tools/qtoolui.h"

#include <algorithm>
#include <charconv>

bool AseSubMaterials::Read(const AseLines& scene, const std::string& sceneName, QToolUi& ui)
{
  const std::string_view text = scene.Text();
  for (size_t start = 0; start < text.size();) {
    const size_t end = scene.EndOfLine(start);
    const std::string_view line = text.substr(start, end - start);
    if (!ReadLine(line, ui))
      return false;
    if (line.find("*GEOMOBJECT") != std::string_view::npos)
      return true;
    start = end;
  }
  QWARN("ASECutMS(%s); no GEOMOBJECT found", sceneName.c_str());
  return false;
}

bool AseSubMaterials::Refuse(const std::string& text, QToolUi& ui)
{
  ui.Tell("Error - aborting operation", text);
  return false;
}

bool AseSubMaterials::ReadLine(std::string_view line, QToolUi& ui)
{
  const auto holds = [line](std::string_view word) { return line.find(word) != std::string_view::npos; };
  depth += holds("{") ? 1 : 0;
  depth -= holds("}") ? 1 : 0;
  if (holds("*MATERIAL ")) {
    const int number = AseNumberBehind(line, "*MATERIAL ");
    if (number >= MAX_MATERIAL)
      return Refuse("Too many materials; max=" + std::to_string(MAX_MATERIAL) +
                        ", material index read: " + std::to_string(number) + "\n",
                    ui);
    material = std::max(number, -1);
    QDBG("Material found (count=%d)\n", material);
    sub = -1;
    if (material >= static_cast<int>(materials.size()))
      materials.resize(static_cast<size_t>(material) + 1);
  }
  if (holds("*NUMSUBMTLS "))
    ReadCount(line);
  if (holds("*SUBMATERIAL ")) {
    sub = AseNumberBehind(line, "*SUBMATERIAL ");
    if (sub >= MAX_SUBMATERIAL)
      return Refuse(
          "ASE submaterial " + std::to_string(sub) + " out of range 0.." + std::to_string(MAX_SUBMATERIAL - 1), ui);
  }
  if (holds("*MATERIAL_NAME "))
    ReadName(line);
  return true;
}

void AseSubMaterials::ReadCount(std::string_view line)
{
  constexpr int MATERIAL_LEVEL = 2;
  if (depth > MATERIAL_LEVEL) {
    QDBG("Ignore *NUMSUBMTLS at submaterial level\n");
  } else if (material < 0) {
    QWARN("*NUMSUBMTLS found without *MATERIAL seen before");
  } else {
    Material& m = materials[static_cast<size_t>(material)];
    m.count = std::clamp(AseNumberBehind(line, "*NUMSUBMTLS "), 0, MAX_SUBMATERIAL);
    QDBG("Material %d: %d submaterials\n", material, m.count);
  }
}

void AseSubMaterials::ReadName(std::string_view line)
{
  qstring name(AseQuoted(line));
  name.ToLower();
  if (sub < 0 || material < 0) {
    QDBG("Material '%s'\n", name.Str().c_str());
    return;
  }
  auto& names = materials[static_cast<size_t>(material)].names;
  names.resize(std::max(names.size(), static_cast<size_t>(sub) + 1));
  names[static_cast<size_t>(sub)] = name.Str();
  QDBG("Submat %d = '%s'\n", sub, name.Str().c_str());
}

int AseSubMaterials::Count(int number) const
{
  return number >= 0 && number < static_cast<int>(materials.size()) ? materials[static_cast<size_t>(number)].count : 0;
}

const std::string& AseSubMaterials::Name(int number, int subNumber) const
{
  static const std::string none;
  if (number < 0 || number >= static_cast<int>(materials.size()))
    return none;
  const auto& names = materials[static_cast<size_t>(number)].names;
  return subNumber < static_cast<int>(names.size()) ? names[static_cast<size_t>(subNumber)] : none;
}

namespace {

constexpr std::string_view ID = "MTLID ";

// The number of "MTLID n" with a line end right behind it; -1 without. The digits are as they are printed.
int IdAtLineEnd(std::string_view digitsOn)
{
  const size_t digits = std::min(digitsOn.find_first_not_of("0123456789"), digitsOn.size());
  const bool printed = digits > 0 && digits < 6 && (digits == 1 || digitsOn[0] != '0');
  const bool ends = digits < digitsOn.size() && (digitsOn[digits] == '\r' || digitsOn[digits] == '\n');
  return printed && ends ? DTextReader(digitsOn).Int() : -1;
}

// As "%4d" prints it.
void AppendNumber(std::string& out, int number)
{
  constexpr ptrdiff_t WIDTH = 4;
  char digits[16];
  char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  out.append(static_cast<size_t>(std::max<ptrdiff_t>(WIDTH - (end - digits), 0)), ' ');
  out.append(digits, end);
}

// From the first tab behind the number; without a tab, what stands behind the number.
std::string_view BehindNumber(std::string_view line, std::string_view keyword)
{
  const std::string_view rest = line.substr(line.find(keyword) + keyword.size());
  const size_t digit = std::min(rest.find_first_of("0123456789"), rest.size());
  const size_t tab = rest.find('\t', digit);
  if (tab != std::string_view::npos)
    return rest.substr(tab);
  return rest.substr(std::min(rest.find_first_not_of("0123456789", digit), rest.size()));
}

} // namespace

AseMesh::AseMesh(const AseLines& aseLines, size_t offset) : scene(aseLines)
{
  const std::string_view text = scene.Text();
  const size_t reference = scene.Find(AseLines::MATERIAL_REF, scene.Behind(offset));
  const size_t limit = reference == AseLines::NONE ? text.size() : scene.Lines()[reference].start;
  const size_t end = scene.FindBrace(offset, limit);
  objectEnd = end;
  for (size_t start = offset; start < end;) {
    const size_t next = scene.EndOfLine(start);
    Add(text.substr(start, next - start));
    start = next;
  }
  // The line that ends it counts too.
  if (end < text.size())
    ReadWords(text.substr(end, scene.EndOfLine(end) - end));
}

// What the line is, and notes its material id.
AseMesh::Entry AseMesh::ReadWords(std::string_view line)
{
  static constexpr struct
  {
    std::string_view word;
    Kind kind;
  } KINDS[] = {{"NUMFACES ", NUMFACES}, {"NUMTVFACES ", NUMTVFACES}, {"NUMCVFACES ", NUMCVFACES},
               {"FACE ", FACE},         {"TFACE ", TFACE},           {"FACENORMAL ", FACENORMAL},
               {"CFACE ", CFACE}};
  constexpr std::string_view MESH = "MESH_";
  Entry entry{COPIED, 0, -1, line};
  for (size_t at = line.find(MESH); at != std::string_view::npos; at = line.find(MESH, at + 1)) {
    const std::string_view word = line.substr(at + MESH.size());
    if (word.starts_with(ID)) {
      const std::string_view number = word.substr(ID.size());
      entry.id = IdAtLineEnd(number);
      ids.push_back({entry.id, DTextReader(number).Int()});
    }
    if (entry.kind != COPIED || at == 0 || line[at - 1] != '*')
      continue;
    for (const auto& k : KINDS)
      if (word.starts_with(k.word)) {
        entry.kind = k.kind;
        entry.number = DTextReader(word.substr(k.word.size())).Int();
        break;
      }
  }
  return entry;
}

void AseMesh::Add(std::string_view line)
{
  Entry entry = ReadWords(line);
  const auto length = static_cast<uint32_t>(line.size()); // a line isn't long
  if (entry.kind != COPIED || entries.empty() || entries.back().kind != COPIED) {
    entry.lineEnds[0] = length;
    entries.push_back(entry);
    return;
  }
  Entry& run = entries.back();
  run.text = {run.text.data(), run.text.size() + length};
  if (run.lineCount < NORMALS)
    run.lineEnds[static_cast<size_t>(run.lineCount)] = static_cast<uint32_t>(run.text.size());
  ++run.lineCount;
}

int AseMesh::IdBeyond(int count) const
{
  for (const Id& id : ids)
    if (id.number >= count)
      return id.number;
  return -1;
}

int AseMesh::CountFaces(int id) const
{
  return static_cast<int>(std::ranges::count(ids, id, &Id::atLineEnd));
}

// The part of one material id, as it is written.
struct AseMesh::Part
{
  bool Put(const AseMesh& mesh); // false: too many faces
  bool PutEntry(const Entry& entry);
  void PutLines(const Entry& entry);
  bool PutFace(const Entry& entry);
  // False when the face isn't in the part.
  bool Renumber(const Entry& entry, std::string_view keyword);
  void PutCount(std::string_view keyword, const char* report);

  int id;
  int count;
  std::string& out;
  std::vector<int> mapFace = {}; // by source face: its new number, or -1
  int newFace = 0;
  int linesToDrop = 0;
};

void AseMesh::Part::PutCount(std::string_view keyword, const char* report)
{
  QDBG("Replace %s with count=%d\n", report, count);
  out.append("\t\t").append(keyword) += std::to_string(count) + "\n";
}

// Without those that go with a face normal that was dropped.
void AseMesh::Part::PutLines(const Entry& entry)
{
  const int dropped = std::min(linesToDrop, entry.lineCount);
  linesToDrop -= dropped;
  out += entry.text.substr(dropped > 0 ? entry.lineEnds[static_cast<size_t>(dropped - 1)] : 0);
}

bool AseMesh::Part::PutFace(const Entry& entry)
{
  if (static_cast<int>(mapFace.size()) >= MAX_FACES) {
    QWARN("Max facecount(%d) reached.", MAX_FACES);
    return false;
  }
  mapFace.push_back(entry.id == id ? newFace : -1);
  if (entry.id != id)
    return true;
  out += "\t\t\t*MESH_FACE ";
  AppendNumber(out, newFace++);
  out += ": ";
  const size_t colon = entry.text.find(':');
  const std::string_view rest = entry.text.substr(colon == std::string_view::npos ? 0 : colon + 1);
  const size_t part = rest.find("*MESH_MTLID");
  out += rest.substr(0, part);
  if (part != std::string_view::npos)
    out += "*MESH_MTLID 0\n";
  return true;
}

bool AseMesh::Part::Renumber(const Entry& entry, std::string_view keyword)
{
  const bool known = entry.number >= 0 && entry.number < static_cast<int>(mapFace.size());
  const int number = known ? mapFace[static_cast<size_t>(entry.number)] : -1;
  if (number < 0)
    return false;
  out.append("\t\t\t").append(keyword);
  AppendNumber(out, number);
  out.append("  ").append(BehindNumber(entry.text, keyword));
  return true;
}

bool AseMesh::Part::PutEntry(const Entry& entry)
{
  switch (entry.kind) {
  case COPIED:
    PutLines(entry);
    break;
  case NUMFACES:
    PutCount("*MESH_NUMFACES ", "NUMFACES");
    break;
  case NUMTVFACES:
    PutCount("*MESH_NUMTVFACES ", "TVNUMFACES");
    break;
  case NUMCVFACES:
    PutCount("*MESH_NUMCVFACES ", "NUMCVFACES");
    break;
  case FACE:
    return PutFace(entry);
  case TFACE:
    Renumber(entry, "*MESH_TFACE ");
    break;
  case FACENORMAL:
    if (!Renumber(entry, "*MESH_FACENORMAL "))
      linesToDrop = NORMALS;
    break;
  case CFACE:
    Renumber(entry, "*MESH_CFACE ");
    break;
  }
  return true;
}

bool AseMesh::Part::Put(const AseMesh& mesh)
{
  for (const Entry& entry : mesh.entries) {
    if (linesToDrop > 0 && entry.kind != COPIED)
      --linesToDrop;
    else if (!PutEntry(entry))
      return false;
  }
  return true;
}

bool AseMesh::Compose(int id, std::string& out) const
{
  const int count = CountFaces(id);
  QDBG("CopyGeom: %d faces with the right MTLID\n", count);
  if (count == 0)
    return false;
  out += "*GEOMOBJECT {\n";
  Part part{id, count, out};
  if (!part.Put(*this))
    return false;
  // The lines dropped with a face don't stop at the object's end; where they hide it, what follows is taken as well.
  const size_t size = scene.Text().size();
  for (size_t next = objectEnd; part.linesToDrop > 0 && next < size;) {
    for (; part.linesToDrop > 0 && next < size; --part.linesToDrop)
      next = scene.EndOfLine(next);
    const AseMesh behind(scene, next);
    if (!part.Put(behind))
      return false;
    next = behind.objectEnd;
  }
  out += "\t*MATERIAL_REF 0\n}\n";
  return true;
}
