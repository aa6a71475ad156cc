#pragma once

#include "tools/aselines.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

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
  // What one id's part takes of the entries besides what all parts take, in their order.
  struct Own
  {
    uint32_t entry;
    int face; // its new number, of the face that the entry belongs to
  };
  struct Part;
  void Add(std::string_view line);
  Entry ReadWords(std::string_view line);
  bool CanShare() const;
  void Share();
  int CountFaces(int id) const;

  const AseLines& scene;
  size_t objectEnd = 0; // where the line begins that ends the object
  std::vector<Entry> entries;
  std::vector<Id> ids; // of all lines that have one
  bool isShared = false;
  std::vector<uint32_t> common;         // the entries that all parts take, in order
  std::map<int, std::vector<Own>> owns; // by id
};
