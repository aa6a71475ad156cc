#include "tools/asecut.h"

#include "foundation/qreport.h"
#include "tools/aselines.h"
#include "tools/qtoolui.h"

#include <sys/stat.h>
#include <unordered_map>

namespace {

constexpr const char* DIRECTORY = "output";

class Cutter
{
public:
  Cutter(const AseLines& scene, QToolProgress& shows) : lines(scene), header(scene), progress(shows) {}
  void Run();

private:
  size_t Cut(size_t object);
  std::string_view Material(int number);
  void Compose(int material, size_t resume);

  const AseLines& lines;
  AseHeader header;
  QToolProgress& progress;
  std::unordered_map<int, std::string_view> materials; // as they were looked for; null data: not found
  std::string objectName;
  std::string out;
};

// The search for a material is the same for each object that uses it.
std::string_view Cutter::Material(int number)
{
  const auto [found, isNew] = materials.try_emplace(number);
  if (isNew)
    header.Material(number, found->second);
  return found->second;
}

// resume: behind the line with the object's name.
void Cutter::Compose(int material, size_t resume)
{
  QDBG("  Copying header.\n");
  out.assign(header.Text());
  out += "\t*MATERIAL_COUNT 1\n";
  QDBG("  Copying single material.\n");
  if (const std::string_view block = Material(material); block.data()) {
    out += "\t*MATERIAL 0 {\n";
    out += block;
    out += "}\n";
  }
  QDBG("  Copying GEOMOBJECT.\n");
  out += "*GEOMOBJECT {\n";
  const size_t reference = lines.Find(AseLines::MATERIAL_REF, lines.Behind(resume));
  const size_t limit = reference == AseLines::NONE ? lines.Text().size() : lines.Lines()[reference].start;
  out += lines.Text().substr(resume, lines.FindBrace(resume, limit) - resume);
  out += "\t*MATERIAL_REF 0\n}\n";
}

// The number of the line from which the next object is searched; NONE ends the run.
size_t Cutter::Cut(size_t object)
{
  const size_t name = lines.Find(AseLines::NODE_NAME, object + 1);
  if (name == AseLines::NONE)
    return AseLines::NONE;
  objectName = AseQuoted(lines.Text(lines.Lines()[name]));
  QDBG("Exporting GEOMOBJECT %s...\n", objectName.c_str());
  const size_t reference = lines.Find(AseLines::MATERIAL_REF, name + 1);
  if (reference == AseLines::NONE)
    return AseLines::NONE;
  const int material = AseNumberBehind(lines.Text(lines.Lines()[reference]), "*MATERIAL_REF");
  QDBG("  Material ref %d\n", material);
  Compose(material, lines.Lines()[name].end);
  if (AseWriteFile(DIRECTORY, objectName + ".ase", out))
    return name + 1;
  QWARN("ASECut; can't open output '%s/%s.ase'", DIRECTORY, objectName.c_str());
  return AseLines::NONE;
}

void Cutter::Run()
{
  const int count = lines.Count(AseLines::GEOMOBJECT);
  int done = 0;
  for (size_t next = 0; (next = lines.Find(AseLines::GEOMOBJECT, next)) != AseLines::NONE;) {
    next = Cut(next);
    if (next == AseLines::NONE)
      return;
    progress.SetProgress(++done, count);
    progress.SetText(std::to_string(done) + " out of " + std::to_string(count) + " (" + objectName + ")");
    progress.Flush();
  }
}

} // namespace

bool ASECut(const std::string& path, QToolUi& ui)
{
  const auto progress = ui.OpenProgress("Cut ASE", "Cutting ASE apart.");
  QDBG("ASECut: input file %s.\n", path.c_str());
  AseLines lines;
  if (!lines.Read(path)) {
    QWARN("ASECut: can't open %s", path.c_str());
    return false;
  }
  QDBG("%d geoms\n", lines.Count(AseLines::GEOMOBJECT));
  const size_t first = lines.Find(AseLines::GEOMOBJECT, 0);
  if (first == AseLines::NONE) {
    QWARN("ASECut(%s); no GEOMOBJECT found", path.c_str());
    return false;
  }
  QDBG("%d material lines.\n", lines.CountLines(lines.Lines()[first].start));
  ::mkdir(DIRECTORY, 0755); // writing tells when that failed
  Cutter(lines, *progress).Run();
  return true;
}
