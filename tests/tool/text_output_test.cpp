// Which output goes to which stream.
#include "output/text_output.h"

#include <gtest/gtest.h>

namespace borvanusb::tool_test {
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

TEST(TextOutputTest, TextIsOneLineWhateverItHolds) {
  std::string out;
  std::string err;
  const auto to_out = [&](std::string_view text) { out += text; };
  const auto to_err = [&](std::string_view text) { err += text; };
  TextOutput output(to_out, to_err, {.verbose = true});
  const std::string hostile = "a\nb\x1B[2J";
  output.Line(hostile);
  output.Note(hostile);
  output.Detail(hostile);
  output.Error(hostile);
  EXPECT_EQ(out, "a?b?[2J\n");
  EXPECT_EQ(err, "a?b?[2J\na?b?[2J\na?b?[2J\n");
  TextOutput json(to_out, to_err, {.json = true});
  out.clear();
  json.JsonLine("{\"name\":\"\xC2\x9B\"}");
  EXPECT_EQ(out, "{\"name\":\"\\u009b\"}\n");
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
}  // namespace borvanusb::tool_test
