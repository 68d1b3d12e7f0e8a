// Templates of long texts.
#include <gtest/gtest.h>

#include <stdexcept>

#include "command/templates.h"

namespace borvanusb::tool_test {
namespace {

TEST(TemplatesTest, PlacesInALineAreFilled) {
  EXPECT_EQ(Filled("a @X@, @Y_Z@ and @X@.\nb\n", {{"X", "1"}, {"Y_Z", "2"}}), "a 1, 2 and 1.\nb\n");
}

TEST(TemplatesTest, APlaceAloneInItsLineBecomesTheLinesOfItsText) {
  EXPECT_EQ(Filled("a\n@X@\nb\n", {{"X", "1\n2\n"}}), "a\n1\n2\nb\n");
  EXPECT_EQ(Filled("a\n@X@\nb\n", {{"X", "1\n2"}}), "a\n1\n2\nb\n");
  EXPECT_EQ(Filled("a\n@X@\nb\n", {{"X", ""}}), "a\nb\n");
}

TEST(TemplatesTest, TextsAreNotSearchedForPlaces) {
  EXPECT_EQ(Filled("@X@ @Y@\n@X@\n", {{"X", "@Y@"}, {"Y", "1"}}), "@Y@ 1\n@Y@\n");
}

TEST(TemplatesTest, OtherAtSignsStay) {
  EXPECT_EQ(Filled("@( @{ ${words[@]} @x@ @@ @X\n@", {{"X", "1"}}),
            "@( @{ ${words[@]} @x@ @@ @X\n@");
}

TEST(TemplatesTest, APlaceWithoutATextIsAMistake) {
  EXPECT_THROW(Filled("a @X@\n", {{"Y", "1"}}), std::logic_error);
  EXPECT_THROW(Filled("@X@\n", {}), std::logic_error);
}

}  // namespace
}  // namespace borvanusb::tool_test
