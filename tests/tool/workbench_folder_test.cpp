// The folder of a run: created, used and removed; what must be kept stays.
#include <gtest/gtest.h>

#include <algorithm>

#include "base/files.h"
#include "support/command_desk.h"
#include "workbench/run_folder.h"

namespace borvanusb::tool_test {
namespace {

TEST(WorkbenchFolderTest, FilesAreSavedListedAndRead) {
  const TestFolder test;
  const RunFolder folder(test.Name("runs"), "ab12", test.Name("journals"));
  folder.Save("fw.bin", "abc");
  folder.Save("fw.bin", "abcd");
  MakeFolder(folder.Name() + "/sub");
  const auto files = folder.List();
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(files.front().name, "fw.bin");
  EXPECT_EQ(files.front().size, 4U);
  EXPECT_EQ(folder.Read("fw.bin"), "abcd");
  EXPECT_FALSE(folder.Read("sub"));
  EXPECT_FALSE(folder.Read("other"));
}

TEST(WorkbenchFolderTest, FolderIsRemovedAtTheEnd) {
  const TestFolder test;
  MakeFolder(test.Name("journals/a folder"));
  std::string name;
  {
    const RunFolder folder(test.Name("runs"), "ab12", test.Name("journals"));
    name = folder.Name();
    folder.Save("fw.bin", "abc");
  }
  EXPECT_FALSE(FileExists(name));
  EXPECT_TRUE(FilesIn(test.Name("runs")).empty());
}

// Without the hold another workbench that starts would remove the folder as a leftover.
TEST(WorkbenchFolderTest, FirstRunOfAUserHoldsItsFolderToo) {
  const TestFolder test;
  const RunFolder folder(test.Name("new/runs"), "ab12", test.Name("journals"));
  EXPECT_TRUE(FileExists(folder.Name() + ".in-use"));
}

TEST(WorkbenchFolderTest, LeftoversOfKilledRunsAreRemovedAndOtherFilesAreNot) {
  const TestFolder test;
  MakeFolder(test.Name("runs/run-dead"));
  test.Write("runs/run-dead/fw.bin", "x");
  test.Write("runs/run-dead.in-use", "");
  test.Write("runs/notes.txt", "mine");
  const RunFolder folder(test.Name("runs"), "ab12", test.Name("journals"));
  EXPECT_FALSE(FileExists(test.Name("runs/run-dead")));
  EXPECT_TRUE(FileExists(test.Name("runs/notes.txt")));
}

TEST(WorkbenchFolderTest, FolderThatAJournalNamesStays) {
  const TestFolder test;
  MakeFolder(test.Name("journals"));
  test.Write("journals/1234-0001.json", R"({"backup":{"file":"C:\\runs\\run-ab12\\old.bin"}})");
  std::string name;
  {
    const RunFolder folder(test.Name("runs"), "ab12", test.Name("journals"));
    name = folder.Name();
    folder.Save("old.bin", "old");
  }
  EXPECT_EQ(ReadWholeText(name + "/old.bin"), "old");
  {
    const RunFolder next(test.Name("runs"), "cd34", test.Name("journals"));
    EXPECT_EQ(ReadWholeText(name + "/old.bin"), "old");
  }
  RemoveFile(test.Name("journals/1234-0001.json"));
  const RunFolder last(test.Name("runs"), "ef56", test.Name("journals"));
  EXPECT_FALSE(FileExists(name));
}

}  // namespace
}  // namespace borvanusb::tool_test
