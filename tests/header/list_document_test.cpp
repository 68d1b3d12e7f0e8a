// The examples of docs/list-files.md read as it says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "files/list_file.h"
#include "list_document.h"

namespace {

using Entries = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

class ListDocument : public testing::Test {
 protected:
  ListDocument()
      : path_(std::filesystem::temp_directory_path() /
              ("borvan-list-document-" + std::to_string(std::uintptr_t(this)) + ".txt")) {}

  ~ListDocument() override {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }

  Entries Read(const std::string& content) const {
    std::ofstream(path_, std::ios::binary) << content;
    Entries entries;
    for (const borvan::ListEntry& entry : borvan::ReadListFile(path_.string())) {
      entries.emplace_back(entry.address, entry.value);
    }
    return entries;
  }

 private:
  std::filesystem::path path_;
};

TEST_F(ListDocument, EachExampleReadsAsItSays) {
  const std::vector<test::ListExample> examples = test::ExamplesOf(BORVAN_LIST_DOCUMENT);
  ASSERT_GE(examples.size(), 12U);
  for (const test::ListExample& example : examples) {
    SCOPED_TRACE(example.remark);
    if (example.refused) {
      EXPECT_THROW(Read(example.content), std::invalid_argument);
    } else {
      EXPECT_EQ(Read(example.content), example.entries);
    }
  }
}

TEST_F(ListDocument, EachExampleReadsTheSameWithWindowsLineEnds) {
  for (const test::ListExample& example : test::ExamplesOf(BORVAN_LIST_DOCUMENT)) {
    SCOPED_TRACE(example.remark);
    if (example.refused) {
      continue;
    }
    std::string content;
    for (const char c : example.content) {
      content += c == '\n' ? "\r\n" : std::string(1, c);
    }
    EXPECT_EQ(Read(content), example.entries);
  }
}

}  // namespace
