#include "tools/asemultisub.h"

#include "foundation/qreport.h"
#include "foundation/qstring.h"
#include "geometry/dtextreader.h"
#include "tools/qtoolui.h"

#include <algorithm>

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
