// The file names that the workbench accepts: plain ones on every system.
#include <gtest/gtest.h>

#include "workbench/file_names.h"

namespace borvanusb::tool_test {
namespace {

TEST(WorkbenchFilesTest, PlainNamesAreTaken) {
  for (const char* const name :
       {"fw.hex", "a", "firmware (1).bin", "M\xC3\xBCller.bin", ".hidden", "console.txt", "com.bin",
        "com10.bin", "nulls", "a..b", "lpt", "x~1.bin", "\xF0\x9F\x98\x80.bin"}) {
    EXPECT_EQ(ProblemOfPlainName(name), "") << name;
  }
}

TEST(WorkbenchFilesTest, EverythingThatLeavesTheFolderIsRefused) {
  for (const char* const name :
       {"", ".", "..", "../a", "..\\a", "a/b", "a\\b", "/etc/passwd", "\\\\server\\share", "C:a",
        "C:\\a", "a:stream", "a::$DATA", "\\\\?\\C:\\a", "\\\\.\\PhysicalDrive0"}) {
    EXPECT_NE(ProblemOfPlainName(name), "") << name;
  }
}

TEST(WorkbenchFilesTest, DevicesOfWindowsAreRefusedInEverySpelling) {
  for (const char* const name :
       {"CON", "con", "NUL.txt", "nul .txt", "Aux", "prn.a.b", "COM1", "com9.bin", "LPT1", "com0",
        "COM\xC2\xB9", "conin$", "CONOUT$", "clock$"}) {
    EXPECT_NE(ProblemOfPlainName(name), "") << name;
  }
}

TEST(WorkbenchFilesTest, NamesThatWindowsChangesOrCommandsMisreadAreRefused) {
  for (const char* const name : {"a.", "a ", "a. ", " a", "-x", "--all", "a*", "a?", "a\"b", "a<b",
                                 "a>b", "a|b", "a\nb", "a\x01", "a\x7F"}) {
    EXPECT_NE(ProblemOfPlainName(name), "") << name;
  }
  EXPECT_NE(ProblemOfPlainName(std::string_view("a\0b", 3)), "");
}

TEST(WorkbenchFilesTest, WrongUtf8IsRefused) {
  for (const char* const name :
       {"\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "a\xFF", "\xC3", "\xF4\x90\x80\x80"}) {
    EXPECT_EQ(ProblemOfPlainName(name), "is not UTF-8");
  }
}

TEST(WorkbenchFilesTest, LengthIsLimited) {
  EXPECT_EQ(ProblemOfPlainName(std::string(120, 'a')), "");
  EXPECT_NE(ProblemOfPlainName(std::string(121, 'a')), "");
}

TEST(WorkbenchFilesTest, FilesOfTheFolderGetTheirPlainNames) {
  const std::string folder = "C:\\Users\\x\\run-1a";
  EXPECT_EQ(WithPlainNames(
                R"(To continue: borvanusb flash program C:\users\X\run-1a\fw.bin --address 0x10)"
                "\n"
                R"(To go back: borvanusb flash program 'c:/Users/x/run-1a/a b.bin')",
                folder),
            "To continue: borvanusb flash program fw.bin --address 0x10\n"
            "To go back: borvanusb flash program 'a b.bin'");
  // Other folders, and the folder itself.
  for (const char* const other :
       {R"(C:\Users\x\run-1ab\fw.bin)", R"(C:\Users\x\run-1a)", R"(D:\Users\x\run-1a2\a)", "",
        "fw.bin", R"(C:\Users\x\journals\a.journal)"}) {
    EXPECT_EQ(WithPlainNames(other, folder), other);
  }
  EXPECT_EQ(WithPlainNames("a/b", ""), "a/b");
}

}  // namespace
}  // namespace borvanusb::tool_test
