// Models out of the ASE text format: its materials, and an object for each *GEOMOBJECT. Keywords that aren't known are
// read over, and so are their values.

#include "geometry/dase.h"

#include "foundation/qfilename.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dreadfile.h"

#include <algorithm>

namespace {

// The materials of a file, as its keywords come.
class AseMaterials
{
public:
  AseMaterials(DGeode& owner, DAseFile& aseFile) : geode(owner), file(aseFile), in(aseFile.in) {}
  void Read(std::string_view keyword);

private:
  void Count();
  void Select();
  void SelectSub();
  void BitMap();
  std::string FindBitMap(const std::string& base) const;
  DVector4 Color()
  {
    const float r = in.Float();
    const float g = in.Float();
    const float b = in.Float();
    return {r, g, b, 1.0f};
  }
  void SetTransparency(float t)
  {
    current->diffuse.a = 1 - t;
    current->transparency = t;
  }
  void ReadCurrent(std::string_view keyword);

  DGeode& geode;
  DAseFile& file;
  DTextReader& in;
  DMaterial* current = nullptr;
  int sub = -1; // the submaterial that is read; -1: the material itself
};

void AseMaterials::Read(std::string_view keyword)
{
  if (keyword == "*MATERIAL_COUNT")
    Count();
  else if (keyword == "*MATERIAL")
    Select();
  else if (keyword == "*NUMSUBMTLS")
    QWARN("%d submaterials but multi/sub materials are flattened\n", in.Int());
  else if (keyword == "*SUBMATERIAL")
    SelectSub();
  else if (keyword == "*BITMAP")
    BitMap();
  else if (current)
    ReadCurrent(keyword);
}

void AseMaterials::ReadCurrent(std::string_view keyword)
{
  DMaterial& m = *current;
  if (keyword == "*MATERIAL_NAME") {
    if (const std::string_view name = in.Token(); sub == -1)
      m.name = name;
  } else if (keyword == "*MATERIAL_CLASS") {
    m.className = in.Token();
  } else if (keyword == "*MATERIAL_AMBIENT") {
    m.ambient = Color();
  } else if (keyword == "*MATERIAL_DIFFUSE") {
    m.diffuse = Color();
  } else if (keyword == "*MATERIAL_SPECULAR") {
    m.specular = Color();
  } else if (keyword == "*MATERIAL_SHINE") {
    m.shininess = in.Float() * 128;
  } else if (keyword == "*MATERIAL_TRANSPARENCY") {
    SetTransparency(in.Float());
  } else if (keyword == "*UVW_U_TILING") {
    m.uTiling = in.Float();
  } else if (keyword == "*UVW_V_TILING") {
    m.vTiling = in.Float();
  } else if (keyword == "*UVW_U_OFFSET") {
    m.uOffset = in.Float();
  } else if (keyword == "*UVW_V_OFFSET") {
    m.vOffset = in.Float();
  } else if (keyword == "*UVW_ANGLE") {
    m.angle = in.Float();
  }
}

void AseMaterials::Count()
{
  int count = std::max(in.Int(), 0);
  if (count > DGeode::MAX_MATERIALS) {
    QWARN("ASE import; max #materials exceeded (%d, max %d)", count, DGeode::MAX_MATERIALS);
    count = DGeode::MAX_MATERIALS;
  }
  current = nullptr;
  geode.material.clear();
  while (count-- > 0)
    geode.AddMaterial();
}

void AseMaterials::Select()
{
  const int last = geode.GetNoofMaterials() - 1;
  int i = in.Int();
  if (i < 0 || i > last) {
    QWARN("ASE import; material %d out of range (0..%d)", i, last);
    i = last;
  }
  current = geode.GetMaterial(i);
  sub = -1;
}

void AseMaterials::SelectSub()
{
  const int i = in.Int();
  if (!current)
    QERR("ASE import: no current material, but SUBMATERIAL seen.");
  else
    sub = i;
  if (i < 1) {
    QWARN("ASE multi/sub materials: submaterial #0 read in material itself, not as a submaterial");
  } else {
    QWARN("ASE multi/sub materials: submaterial #%d skipped", i);
    in.SkipBlock();
  }
}

std::string AseMaterials::FindBitMap(const std::string& base) const
{
  const size_t slash = file.name.find_last_of("/\\");
  const std::string directory = file.name.substr(0, slash + 1); // npos + 1 is 0
  const std::string beside = directory + base;
  QDBG("  try '%s'\n", beside.c_str());
  if (QFileExists(beside))
    return beside;
  if (directory.empty())
    return base;
  const std::string above = directory + "../" + base;
  QDBG("  try2 '%s'\n", above.c_str());
  return QFileExists(above) ? above : base;
}

void AseMaterials::BitMap()
{
  const std::string path(in.Token());
  if (!current)
    return;
  const std::string base = path.substr(path.find_last_of("/\\") + 1);
  current->AddBitMap(FindBitMap(base), false, &geode, true);
  current->bitmapName = path;
}

} // namespace

bool DGeode::ImportASE(DArray<int32_t>& faceIndexOut, const std::string& fileName)
{
  QDBG("DGeode:ImportASE(fname=%s)\n", fileName.c_str());
  DArray<std::byte> content;
  if (!DReadFile(fileName, content)) {
    QWARN("Can't open ASE file '%s'", fileName.c_str());
    return false;
  }
  return ImportASE(faceIndexOut, {reinterpret_cast<const char*>(content.data()), content.size()}, fileName);
}

bool DGeode::ImportASE(DArray<int32_t>& faceIndexOut, std::string_view text, const std::string& fileName)
{
  Clear();
  DAseFile file{DTextReader(text), fileName, {}};
  AseMaterials materials(*this, file);
  bool good = true;
  for (std::string_view token; good && file.in.NextKeyword(token);) {
    if (token != "*GEOMOBJECT") {
      materials.Read(token);
      continue;
    }
    if (GetNoofGeobs() >= MAX_GEOBS) {
      QERR("Too many geomobjects in ASE, max=%d", MAX_GEOBS);
      break;
    }
    file.faceIndex.clear();
    good = AddGeob()->ImportASE(file);
  }
  faceIndexOut = std::move(file.faceIndex);
  return good;
}
