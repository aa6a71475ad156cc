#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

// Walks the tokens of a text that lies in memory whole: words between white space, or what stands between two double
// quotes. Numbers are read in place.
class DTextReader
{
public:
  static constexpr size_t MAX_TOKEN = 1023; // characters; what is longer is read and its rest dropped

  explicit DTextReader(std::string_view text) : at(text.data()), end(text.data() + text.size()) {}

  size_t Left() const { return static_cast<size_t>(end - at); } // characters
  const char* Position() const { return at; }
  void Seek(const char* position) { at = position; } // one that Position gave

  static bool IsBlank(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }
  void SkipBlanks() { at = BehindBlanks(at); }
  // False at the end of the text.
  bool Next(std::string_view& token)
  {
    SkipBlanks();
    if (at == end)
      return false;
    if (*at == '"') {
      const char* from = ++at;
      const void* quote = std::memchr(at, '"', Left());
      const char* to = quote ? static_cast<const char*>(quote) : end;
      at = quote ? to + 1 : end;
      token = Cut(from, to);
      return true;
    }
    const char* from = at;
    at = *at == '*' ? BehindKeyword(at) : BehindWord(at);
    token = Cut(from, at);
    return true;
  }
  // The next token, "" at the end.
  std::string_view Token()
  {
    std::string_view token;
    return Next(token) ? token : std::string_view();
  }
  // Reads over tokens.
  void Skip(int tokens);
  // The next token that a keyword or a brace could be: all others, but for quoted ones, are passed over quickly.
  bool NextKeyword(std::string_view& token)
  {
    SkipBlanks();
    if (at < end && !IsMark(*at))
      at = ToMark(at);
    return at < end && Next(token);
  }
  // Behind the end of the block that opens next.
  void SkipBlock();

  // The next token as a whole number, by its leading digits; 0 without any, the nearest int for what is too large.
  int32_t Int()
  {
    SkipBlanks();
    const char* p = at;
    const bool minus = p < end && *p == '-';
    p += p < end && (*p == '-' || *p == '+');
    int64_t value = 0;
    for (; p < end && *p >= '0' && *p <= '9'; ++p)
      value = value > INT32_MAX ? value : value * 10 + (*p - '0');
    if (p < end && !IsBlank(*p)) {
      if (*at == '"')
        return QuotedInt();
      at = p;
      SkipWord();
    } else {
      at = p;
    }
    if (value > INT32_MAX)
      return minus ? INT32_MIN : INT32_MAX;
    return static_cast<int32_t>(minus ? -value : value);
  }
  // The next token as a number, as atof reads it, and narrowed; 0 without digits.
  float Float()
  {
    SkipBlanks();
    const char* p = at;
    const bool minus = p < end && *p == '-';
    p += p < end && (*p == '-' || *p == '+');
    uint64_t digits = 0;
    const char* first = p;
    for (; p < end && *p >= '0' && *p <= '9'; ++p)
      digits = digits * 10 + static_cast<uint64_t>(*p - '0');
    auto count = p - first;
    int scale = 0;
    if (p < end && *p == '.') {
      const char* point = ++p;
      for (; p < end && *p >= '0' && *p <= '9'; ++p)
        digits = digits * 10 + static_cast<uint64_t>(*p - '0');
      scale = static_cast<int>(p - point);
      count += scale;
    }
    // Whole and power of ten both exact as doubles: the quotient is the correctly rounded number.
    if (count > 0 && count <= EXACT_DIGITS && (p == end || IsBlank(*p))) {
      at = p;
      const double value = static_cast<double>(digits) / POWERS[static_cast<size_t>(scale)];
      return static_cast<float>(minus ? -value : value);
    }
    return SlowFloat();
  }

private:
  static constexpr long EXACT_DIGITS = 15;
  static constexpr std::array<double, 16> POWERS = {1,   1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                    1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  static std::string_view Cut(const char* from, const char* to)
  {
    const auto length = static_cast<size_t>(to - from);
    return {from, length < MAX_TOKEN ? length : MAX_TOKEN};
  }
  static bool IsMark(char c) { return c == '*' || c == '{' || c == '}' || c == '"'; }
  void SkipWord() { at = BehindWord(at); }
  // Not by the member, which would be stored at each step: it could lie in the text, for all the compiler knows.
  const char* BehindBlanks(const char* p) const
  {
    while (p < end && IsBlank(*p))
      ++p;
    return p;
  }
  const char* BehindWord(const char* p) const
  {
    while (p < end && !IsBlank(*p))
      ++p;
    return p;
  }
  // The same for a long word.
  const char* BehindKeyword(const char* p) const;
  const char* ToMark(const char* p) const;
  int32_t QuotedInt();
  float SlowFloat();

  const char* at;
  const char* end;
};
