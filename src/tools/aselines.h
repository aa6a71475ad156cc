#pragma once

#include "geometry/dblock.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// An exported scene as lines that hold one keyword or another. Nothing is parsed: a keyword counts wherever it stands.
// A line is at most 1023 bytes; what is longer goes on as the next line.
class AseLines
{
public:
  static constexpr size_t MAX_LINE = 1023;
  enum Kind : uint32_t
  {
    GEOMOBJECT = 1,
    NODE_NAME = 2,
    MATERIAL_REF = 4,
    MATERIAL_COUNT = 8,
    MATERIAL = 16, // "*MATERIAL ", with the blank
    SUBMATERIAL = 32
  };
  struct Line
  {
    size_t start;
    size_t end; // behind its line feed
    uint32_t kinds;
  };
  static constexpr size_t NONE = static_cast<size_t>(-1);

  // False when the file can't be read.
  bool Read(const std::string& path);
  std::string_view Text() const { return text; }
  std::string_view Text(const Line& line) const { return text.substr(line.start, line.end - line.start); }
  // Those that hold a keyword, in the order of the file.
  const std::vector<Line>& Lines() const { return lines; }
  int Count(Kind kind) const;
  // The first from that number on with one of the kinds; NONE when there is none.
  size_t Find(uint32_t kinds, size_t from) const;
  // The same that also holds the text; all those lines are of that kind.
  size_t Find(Kind kind, const std::string& holds, size_t from) const;
  // The first that begins at the offset or behind it; the number of lines when there is none.
  size_t Behind(size_t offset) const;
  // Where the first line from the offset on begins that starts with "}", but at most limit. offset begins a line.
  size_t FindBrace(size_t offset, size_t limit) const;
  // The end of the line that begins there.
  size_t EndOfLine(size_t start) const;
  // How many lines stand in front of the offset.
  int CountLines(size_t offset) const;

private:
  void Index();
  DArray<std::byte> content;
  std::string_view text;
  std::vector<Line> lines;
};

// What stands between the first two double quotes; "unknown" without one.
std::string AseQuoted(std::string_view line);
// The whole number behind the word, by its leading digits; 0 without.
int AseNumberBehind(std::string_view line, std::string_view word);

// What every cut file of a scene begins with, and the rule by which materials are found.
class AseHeader
{
public:
  explicit AseHeader(const AseLines& scene);
  std::string_view Text() const { return text; } // in front of the count of materials
  int Lines() const { return lineCount; }
  // The lines of a material: from behind its own to the next material or object. False when there is none.
  bool Material(int number, std::string_view& block) const;
  // The number of its line, from which searches go on; NONE when there is none.
  size_t MaterialLine(int number) const;

private:
  const AseLines& lines;
  std::string_view text;
  int lineCount = 0;
  size_t firstLine = 0; // behind the header
};

// A cut file. It appears under its name when it is complete. False when it can't be written; a name with "/" or "\" in
// it can't.
bool AseWriteFile(const std::string& directory, const std::string& name, std::string_view content);
