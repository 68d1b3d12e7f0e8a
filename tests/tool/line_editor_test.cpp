// Editing of lines, and completion with Tab.
#include "station/line_editor.h"

#include <gtest/gtest.h>

#include "command/complete_line.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

using Kind = Key::Kind;
using Words = std::vector<std::string>;

class LineEditorTest : public testing::Test {
 protected:
  void Type(const std::string& text) {
    for (const char character : text) {
      editor_.Press({Kind::kText, std::string(1, character)});
    }
  }
  void Press(Kind kind, int times = 1) {
    for (int i = 0; i < times; ++i) {
      EXPECT_EQ(editor_.Press({kind}), LineEditor::Outcome::kEditing);
    }
  }
  // The line with a | at the cursor.
  std::string Shown() const {
    std::string text = editor_.Text();
    return text.insert(editor_.Cursor(), "|");
  }

  LineEditor editor_;
};

TEST_F(LineEditorTest, TextGoesInAtTheCursor) {
  Type("reg rad");
  Press(Kind::kLeft, 2);
  Type("e");
  EXPECT_EQ(Shown(), "reg re|ad");
  Press(Kind::kHome);
  Type("x");
  Press(Kind::kEnd);
  Type("y");
  EXPECT_EQ(Shown(), "xreg ready|");
}

TEST_F(LineEditorTest, KeysAtTheEndsOfTheLineDoNothing) {
  Press(Kind::kLeft);
  Press(Kind::kRight);
  Press(Kind::kBackspace);
  Press(Kind::kDelete);
  Press(Kind::kUp);
  Press(Kind::kDown);
  EXPECT_EQ(Shown(), "|");
}

TEST_F(LineEditorTest, CharactersOfSeveralBytesAreOne) {
  editor_.Press({Kind::kText, "a\xC3\xA4\xE6\x97\xA5z"});
  Press(Kind::kLeft, 2);
  EXPECT_EQ(Shown(), "a\xC3\xA4|\xE6\x97\xA5z");
  Press(Kind::kBackspace);
  EXPECT_EQ(Shown(), "a|\xE6\x97\xA5z");
  Press(Kind::kDelete);
  EXPECT_EQ(Shown(), "a|z");
}

TEST_F(LineEditorTest, WordsArePassedAndTheBeginningIsCleared) {
  Type("reg read 0x1a3");
  Press(Kind::kWordLeft);
  EXPECT_EQ(Shown(), "reg read |0x1a3");
  Press(Kind::kWordLeft);
  EXPECT_EQ(Shown(), "reg |read 0x1a3");
  Press(Kind::kWordRight);
  EXPECT_EQ(Shown(), "reg read |0x1a3");
  Press(Kind::kClearLine);
  EXPECT_EQ(Shown(), "|0x1a3");
}

TEST_F(LineEditorTest, FormerLinesComeBackAndTheNewOneIsKept) {
  for (const char* line : {"first", "second", "second", "  "}) {
    Type(line);
    EXPECT_EQ(editor_.Press({Kind::kEnter}), LineEditor::Outcome::kLine);
    EXPECT_EQ(editor_.Take(), line);
  }
  Type("new");
  Press(Kind::kUp);
  EXPECT_EQ(Shown(), "second|");
  Press(Kind::kUp, 2);
  EXPECT_EQ(Shown(), "first|");
  Type("!");
  Press(Kind::kDown);
  EXPECT_EQ(Shown(), "second|");
  Press(Kind::kDown, 2);
  EXPECT_EQ(Shown(), "new|");
  // Changing a line of the history does not change the history.
  Press(Kind::kUp, 2);
  EXPECT_EQ(Shown(), "first|");
}

TEST_F(LineEditorTest, OtherKeysAreForTheCaller) {
  EXPECT_EQ(editor_.Press({Kind::kTab}), LineEditor::Outcome::kComplete);
  EXPECT_EQ(editor_.Press({Kind::kCancel}), LineEditor::Outcome::kCancelled);
  EXPECT_EQ(editor_.Press({Kind::kEndOfInput}), LineEditor::Outcome::kEnd);
  Type("reg re 1");
  Press(Kind::kLeft, 2);
  editor_.Complete(4, "read");
  EXPECT_EQ(Shown(), "reg read| 1");
}

TEST(VisiblePartTest, CursorIsAlwaysVisible) {
  const auto shown = [](const std::string& text, std::size_t cursor) {
    const VisibleLine visible = VisiblePart("> ", text, cursor, 8);
    EXPECT_TRUE(visible.line.starts_with(visible.before_cursor));
    return visible.line + "$" + visible.before_cursor;
  };
  EXPECT_EQ(shown("abc", 3), "> abc$> abc");
  EXPECT_EQ(shown("abcdef", 0), "> abcdef$> ");
  EXPECT_EQ(shown("abcdefgh", 0), "> abcdef$> ");
  EXPECT_EQ(shown("abcdefgh", 8), "> defgh$> defgh");
  EXPECT_EQ(shown("abcdefgh", 6), "> bcdefg$> bcdef");
  // Each character takes two columns.
  EXPECT_EQ(shown("\xE6\x97\xA5\xE6\x97\xA5\xE6\x97\xA5\xE6\x97\xA5", 12),
            "> \xE6\x97\xA5\xE6\x97\xA5$> \xE6\x97\xA5\xE6\x97\xA5");
}

TEST(CompleteLineTest, CommandsOptionsAndChoicesAreOffered) {
  const ToolDescription tool = DescribeTool();
  const auto candidates = [&](const std::string& line) {
    return CompleteLine(tool, line, {}).candidates;
  };
  EXPECT_EQ(candidates("i2"), Words{"i2c"});
  EXPECT_EQ(CompleteLine(tool, "i2c sc", {}).begin, 4U);
  EXPECT_EQ(candidates("i2c sc"), Words{"scan"});
  EXPECT_EQ(candidates("--progress b"), Words{"bar"});
  EXPECT_EQ(candidates("flash program --dry"), Words{"--dry-run"});
  EXPECT_EQ(candidates("i2c read --mo"), Words{"--mode"});
  EXPECT_EQ(candidates("i2c read --mode 8"), Words{"8/8"});
  EXPECT_EQ(candidates("i2c read --mode=8"), Words{"--mode=8/8"});
  EXPECT_EQ(candidates("completion b"), Words{"bash"});
  // `list` does not support --camera.
  EXPECT_EQ(candidates("list --cam"), Words{});
  EXPECT_EQ(candidates("nothing x"), Words{});
}

TEST(CompleteLineTest, FilesAndFoldersAreOffered) {
  const TestFolder folder;
  folder.Write("one.txt", "");
  folder.Write("one more.txt", "");
  folder.Write("two.txt", "");
  std::filesystem::create_directory(folder.Name("sub dir"));
  const ToolDescription tool = DescribeTool();
  const std::string base = folder.Name("");
  const auto candidates = [&](const std::string& line) {
    return CompleteLine(tool, line, {}).candidates;
  };
  EXPECT_EQ(candidates("reg load " + base + "tw"), Words{base + "two.txt"});
  EXPECT_EQ(candidates("reg load " + base + "one"),
            (Words{"\"" + base + "one more.txt\"", base + "one.txt"}));
  EXPECT_EQ(candidates("reg load \"" + base + "one m"), Words{"\"" + base + "one more.txt\""});
  EXPECT_EQ(candidates("run " + base + "s"), Words{"\"" + base + "sub dir/"});
  EXPECT_TRUE(LineCompletion::IsOpen("\"" + base + "sub dir/"));
  EXPECT_EQ(candidates("list " + base), Words{});
}

TEST(CompleteLineTest, CommonBeginningHasWholeCharacters) {
  EXPECT_EQ(CommonBeginning({"--verify", "--verbose"}), "--ver");
  EXPECT_EQ(CommonBeginning({"a\xC3\xA4", "a\xC3\xB6"}), "a");
  EXPECT_EQ(CommonBeginning({"one"}), "one");
  EXPECT_EQ(CommonBeginning({}), "");
}

}  // namespace
}  // namespace borvanusb::tool_test
