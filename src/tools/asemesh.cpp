#include "tools/asemesh.h"

#include "foundation/qreport.h"
#include "geometry/dtextreader.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <utility>

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
  if (CanShare())
    Share();
}

// Whether each part takes its own entries and the common ones: when the lines that go with a face normal all follow it
// and there aren't too many faces.
bool AseMesh::CanShare() const
{
  for (size_t i = 0; i < entries.size(); ++i)
    if (entries[i].kind == FACENORMAL &&
        (i + 1 == entries.size() || entries[i + 1].kind != COPIED || entries[i + 1].lineCount < NORMALS))
      return false;
  return std::ranges::count(entries, FACE, &Entry::kind) <= MAX_FACES;
}

// Deals the entries out, so that a part doesn't go through those of all others.
void AseMesh::Share()
{
  std::vector<std::pair<std::vector<Own>*, int>> faces; // by source face: whose it is, and its new number
  std::map<int, int> counts;
  bool behindNormal = false;
  for (uint32_t i = 0; i < entries.size(); ++i) {
    const Entry& entry = entries[i];
    switch (entry.kind) {
    case FACE:
      faces.emplace_back(&owns[entry.id], counts[entry.id]++);
      faces.back().first->push_back({i, faces.back().second});
      break;
    case TFACE:
    case FACENORMAL:
    case CFACE:
      if (entry.number >= 0 && entry.number < static_cast<int>(faces.size())) {
        const auto& [own, number] = faces[static_cast<size_t>(entry.number)];
        own->push_back({i, number});
      }
      break;
    default:
      if (!behindNormal || entry.lineCount > NORMALS)
        common.push_back(i);
    }
    behindNormal = entry.kind == FACENORMAL;
  }
  isShared = true;
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
      if (!word.empty() && word[0] == k.word[0] && word.starts_with(k.word)) {
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
  void PutShared(const AseMesh& mesh);
  bool Put(const AseMesh& mesh); // false: too many faces
  bool PutEntry(const Entry& entry);
  void PutCommon(const Entry& entry);
  void PutLines(const Entry& entry);
  bool AddFace(const Entry& entry);
  void PutFace(const Entry& entry, int number);
  void PutNumber(const Entry& entry, int number);
  int NewNumber(const Entry& entry) const; // -1: isn't in the part
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

void AseMesh::Part::PutFace(const Entry& entry, int number)
{
  out += "\t\t\t*MESH_FACE ";
  AppendNumber(out, number);
  out += ": ";
  const size_t colon = entry.text.find(':');
  const std::string_view rest = entry.text.substr(colon == std::string_view::npos ? 0 : colon + 1);
  const size_t part = rest.find("*MESH_MTLID");
  out += rest.substr(0, part);
  if (part != std::string_view::npos)
    out += "*MESH_MTLID 0\n";
}

bool AseMesh::Part::AddFace(const Entry& entry)
{
  if (static_cast<int>(mapFace.size()) >= MAX_FACES) {
    QWARN("Max facecount(%d) reached.", MAX_FACES);
    return false;
  }
  mapFace.push_back(entry.id == id ? newFace : -1);
  if (entry.id == id)
    PutFace(entry, newFace++);
  return true;
}

int AseMesh::Part::NewNumber(const Entry& entry) const
{
  const bool known = entry.number >= 0 && entry.number < static_cast<int>(mapFace.size());
  return known ? mapFace[static_cast<size_t>(entry.number)] : -1;
}

// A TFACE, FACENORMAL or CFACE.
void AseMesh::Part::PutNumber(const Entry& entry, int number)
{
  const std::string_view keyword = entry.kind == TFACE        ? "*MESH_TFACE "
                                   : entry.kind == FACENORMAL ? "*MESH_FACENORMAL "
                                                              : "*MESH_CFACE ";
  out.append("\t\t\t").append(keyword);
  AppendNumber(out, number);
  out.append("  ").append(BehindNumber(entry.text, keyword));
}

// What doesn't belong to a face.
void AseMesh::Part::PutCommon(const Entry& entry)
{
  switch (entry.kind) {
  case NUMFACES:
    return PutCount("*MESH_NUMFACES ", "NUMFACES");
  case NUMTVFACES:
    return PutCount("*MESH_NUMTVFACES ", "TVNUMFACES");
  case NUMCVFACES:
    return PutCount("*MESH_NUMCVFACES ", "NUMCVFACES");
  default:
    return PutLines(entry);
  }
}

bool AseMesh::Part::PutEntry(const Entry& entry)
{
  switch (entry.kind) {
  case FACE:
    return AddFace(entry);
  case TFACE:
  case FACENORMAL:
  case CFACE:
    if (const int number = NewNumber(entry); number >= 0)
      PutNumber(entry, number);
    else if (entry.kind == FACENORMAL)
      linesToDrop = NORMALS;
    break;
  default:
    PutCommon(entry);
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

// The same from the mesh's shares: its own entries go in between the common ones.
void AseMesh::Part::PutShared(const AseMesh& mesh)
{
  const auto found = mesh.owns.find(id); // none: the ids stand on other lines
  std::span<const Own> own;
  if (found != mesh.owns.end())
    own = found->second;
  auto next = own.begin();
  const auto putOwnBefore = [&](uint32_t end) {
    for (; next != own.end() && next->entry < end; ++next) {
      const Entry& entry = mesh.entries[next->entry];
      if (entry.kind == FACE)
        PutFace(entry, next->face);
      else
        PutNumber(entry, next->face);
      if (entry.kind == FACENORMAL) {
        const Entry& normals = mesh.entries[next->entry + 1];
        out += normals.text.substr(0, normals.lineEnds[NORMALS - 1]);
      }
    }
  };
  for (const uint32_t at : mesh.common) {
    putOwnBefore(at);
    linesToDrop = at > 0 && mesh.entries[at - 1].kind == FACENORMAL ? NORMALS : 0;
    PutCommon(mesh.entries[at]);
  }
  putOwnBefore(static_cast<uint32_t>(mesh.entries.size()));
}

bool AseMesh::Compose(int id, std::string& out) const
{
  const int count = CountFaces(id);
  QDBG("CopyGeom: %d faces with the right MTLID\n", count);
  if (count == 0)
    return false;
  out += "*GEOMOBJECT {\n";
  Part part{id, count, out};
  if (isShared)
    part.PutShared(*this);
  else if (!part.Put(*this))
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
