// `map check`, and a comparison of its counts with those of count_svd.py.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>

#include "base/files.h"
#include "base/format.h"
#include "maps/check.h"
#include "maps/map_text.h"
#include "maps/read_svd.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

const std::string kFiles = BORVAN_SVD_FILES;

// The counts of the independent implementation.
std::string SecondOpinion(const std::string& file) {
  const std::string line =
      std::string(BORVAN_PYTHON) + " -B '" + kFiles + "/count_svd.py' '" + file + "'";
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(line.c_str(), "r"), pclose);
  std::array<char, 200> text = {};
  if (pipe == nullptr || std::fgets(text.data(), text.size(), pipe.get()) == nullptr) {
    return "no answer";
  }
  return text.data();
}

void ExpectSameCounts(const std::string& folder) {
  for (const std::string& name : FilesIn(folder)) {
    if (!name.ends_with(".svd")) {
      continue;
    }
    const std::string file = Format("{}/{}", folder, name);
    const MapCounts counts = CountsOf(ReadSvd(ReadWholeText(file)));
    EXPECT_EQ(std::to_string(counts.peripherals) + " " + std::to_string(counts.registers) + " " +
                  std::to_string(counts.fields) + " " + std::to_string(counts.values) + "\n",
              SecondOpinion(file))
        << file;
  }
}

TEST(MapCountsTest, OwnFiles) {
  ExpectSameCounts(kFiles);
}

TEST(MapCountsTest, PublishedFiles) {
  const char* const folder = std::getenv("BORVAN_SVD_MAPS");
  if (folder == nullptr) {
    const char* const why = "not run: BORVAN_SVD_MAPS names no folder with published register maps";
    std::cout << why << "\n";
    GTEST_SKIP() << why;
  }
  ASSERT_FALSE(FilesIn(folder).empty()) << folder;
  ExpectSameCounts(folder);
}

TEST(MapCheckTest, ShowsRegistersFieldsAndValues) {
  CommandDesk desk;
  EXPECT_EQ(desk.Do(MapCheckCommand{kFiles + "/inheritance.svd"}, "map-check"), ExitCode::kDone);
  const std::string& out = desk.output.out;
  EXPECT_NE(out.find("SENSOR at 0x40000000  An image sensor\n"), std::string::npos) << out;
  EXPECT_NE(out.find("  0x40000000  SENSOR.CTRL             16 bits  rw   0x3344  read: clear  "
                     "oneToClear  protection: s\n"),
            std::string::npos)
      << out;
  EXPECT_NE(out.find("      [1:0]   MODE  rw   read: clear  oneToClear  write: the values below\n"),
            std::string::npos)
      << out;
  EXPECT_NE(out.find("            0x0 = OFF  Standby\n"), std::string::npos) << out;
  EXPECT_NE(out.find("            0b1x = TEST\n"), std::string::npos) << out;
  EXPECT_NE(out.find("            default = REST\n"), std::string::npos) << out;
  EXPECT_NE(out.find("INHERITANCE: 2 peripherals, 16 registers, 10 fields, 29 enumerated values, "
                     "1 doubt\n"),
            std::string::npos)
      << out;
}

TEST(MapCheckTest, JsonHoldsTheSame) {
  CommandDesk desk;
  desk.common.json = true;
  for (const char* const file : {"inheritance.svd", "arrays.svd", "alternates.svd"}) {
    EXPECT_EQ(desk.Do(MapCheckCommand{kFiles + "/" + file}, "map-check"), ExitCode::kDone);
  }
  EXPECT_EQ(desk.Do(MapCheckCommand{kFiles + "/inheritance.svd"}, "map-check"), ExitCode::kDone);
  EXPECT_EQ(desk.result["counts"]["registers"], 16);
  EXPECT_EQ(desk.result["doubts"][0]["line"], 51);
  const auto& mode = desk.result["peripherals"][0]["registers"][0]["fields"][0];
  EXPECT_EQ(mode["name"], "MODE");
  EXPECT_EQ(mode["enumerations"][0]["values"][2]["any_bits"], 1);
}

TEST(MapCheckTest, FileThatCantBeUsedEndsWith5) {
  CommandDesk desk;
  const TestFolder folder;
  const std::string file = folder.Write("a.svd", "<device>\n<name>");
  const Failure failure = desk.FailureOf(MapCheckCommand{file});
  EXPECT_EQ(failure.Code(), ExitCode::kFile);
  EXPECT_EQ(failure.Message(),
            file + ":2: <name> has no end: </name> is missing; the map can't be used");
  EXPECT_EQ(desk.FailureOf(MapCheckCommand{folder.Name("none.svd")}).Code(), ExitCode::kFile);
}

}  // namespace
}  // namespace borvanusb::tool_test
