// Walking the tokens of a text by wide steps, beside a walk character by character.

#include "geometry/dtextreader.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::string_view BLANKS = " \n\t\r";

struct PlainToken
{
  std::string text;
  bool isKeyword; // or a brace, or quoted
};

std::vector<PlainToken> PlainTokens(const std::string& text)
{
  std::vector<PlainToken> tokens;
  for (size_t at = text.find_first_not_of(BLANKS); at < text.size(); at = text.find_first_not_of(BLANKS, at)) {
    const bool quoted = text[at] == '"';
    const size_t from = at + quoted;
    const size_t end = std::min(quoted ? text.find('"', from) : text.find_first_of(BLANKS, from), text.size());
    const bool isKeyword = std::string_view("*{}\"").find(text[at]) != std::string_view::npos;
    tokens.push_back({text.substr(from, std::min(end - from, DTextReader::MAX_TOKEN)), isKeyword});
    at = std::min(end + quoted, text.size());
  }
  return tokens;
}

// Words and blanks of many lengths; every second text has quotes, at the start of words and within.
std::string RandomText(unsigned seed)
{
  std::mt19937 random(seed);
  const auto below = [&](size_t n) { return random() % n; };
  std::string text;
  const std::string_view letters = seed % 2 ? "ab1*{}\"" : "ab1*{}";
  for (size_t words = below(40); words > 0; --words) {
    for (size_t n = below(8) == 0 ? 1 + below(40) : 1; n > 0; --n)
      text += BLANKS[below(4)];
    for (size_t n = below(6) == 0 ? 1 + below(50) : 1 + below(6); n > 0; --n)
      text += letters[below(letters.size())];
  }
  return text;
}

TEST(TextReader, FindsTheTokensOfAPlainWalk)
{
  for (unsigned seed = 0; seed < 3000; ++seed) {
    const std::string text = RandomText(seed);
    const auto plain = PlainTokens(text);
    // One token, some that are skipped, the next keyword, and so on.
    DTextReader in(text);
    std::string_view token;
    for (size_t i = 0; i <= plain.size();) {
      ASSERT_EQ(in.Next(token), i < plain.size()) << text;
      if (i == plain.size())
        break;
      ASSERT_EQ(token, plain[i].text) << text;
      const size_t skipped = (seed + i) % 10;
      in.Skip(static_cast<int>(skipped));
      for (i = std::min(i + 1 + skipped, plain.size()); i < plain.size() && !plain[i].isKeyword;)
        ++i;
      ASSERT_EQ(in.NextKeyword(token), i < plain.size()) << text;
      if (i < plain.size()) {
        ASSERT_EQ(token, plain[i++].text) << text;
      }
    }
  }
}

} // namespace
