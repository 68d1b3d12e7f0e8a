// What goes to which stream.
#include "output/text_output.h"

#include <gtest/gtest.h>

namespace tool_test {
namespace {

struct Streams {
  explicit Streams(TextOutputOptions options)
      : output([this](std::string_view text) { out += text; },
               [this](std::string_view text) { err += text; }, options) {
    output.Line("line");
    output.JsonLine("{}");
    output.Note("note");
    output.Detail("detail");
    output.Error("error");
  }
  std::string out;
  std::string err;
  TextOutput output;
};

TEST(TextOutputTest, ResultsGoToStandardOutputRemarksToStandardError) {
  const Streams streams({});
  EXPECT_EQ(streams.out, "line\n");
  EXPECT_EQ(streams.err, "note\nerror\n");
  EXPECT_FALSE(streams.output.IsTerminal());
}

TEST(TextOutputTest, JsonLeavesTheTextAway) {
  const Streams streams({.json = true});
  EXPECT_EQ(streams.out, "{}\n");
  EXPECT_EQ(streams.err, "note\nerror\n");
}

TEST(TextOutputTest, QuietLeavesResultsAndErrors) {
  const Streams streams({.quiet = true});
  EXPECT_EQ(streams.out, "line\n");
  EXPECT_EQ(streams.err, "error\n");
}

TEST(TextOutputTest, VerboseTellsDetails) {
  const Streams streams({.verbose = true, .terminal = true});
  EXPECT_EQ(streams.err, "note\ndetail\nerror\n");
  EXPECT_TRUE(streams.output.IsTerminal());
}

}  // namespace
}  // namespace tool_test
