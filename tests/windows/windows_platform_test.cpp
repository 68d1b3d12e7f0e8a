// The few base services of Windows that the device object uses.

#include <gtest/gtest.h>
#include <windows.h>

#include <fstream>
#include <string>

#include "device/windows_platform.h"
#include "protocol/borvan_usb_q7.h"
#include "temporary_folder.h"

namespace {

using test::TemporaryFolder;

constexpr UINT kWesternEuropean = 1252;

class AnsiText : public testing::Test {
 protected:
  void SetUp() override {
    if (GetACP() != kWesternEuropean) {
      GTEST_SKIP() << "the expected bytes are those of code page 1252, this system has "
                   << GetACP();
    }
  }
  borvan::WindowsPlatform platform_;
};

TEST_F(AnsiText, KeepsWhatTheCodePageHas) {
  EXPECT_EQ(platform_.ToAnsi(u"usb#vid_1234"), "usb#vid_1234");
  // e acute, euro sign, y diaeresis
  EXPECT_EQ(platform_.ToAnsi(u"caf\u00E9 \u20AC \u00FF"), "caf\xE9 \x80 \xFF");
}

TEST_F(AnsiText, ReplacesWhatTheCodePageLacksByItsDefaultCharacter) {
  // CJK "middle", Cyrillic A
  EXPECT_EQ(platform_.ToAnsi(u"a\u4E2Db\u0410c"), "a?b?c");
}

// Best fit would make an a of the a with macron, and so another path of this one.
TEST_F(AnsiText, MakesNoSimilarCharacterOfOneThatTheCodePageLacks) {
  EXPECT_EQ(platform_.ToAnsi(u"\u0101"), "?");
}

TEST_F(AnsiText, GivesNothingForNothing) {
  EXPECT_EQ(platform_.ToAnsi(u""), "");
}

TEST_F(AnsiText, KeepsALongTextWhole) {
  const std::u16string wide(5000, u'x');
  EXPECT_EQ(platform_.ToAnsi(wide), std::string(5000, 'x'));
}

TEST(SystemMessage, HasATextForAKnownCode) {
  borvan::WindowsPlatform platform;
  EXPECT_FALSE(platform.SystemMessage(0x80004005).empty());
}

TEST(SystemMessage, IsEmptyForACodeThatTheSystemDoesNotKnow) {
  borvan::WindowsPlatform platform;
  EXPECT_EQ(platform.SystemMessage(0xE000000C), "");
}

TEST(ErrorText, IsOurOwnForOurCodesAndTheSystemsForTheOthers) {
  borvan::BorvanUsb_Q7 device(std::make_unique<borvan::WindowsPlatform>());
  EXPECT_EQ(device.GetErrorText(0xE0000003), "Flash write  failed");
  EXPECT_FALSE(device.GetErrorText(0x80004005).empty());
  EXPECT_EQ(device.GetErrorText(0xE000000C), "");
}

TEST(SystemVersion, IsTold) {
  borvan::WindowsPlatform platform;
  const auto version = platform.GetSystemVersion();
  ASSERT_TRUE(version.has_value());
  EXPECT_GE(version->major, 5U);
}

void WriteByte(const std::string& path) {
  std::ofstream(path, std::ios::binary) << 'x';
}

TEST(ExclusiveOpening, OfAnExistingFileGivesZeroAndClosesIt) {
  const TemporaryFolder folder;
  borvan::WindowsPlatform platform;
  WriteByte(folder.File("there"));
  EXPECT_EQ(platform.TryOpenExclusively(folder.File("there")), 0U);
  EXPECT_EQ(platform.TryOpenExclusively(folder.File("there")), 0U) << "the first was not closed";
}

TEST(ExclusiveOpening, OfAMissingFileGivesFileNotFoundAndCreatesNone) {
  const TemporaryFolder folder;
  borvan::WindowsPlatform platform;
  EXPECT_EQ(platform.TryOpenExclusively(folder.File("missing")), DWORD{ERROR_FILE_NOT_FOUND});
  EXPECT_FALSE(std::filesystem::exists(folder.Path() / "missing"));
}

TEST(ExclusiveOpening, OfAnOpenFileGivesSharingViolation) {
  const TemporaryFolder folder;
  borvan::WindowsPlatform platform;
  WriteByte(folder.File("open"));
  const HANDLE holder =
      CreateFileA(folder.File("open").c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(holder, INVALID_HANDLE_VALUE);
  EXPECT_EQ(platform.TryOpenExclusively(folder.File("open")), DWORD{ERROR_SHARING_VIOLATION});
  CloseHandle(holder);
}

TEST(DevicePresence, IsAnsweredWithTrueWhateverThePathIs) {
  const TemporaryFolder folder;
  borvan::BorvanUsb_Q7 device(std::make_unique<borvan::WindowsPlatform>());
  EXPECT_TRUE(device.CheckDevicePresent(folder.File("missing"), "name"));
  EXPECT_TRUE(device.CheckDevicePresent("", ""));
}

}  // namespace
