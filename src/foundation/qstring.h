#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The owning string of the system: single-byte text in all practice. A wide form exists that nearly all operations
// refuse with a report and the neutral answer (false, -1, no change); it reads as "<unicodestr-nyi>".
// Letters are those of ASCII, whatever locale the process has set.
class qstring
{
public:
  enum Flag : uint32_t
  {
    UNICODE = 0x01
  };

  qstring() = default;
  explicit qstring(int sizeHint); // the hint is ignored: nothing is allocated
  qstring(const char* text);      // null gives an empty string
  qstring(std::string_view text) : s(text) {}
  qstring(std::string text) : s(std::move(text)) {}
  qstring(const char16_t* text);

  qstring& operator=(const char* text);
  qstring& operator=(int value); // "%d"
  qstring& operator=(const char16_t* text);

  // "" for an empty string, "<unicodestr-nyi>" for a wide one. Holds until the string is changed.
  const char* c_str() const { return flags & UNICODE ? "<unicodestr-nyi>" : s.c_str(); }
  std::string_view View() const { return flags & UNICODE ? std::string_view("<unicodestr-nyi>") : s; }
  operator std::string_view() const { return View(); }
  std::string Str() const { return std::string(View()); }
  bool IsUnicode() const { return flags & UNICODE; }

  qstring& operator+=(const char* text);
  qstring& operator+=(const qstring& text);
  qstring& operator+=(const std::string& text) { return *this += std::string_view(text); }
  qstring& operator+=(std::string_view text);
  qstring& operator+=(char c);
  qstring& operator+=(int value);     // "%d"
  qstring& operator+=(float value);   // "%f"
  qstring& operator+=(double value);  // "%f"
  qstring& operator+=(const void* p); // "%p"

  friend qstring operator+(qstring a, std::string_view b) { return a += b; }
  friend bool operator==(const qstring& a, const qstring& b)
  {
    return a.flags == b.flags && (a.flags & UNICODE ? a.ws == b.ws : a.s == b.s);
  }
  friend bool operator==(const qstring& a, const std::string& b) { return a.View() == b; }
  friend bool operator==(const qstring& a, std::string_view b) { return a.View() == b; }
  friend bool operator==(const qstring& a, const char* b) { return a.View() == (b ? b : ""); }
  friend bool operator==(const qstring& a, const char16_t* b);
  // The order of the lower-cased copies, byte by byte.
  friend bool operator<(const qstring& a, const qstring& b) { return a.CompareLower(b) < 0; }
  friend bool operator>(const qstring& a, const qstring& b) { return a.CompareLower(b) > 0; }
  friend bool operator<=(const qstring& a, const qstring& b) { return a.CompareLower(b) <= 0; }
  friend bool operator>=(const qstring& a, const qstring& b) { return a.CompareLower(b) >= 0; }

  // 0 to the length inclusive; out of range is reported and gives the terminator. What is written to the terminator
  // is dropped.
  char& operator[](int index);
  char operator[](int index) const;

  int Length() const; // characters
  bool IsEmpty() const { return Length() == 0; }
  void Empty();
  void Resize(int n);     // makes room for n characters, never less than there is; the text stays as it is
  int Find(char c) const; // index or -1, as the next two
  int Find(const char* text) const;
  int FindLast(char c) const;
  bool Contains(const char* text) const;
  bool ContainsUppercase() const;
  int Count(char c) const;
  bool BeginsWith(const char* text) const; // null: false; "": true
  bool EndsWith(const char* text) const;
  void ReplaceAll(char from, char to);
  // Both inclusive and clamped to the string; a last of -1 means to the end.
  qstring GetSubstring(int first, int last) const;
  bool GetLine(qstring& out); // takes the first line out of a multi-line text; false when there is none
  char GetLastChar() const;
  void ToLower();
  void ToUpper();
  void Capitalize(bool firstOnly = false);
  bool CutFile();      // "a/b" gives "a"; false without a separator
  bool CutPath();      // "a/b" gives "b"; false without a separator
  bool CutExtension(); // from the last "." on, wherever it stands; false without one
  void LeavePostfix(); // what stands behind the last "."
  void CutFirstDirectory();
  void CutLeadingSpaces();
  void CutTrailingSpaces();
  void CutTrailingLF();
  bool CutUnderscoredNumber(); // "road_12" gives "road"; false without "_" and digits at the end
  void Chop();
  void ConvertEnv(); // "%NAME%" becomes the environment variable's value, "" when unknown
  // False with an empty string when the file is absent (reported) or empty.
  bool FromFile(const char* path);
  // The text without a terminator. False when it can't be written (reported); an old file stands then.
  [[nodiscard]] bool ToFile(const char* path) const;
  bool IsNumber() const;
  bool IsFloat() const;
  bool IsFileName() const;
  void MakeID(); // "Lake Side-2" gives "LAKE_SIDE2"; at most 255 characters, "_" when nothing is left
  // False with the reason when a character stands there that no number has.
  bool ValidateInt(qstring& reason) const;
  bool ValidateFloat(qstring& reason) const;
  void ASCII2UC(); // widens each byte

private:
  int CompareLower(const qstring& other) const;

  uint32_t flags = 0;
  std::string s;
  std::u16string ws;
};

// "1,234,567".
qstring QThousands(int value);
// A "'" and a "\" each get a backslash before them.
std::string QEscapeQuoted(std::string_view text);
