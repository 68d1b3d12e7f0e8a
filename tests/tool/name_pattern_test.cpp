#include "base/name_pattern.h"

#include <gtest/gtest.h>

#include <string>

namespace borvanusb::tool_test {
namespace {

TEST(NamePatternTest, StarsAndQuestionMarks) {
  EXPECT_TRUE(MatchesPattern("CTRL*", "CTRL"));
  EXPECT_TRUE(MatchesPattern("CTRL*", "ctrl_2"));
  EXPECT_TRUE(MatchesPattern("*a*b", "xaxbxab"));
  EXPECT_TRUE(MatchesPattern("?B", "ab"));
  EXPECT_TRUE(MatchesPattern("**", ""));
  EXPECT_FALSE(MatchesPattern("?", ""));
  EXPECT_FALSE(MatchesPattern("*ab", "aba"));
  EXPECT_FALSE(MatchesPattern("", "a"));
  EXPECT_FALSE(MatchesPattern("ab", "a"));
}

TEST(NamePatternTest, NothingCrossesTheSeparator) {
  EXPECT_TRUE(MatchesPattern("A*.B", "AX.B", '.'));
  EXPECT_FALSE(MatchesPattern("A*", "A.B", '.'));
  EXPECT_FALSE(MatchesPattern("A?B", "A.B", '.'));
  EXPECT_TRUE(MatchesPattern("A*", "A.B"));
}

TEST(NamePatternTest, LongNamesCostNoTime) {
  const std::string name(5000, 'a');
  EXPECT_FALSE(MatchesPattern("*a*a*a*a*a*a*a*a*b", name));
}

}  // namespace
}  // namespace borvanusb::tool_test
