#include "geometry/dtextreader.h"

#include "foundation/qnumber.h"

#include <bit>
#include <emmintrin.h>

namespace {

// What is looked at at once, where the text is that long.
constexpr long WIDTH = 16; // characters

// A bit for each character that is one of four.
unsigned AnyOf(const char* text, char a, char b, char c, char d)
{
  const __m128i all = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
  const auto is = [all](char what) { return _mm_cmpeq_epi8(all, _mm_set1_epi8(what)); };
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(is(a), is(b)), _mm_or_si128(is(c), is(d)))));
}

unsigned Blanks(const char* text)
{
  return AnyOf(text, ' ', '\n', '\t', '\r');
}

unsigned Marks(const char* text)
{
  return AnyOf(text, '*', '{', '}', '"');
}

// Of characters of which these are blank, the ones behind a blank. The first one is when isBehind says so, which then
// says it of the next character.
unsigned BehindABlank(unsigned blanks, unsigned& isBehind)
{
  const unsigned behind = blanks << 1 | isBehind;
  isBehind = blanks >> (WIDTH - 1);
  return behind;
}

} // namespace

const char* DTextReader::BehindKeyword(const char* p) const
{
  for (; end - p >= WIDTH; p += WIDTH)
    if (const unsigned blanks = Blanks(p))
      return p + std::countr_zero(blanks);
  return BehindWord(p);
}

// From a token's first character to that of the next one that begins with a mark, or the end.
const char* DTextReader::ToMark(const char* p) const
{
  unsigned isBehind = 1;
  for (; end - p >= WIDTH; p += WIDTH)
    if (const unsigned found = Marks(p) & BehindABlank(Blanks(p), isBehind))
      return p + std::countr_zero(found);
  for (p = BehindBlanks(isBehind ? p : BehindWord(p)); p < end && !IsMark(*p);)
    p = BehindBlanks(BehindWord(p));
  return p;
}

void DTextReader::Skip(int tokens)
{
  SkipBlanks();
  const char* p = at;
  unsigned isBehind = 1;
  for (int left = tokens; end - p >= WIDTH; p += WIDTH) {
    if (AnyOf(p, '"', '"', '"', '"')) // what it quotes may hold blanks
      break;
    const unsigned blanks = Blanks(p);
    for (unsigned starts = ~blanks & BehindABlank(blanks, isBehind) & ((1U << WIDTH) - 1); starts != 0;
         starts &= starts - 1)
      if (left-- == 0) {
        at = p + std::countr_zero(starts);
        return;
      }
  }
  std::string_view token;
  while (tokens-- > 0 && Next(token)) {
  }
}

void DTextReader::SkipBlock()
{
  std::string_view token;
  for (int depth = 0; NextKeyword(token);) {
    if (token == "{")
      ++depth;
    else if (token == "}" && --depth <= 0)
      return;
  }
}

int32_t DTextReader::QuotedInt()
{
  const std::string_view token = Token();
  return DTextReader(token.starts_with('"') ? std::string_view() : token).Int();
}

float DTextReader::SlowFloat()
{
  return QParseFloat(Token());
}
