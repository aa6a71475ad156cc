#include "foundation/qmatch.h"

#include <gtest/gtest.h>
#include <string>

TEST(QMatch, Patterns)
{
  const struct
  {
    const char* pattern;
    const char* text;
    bool match;
  } cases[] = {
      {"", "", true},
      {"", "a", false},
      {"*", "", true},
      {"*", "anything", true},
      {"*a", "", false},
      {"**", "", false}, // the first isn't the pattern's end, and an empty text fails it
      {"*a", "bca", true},
      {"*a*", "ba", true},
      {"?", "", false},
      {"?", "a", true},
      {"a?", "a", false},
      {"A?C", "abc", true},
      {"road_*.dof", "ROAD_12.DOF", true},
      {"road_*.dof", "road_.dof", true},
      {"road_*.dof", "road_1.dofx", false},
      {"!*.dof", "a.ase", true},
      {"!*.dof", "a.dof", false},
      {"!!a", "a", true},
      {"a!b", "ac", true},
      {"a!b", "ab", false},
      {"*!a", "aa", true}, // from the second letter on "a" is matched, but from the first "aa" isn't
      {"(a)", "a", true},
      {"(a)", "(a)", false},
      {"\xC4", "\xE4", false}, // only ASCII letters have a case
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.pattern) + " / " + c.text);
    EXPECT_EQ(c.match, QMatch(c.pattern, c.text));
  }
}

TEST(QMatch, ManyStarsOnALongTextEndSoon)
{
  std::string pattern;
  for (int i = 0; i < 1000; ++i)
    pattern += "*a";
  EXPECT_FALSE(QMatch((pattern + "b").c_str(), std::string(3000, 'a').c_str()));
  EXPECT_TRUE(QMatch(pattern.c_str(), std::string(3000, 'a').c_str()));
}
