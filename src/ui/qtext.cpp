#include "ui/qtext.h"

namespace {

// Bytes of the sequence at the position, or 0 when it isn't well-formed.
int SequenceLength(std::string_view text, size_t at)
{
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[at + i]); };
  const int length = byte(0) < 0x80                      ? 1
                     : byte(0) >= 0xC2 && byte(0) < 0xE0 ? 2
                     : (byte(0) & 0xF0) == 0xE0          ? 3
                     : byte(0) >= 0xF0 && byte(0) < 0xF5 ? 4
                                                         : 0;
  if (length == 0 || text.size() - at < static_cast<size_t>(length))
    return 0;
  for (size_t i = 1; i < static_cast<size_t>(length); ++i)
    if ((byte(i) & 0xC0) != 0x80)
      return 0;
  return length;
}

// Without regard to case, for the alphabets whose two halves lie a fixed step apart.
char32_t Folded(char32_t c)
{
  if ((c >= 'A' && c <= 'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7) || (c >= 0x391 && c <= 0x3AB) ||
      (c >= 0x410 && c <= 0x42F))
    return c + 32;
  if (c >= 0x400 && c <= 0x40F)
    return c + 80;
  return c >= 0x100 && c < 0x180 && c % 2 == 0 ? c + 1 : c;
}

} // namespace

bool QBeginsWith(std::string_view text, std::string_view beginning)
{
  size_t at = 0;
  for (size_t i = 0; i < beginning.size();)
    if (at >= text.size() || Folded(QNextChar(text, at)) != Folded(QNextChar(beginning, i)))
      return false;
  return true;
}

char32_t QNextChar(std::string_view text, size_t& at)
{
  const int length = SequenceLength(text, at);
  const auto lead = static_cast<unsigned char>(text[at]);
  if (length <= 1) {
    ++at;
    return lead;
  }
  char32_t c = lead & (0xFFu >> (length + 1));
  for (int i = 1; i < length; ++i)
    c = c << 6 | (static_cast<unsigned char>(text[at + static_cast<size_t>(i)]) & 0x3F);
  at += static_cast<size_t>(length);
  return c;
}

size_t QPreviousChar(std::string_view text, size_t at)
{
  for (size_t back = 1; back <= 4 && back <= at; ++back)
    if (SequenceLength(text, at - back) == static_cast<int>(back))
      return at - back;
  return at > 0 ? at - 1 : 0;
}

void QAppendChar(std::string& text, char32_t c)
{
  const auto put = [&](char32_t byte) { text += static_cast<char>(byte); };
  const auto tail = [&](int shift) { put(0x80 | (c >> shift & 0x3F)); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | c >> 6);
    tail(0);
  } else if (c < 0x10000) {
    put(0xE0 | c >> 12);
    tail(6);
    tail(0);
  } else {
    put(0xF0 | (c >> 18 & 7));
    tail(12);
    tail(6);
    tail(0);
  }
}
