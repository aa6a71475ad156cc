#pragma once

#include "geometry/dtextreader.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The tokens of a VRML text: commas and "]" end a word too, and stand for themselves.
class DVrmlReader
{
public:
  static constexpr size_t MAX_TOKEN = 254;
  explicit DVrmlReader(std::string_view text) : in(text) {}

  // "" for a comma that stands alone. "DEF" is read over, with its name. False at the end.
  bool Next(std::string& token);
  std::string PlainToken() { return std::string(in.Token()); } // may be quoted
  float Float();                                               // of the next token
  const char* Position() const { return in.Position(); }
  void Seek(const char* position) { in.Seek(position); }
  // The numbers between the next "[" and its "]". Commas count as blanks.
  std::vector<float> Numbers();
  std::vector<uint16_t> Indices(); // -1 becomes 65535

private:
  bool Read(std::string& token);
  template <typename Each>
  void EachInList(Each each);

  DTextReader in;
  bool noMoreLists = false;
};

// The faces of an index list, each ended by 65535, as triangles: a fan from the first corner. Faces of fewer than three
// corners are dropped (reported).
std::vector<uint16_t> DGV_TriangulateArray(const std::vector<uint16_t>& indices);
