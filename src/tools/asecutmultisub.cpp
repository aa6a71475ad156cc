#include "tools/asecutmultisub.h"

#include "foundation/qreport.h"
#include "foundation/qstring.h"
#include "tools/asemesh.h"
#include "tools/asemultisub.h"
#include "tools/qtoolui.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

enum class Ended
{
  SCENE,    // gone through, as far as it is complete
  CANCELLED // by the user
};

class MultiCutter
{
public:
  MultiCutter(const AseLines& scene, const AseSubMaterials& subMaterials, const std::string& outputDirectory,
              QToolProgress& shows) :
      lines(scene),
      header(scene), materials(subMaterials), directory(outputDirectory), progress(shows)
  {}
  Ended Run();

private:
  enum class Outcome
  {
    CUT,
    NO_FACES,
    END,
    CANCELLED
  };
  Outcome CutObject(size_t name, size_t reference);
  Outcome CutSub(const AseMesh& mesh, int material, int sub);
  bool CopyMaterial(int material, int sub, std::string& out) const;
  bool Publish(const std::string& working, int sub, const std::string& subName) const;
  std::string PathOf(const std::string& leaf) const { return directory + "/" + leaf; }

  const AseLines& lines;
  AseHeader header;
  const AseSubMaterials& materials;
  const std::string& directory;
  QToolProgress& progress;
  int objects = 0;
  int done = 0;
  std::string objectName;
  std::string out;
};

std::string LowerCase(const std::string& text)
{
  qstring lower(text);
  lower.ToLower();
  return lower.Str();
}

// Not over a file that is there.
bool RenameNew(const std::string& from, const std::string& to)
{
  return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
}

bool MultiCutter::CopyMaterial(int material, int sub, std::string& text) const
{
  const size_t line = header.MaterialLine(material);
  if (line == AseLines::NONE) {
    QWARN("ASECutMS: Can't find material %d", material);
    return false;
  }
  const size_t subLine = lines.Find(AseLines::SUBMATERIAL, "*SUBMATERIAL " + std::to_string(sub), line + 1);
  if (subLine == AseLines::NONE) {
    QWARN("ASECutMS: Can't find material %d, submaterial %d", material, sub);
    return false;
  }
  const size_t start = lines.Lines()[subLine].end;
  const size_t next = lines.Find(AseLines::MATERIAL | AseLines::GEOMOBJECT | AseLines::SUBMATERIAL, subLine + 1);
  const size_t end = next == AseLines::NONE ? lines.Text().size() : lines.Lines()[next].start;
  text += "\t*MATERIAL 0 {\n";
  text += lines.Text().substr(start, end - start);
  text += "}\n";
  return true;
}

bool MultiCutter::Publish(const std::string& working, int sub, const std::string& subName) const
{
  constexpr int LAST = 1000000; // a directory with more files of one name is no use to anybody
  const std::string base = LowerCase(subName + "_" + std::to_string(sub) + "_" + objectName);
  if (RenameNew(working, PathOf(base + ".ase")))
    return true;
  for (int i = 2; i < LAST && errno == EEXIST; ++i) {
    const std::string other = PathOf(base + "_occ" + std::to_string(i) + ".ase");
    QWARN("Occ file already exists; renaming second occurence to\n %s", other.c_str());
    if (RenameNew(working, other))
      return true;
  }
  return false;
}

MultiCutter::Outcome MultiCutter::CutSub(const AseMesh& mesh, int material, int sub)
{
  const std::string& subName = materials.Name(material, sub);
  const std::string leaf = LowerCase("TEMP_" + subName + "_" + std::to_string(sub) + "_" + objectName + ".ase");
  const std::string working = PathOf(leaf);
  if (::access(working.c_str(), F_OK) == 0) // that very name: a search without regard to case reads the whole directory
    qinfo("ASECutMS: outfile '%s' already exists; overwriting.", working.c_str());
  out.assign(header.Text());
  out += "\t*MATERIAL_COUNT 1\n";
  if (!CopyMaterial(material, sub, out))
    QWARN("ASECutMS: Copy material failed for object %s", objectName.c_str());
  const int count = materials.Count(material);
  if (const int number = sub == 0 ? mesh.IdBeyond(count) : -1; number >= 0)
    QWARN("GEOM_OBJECT '%s' contains faces with MTLID %d while there are only %d submaterials defined in material #%d",
          objectName.c_str(), number, count, material);
  const bool composed = mesh.Compose(sub, out);
  if (!AseWriteFile(directory, leaf, composed ? std::string_view(out) : std::string_view())) {
    QWARN("ASECutMS; can't open output '%s'", working.c_str());
    return Outcome::END;
  }
  QDBG("OpenOutput(); opened %s\n", working.c_str());
  if (composed && Publish(working, sub, subName))
    return Outcome::CUT;
  if (::unlink(working.c_str()) != 0)
    QWARN("Can't remove temp file '%s'", working.c_str());
  return Outcome::NO_FACES;
}

// name, reference: the numbers of the object's lines.
MultiCutter::Outcome MultiCutter::CutObject(size_t name, size_t reference)
{
  const int material = AseNumberBehind(lines.Text(lines.Lines()[reference]), "*MATERIAL_REF");
  const int count = materials.Count(material);
  const AseMesh mesh(lines, lines.Lines()[name].end);
  Outcome result = Outcome::NO_FACES;
  int sub = 0;
  do {
    progress.SetProgress(done, objects);
    progress.SetText("GEOM " + std::to_string(done) + "/" + std::to_string(objects) + ", submat " +
                     std::to_string(sub) + "/" + std::to_string(count) + " (" + objectName + ")");
    if (!progress.Poll())
      return Outcome::CANCELLED;
    const Outcome one = CutSub(mesh, material, sub);
    if (one == Outcome::END)
      return one;
    if (one == Outcome::CUT)
      result = one;
  } while (++sub < count);
  return result;
}

Ended MultiCutter::Run()
{
  objects = lines.Count(AseLines::GEOMOBJECT);
  for (size_t next = 0; (next = lines.Find(AseLines::GEOMOBJECT, next)) != AseLines::NONE;) {
    const size_t name = lines.Find(AseLines::NODE_NAME, next + 1);
    const size_t reference = name == AseLines::NONE ? name : lines.Find(AseLines::MATERIAL_REF, name + 1);
    if (reference == AseLines::NONE)
      break;
    objectName = AseQuoted(lines.Text(lines.Lines()[name]));
    switch (CutObject(name, reference)) {
    case Outcome::CUT:
      ++done;
      break;
    case Outcome::NO_FACES:
      QWARN("ASECutMultiSub Failed to process material for geom %s; no faces with MTLID 0?", objectName.c_str());
      break;
    case Outcome::END:
      return Ended::SCENE;
    case Outcome::CANCELLED:
      return Ended::CANCELLED;
    }
    next = name + 1;
  }
  return Ended::SCENE;
}

} // namespace

bool ASECutMultiSub(const std::string& inputName, const std::string& outputDirectory, bool showResult, QToolUi& ui)
{
  {
    const auto progress = ui.OpenProgress("Cut ASE/MultiSub", "Cutting ASE apart.");
    AseLines lines;
    if (!lines.Read(inputName)) {
      QWARN("ASECutMS: can't open %s", inputName.c_str());
      return false;
    }
    ::mkdir(outputDirectory.c_str(), 0755); // writing tells when that failed
    AseSubMaterials materials;
    if (!materials.Read(lines, inputName, ui))
      return false;
    if (MultiCutter(lines, materials, outputDirectory, *progress).Run() == Ended::CANCELLED)
      return false;
  }
  if (showResult)
    ui.Tell("Cut Multi/sub ASE", "Converted into " + outputDirectory + " now try 'Convert ASE batch'");
  return true;
}
