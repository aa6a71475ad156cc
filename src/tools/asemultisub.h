#pragma once

#include "tools/aselines.h"

#include <array>
#include <cstdint>
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

// The lines of one geometry object, sorted by what a cut does with them.
class AseMesh
{
public:
  static constexpr int MAX_FACES = 150000;
  // offset: behind the line with the object's name.
  AseMesh(const AseLines& aseLines, size_t offset);
  // A number of a material id that isn't below the count; -1 when all are.
  int IdBeyond(int count) const;
  // Appends the object with the faces of that id alone. False when it has none, or too many faces (reported).
  bool Compose(int id, std::string& out) const;

private:
  enum Kind
  {
    COPIED,
    NUMFACES,
    NUMTVFACES,
    NUMCVFACES,
    FACE,
    TFACE,
    FACENORMAL,
    CFACE
  };
  static constexpr int NORMALS = 3; // lines behind a FACENORMAL that go with it
  struct Entry
  {
    Kind kind;
    int number;            // behind the keyword
    int id;                // that the line ends with; -1: none
    std::string_view text; // of COPIED all lines up to the next entry
    int lineCount = 1;
    std::array<uint32_t, NORMALS> lineEnds = {}; // in the text, of its first lines
  };
  struct Id
  {
    int atLineEnd; // -1: something stands behind it
    int number;
  };
  struct Part;
  void Add(std::string_view line);
  Entry ReadWords(std::string_view line);
  int CountFaces(int id) const;

  const AseLines& scene;
  size_t objectEnd = 0; // where the line begins that ends the object
  std::vector<Entry> entries;
  std::vector<Id> ids; // of all lines that have one
};
