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
  EXPECT_EQ(streams.output.ErrorColumns(), 0);
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
  const Streams streams({.verbose = true});
  EXPECT_EQ(streams.err, "note\ndetail\nerror\n");
}

TEST(TextOutputTest, TerminalHasColumnsAndACursorThatMoves) {
  int moved = 0;
  Streams streams({.columns = [] { return 60; }, .move_up = [&](int lines) { moved = lines; }});
  EXPECT_EQ(streams.output.ErrorColumns(), 60);
  streams.output.MoveUp(3);
  EXPECT_EQ(moved, 3);
}

TEST(TextOutputTest, WithoutATerminalThereIsNoCursorToMove) {
  Streams streams({});
  streams.output.MoveUp(3);
  EXPECT_EQ(streams.err, "note\nerror\n");
}

}  // namespace
}  // namespace tool_test
