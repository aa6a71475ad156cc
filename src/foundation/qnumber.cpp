#include "foundation/qnumber.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <locale.h>

namespace {

std::string_view WithoutLeadingBlanks(std::string_view text)
{
  size_t blanks = 0;
  while (blanks < text.size() && std::string_view(" \t\n\v\f\r").find(text[blanks]) != std::string_view::npos)
    ++blanks;
  return text.substr(blanks);
}

bool IsHexadecimal(std::string_view text)
{
  if (text.starts_with('-'))
    text.remove_prefix(1);
  return text.size() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

// For the rare forms: hexadecimal, and what is too large or too small.
double ParseInC(std::string_view text)
{
  static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
  return strtod_l(std::string(text).c_str(), nullptr, cLocale);
}

} // namespace

double QParseDouble(std::string_view text)
{
  text = WithoutLeadingBlanks(text);
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-') || text.starts_with('+'))
      return 0;
  }
  if (IsHexadecimal(text))
    return ParseInC(text);
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc::result_out_of_range ? ParseInC(text) : value;
}

float QParseFloat(std::string_view text)
{
  return static_cast<float>(QParseDouble(text));
}

std::string QFormatFloat(double value)
{
  // Sign, the digits of the largest double, point and decimals.
  std::array<char, std::numeric_limits<double>::max_exponent10 + 16> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, 6).ptr;
  return {buffer.data(), end};
}
