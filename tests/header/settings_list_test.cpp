// How the example load_settings reads a list, away from any camera.
#include "settings_list.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

class SettingsList : public testing::Test {
 protected:
  SettingsList()
      : path_(std::filesystem::temp_directory_path() /
              ("borvan-settings-list-" + std::to_string(std::uintptr_t(this)) + ".txt")) {}

  ~SettingsList() override {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
    std::free(settings_);
  }

  bool Read(const std::string& content) {
    std::ofstream(path_, std::ios::binary) << content;
    std::free(settings_);
    settings_ = nullptr;
    count_ = 0;
    std::array<char, 1000> complaint{};
    const bool read =
        ReadSettings(path_.string().c_str(), &settings_, &count_, complaint.data(), 1000);
    complaint_ = complaint.data();
    return read;
  }

  void ExpectSetting(std::size_t at, std::uint32_t slave, std::int32_t mode, std::uint32_t address,
                     std::uint32_t value) const {
    ASSERT_LT(at, count_);
    EXPECT_EQ(settings_[at].slave, slave) << at;
    EXPECT_EQ(settings_[at].mode, mode) << at;
    EXPECT_EQ(settings_[at].register_address, address) << at;
    EXPECT_EQ(settings_[at].value, value) << at;
  }

  void ExpectComplaint(const std::string& content, const std::string& text) {
    EXPECT_FALSE(Read(content)) << content;
    EXPECT_NE(complaint_.find(text), std::string::npos) << complaint_;
  }

  struct Setting* settings_ = nullptr;
  std::size_t count_ = 0;
  std::string complaint_;

 private:
  std::filesystem::path path_;
};

TEST_F(SettingsList, GivesRegistersWithSlaveAndMode) {
  ASSERT_TRUE(
      Read("// remark, with a comma\r\n"
           "0xfff8,0x6c,\r\n"
           "0xffff,0x05,\r\n"
           "0xfffe,0x03,\r\n"
           "0x3012, 0x5a, // remark\r\n"
           "no entry\r\n"
           "0xFFF2,0x01,\r\n"
           "0xfff8,0x20,\r\n"
           "0xfffe,0x04,\r\n"
           "3013,ABCD\r\n"));
  ASSERT_EQ(count_, 2U);
  ExpectSetting(0, 0x20, 2, 0x3013, 0xABCD);
  ExpectSetting(1, 0x6C, 1, 0x3012, 0x5A);
}

TEST_F(SettingsList, KeepsTheLastValueOfARegister) {
  ASSERT_TRUE(Read("0xfff8,0x48\n0xfffe,0x00\n2,1\n1,5\n2,3\n2,2\n"));
  ASSERT_EQ(count_, 2U);
  ExpectSetting(0, 0x48, 0, 1, 5);
  ExpectSetting(1, 0x48, 0, 2, 2);
}

TEST_F(SettingsList, CutsRegistersAndValuesToTheWidth) {
  ASSERT_TRUE(Read("0xfff8,0x48\n0xfffe,0x01\n0x3012,0x15a\n"));
  ExpectSetting(0, 0x48, 0, 0x12, 0x5A);
  ASSERT_TRUE(Read("0xfff8,0x48\n0xfffe,0x04\n0x13012,0x1abcd\n"));
  ExpectSetting(0, 0x48, 2, 0x3012, 0xABCD);
}

TEST_F(SettingsList, TakesALoneWidthMarkerForARegister) {
  ASSERT_TRUE(Read("0xfff8,0x48\n0xfffe,0x03\n0xfffe,0x05\n"));
  ASSERT_EQ(count_, 1U);
  ExpectSetting(0, 0x48, 1, 0xFFFE, 5);
}

TEST_F(SettingsList, NamesTheLineThatIsWrong) {
  ExpectComplaint("0xfff8,0x48\n0xfffe,0x03\n1,\n", "line 3: an address without a value");
  ExpectComplaint("\n0x3012,0x5a\n", "line 2: before the first register");
  ExpectComplaint("0xfffe,0x03\n", "line 1: before the first register");
  ExpectComplaint("0xfff8,0x48\n0xfffe,0x02\n", "line 2: the width code must be 0, 1, 3 or 4");
  ExpectComplaint("0xfff8,0x48\n0xfffe,0x05\n", "line 2: the width code must be 0, 1, 3 or 4");
  ExpectComplaint("//" + std::string(998, ' ') + "\n", "line 1: the line is longer than 999");
}

TEST_F(SettingsList, TakesLinesOf999Characters) {
  EXPECT_TRUE(Read("//" + std::string(997, ' ') + "\n0xfff8,0x48\n0xfffe,1\n1,2\n")) << complaint_;
}

TEST_F(SettingsList, ComplainsOfAListWithoutRegistersAndOfNoFile) {
  ExpectComplaint("0xfff8,0x48\n0xfffe,0x03\n", "holds no register");
  ExpectComplaint("", "holds no register");
  std::array<char, 100> complaint{};
  EXPECT_FALSE(ReadSettings("no/such/file", &settings_, &count_, complaint.data(), 100));
  EXPECT_STREQ(complaint.data(), "no/such/file can't be read");
}

}  // namespace
