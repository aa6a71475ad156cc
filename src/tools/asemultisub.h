#pragma once

#include "tools/aselines.h"

#include <string>
#include <string_view>
#include <vector>

class QToolUi;

// The submaterials of a scene's materials.
class AseSubMaterials
{
public:
  static constexpr int MAX_MATERIAL = 6000;
  static constexpr int MAX_SUBMATERIAL = 1000; // a material

  // False when there are more than that (told) or no object follows (reported). sceneName is for reports.
  bool Read(const AseLines& scene, const std::string& sceneName, QToolUi& ui);
  int Count(int material) const; // 0 for a number that no material has
  // In lower case; "" for one without a name.
  const std::string& Name(int material, int sub) const;

private:
  struct Material
  {
    int count = 0;
    std::vector<std::string> names;
  };
  bool ReadLine(std::string_view line, QToolUi& ui);
  bool Refuse(const std::string& text, QToolUi& ui);
  void ReadCount(std::string_view line);
  void ReadName(std::string_view line);

  std::vector<Material> materials;
  int depth = 0;
  int material = -1;
  int sub = -1;
};
