// The public header as a C++ host sees it: types, layout, constants, helpers.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

#include "borvan_usb.h"
#include "fake_library.h"

namespace {

// A host and the library agree on these by the header alone, so a slip here is a call with wrong
// arguments there.
template <typename Expected, typename Actual>
constexpr bool kSame = std::is_same_v<Expected, Actual>;

static_assert(kSame<std::int32_t(), decltype(UsbIniDevice)>);
static_assert(kSame<bool(), decltype(UsbUpdateDevice)>);
static_assert(kSame<bool(std::uint32_t, std::uint32_t*), decltype(UsbFlashRead)>);
static_assert(kSame<bool(std::uint32_t, std::uint32_t), decltype(UsbFlashWrite)>);
static_assert(kSame<bool(std::uint32_t, std::uint32_t*, std::uint8_t), decltype(UsbRegisterRead)>);
static_assert(kSame<bool(std::uint32_t, std::uint32_t, std::uint8_t), decltype(UsbRegisterWrite)>);
static_assert(kSame<bool(std::uint32_t, std::uint32_t, std::uint32_t*, std::int32_t, std::uint32_t),
                    decltype(UsbI2cRead)>);
static_assert(kSame<bool(std::uint32_t, std::uint32_t, std::uint32_t, std::int32_t, std::uint32_t),
                    decltype(UsbI2cWrite)>);
static_assert(kSame<bool(std::uint32_t), decltype(UsbFlashErase)>);
static_assert(kSame<bool(const char*, std::uint32_t), decltype(UsbFlashWriteFile)>);
static_assert(kSame<bool(), decltype(UsbDestroyUSB)>);
static_assert(
    kSame<bool(const char*, std::uint32_t, std::uint32_t), decltype(UsbFlashQuickReadFile)>);
static_assert(
    kSame<bool(const char*, std::uint32_t, std::uint32_t), decltype(UsbRegisterReadFile)>);
static_assert(kSame<bool(const char*), decltype(UsbRegisterWriteFile)>);
static_assert(kSame<bool(std::uint32_t, std::uint32_t, const char*, std::int32_t, std::uint32_t),
                    decltype(UsbI2CReadFile)>);
static_assert(kSame<bool(const char*, std::uint32_t), decltype(UsbI2CWriteFile)>);
static_assert(kSame<bool(std::int32_t), decltype(UsbSelectDevice)>);
static_assert(kSame<bool(std::int32_t, const char**) noexcept, decltype(borvan_select_device)>);
static_assert(kSame<std::int32_t(), decltype(UsbGetDeviceNum)>);
static_assert(kSame<std::uint64_t(), decltype(GetProgressInfo)>);
static_assert(kSame<UsbDeviceInfo*(), decltype(UsbGetAllDeviceInfo)>);
static_assert(kSame<UsbDeviceInfo(), decltype(UsbGetSelectDeviceInfo)>);

static_assert(std::is_trivially_copyable_v<UsbDeviceInfo>);
static_assert(std::is_standard_layout_v<UsbDeviceInfo>);

// Constants serve where C++ wants a constant expression.
static_assert(kBorvanFlashEraseFailed == 0xE0000001U && kBorvanFileFormatFailed == 0xE000000BU);
static_assert(kBorvanSystemNoChannel == 0x80004003U && kBorvanSystemInvalidData == 0x8007000DU);
static_assert(kBorvanRegisterByte == 0 && kBorvanRegisterWide == 1);
static_assert(kBorvanI2cAddress8Data8 == 0 && kBorvanI2cAddress32Data32 == 5);
static_assert(kBorvanFlashSectorSize == 4096 && kBorvanFlashPieceSize == 60);
static_assert(kBorvanRegistersPerTransfer == 56 && kBorvanFlashErasedByte == 255);
static_assert(kBorvanFeatureRegister == 419 && kBorvanFeatureFastI2c == 32);
static_assert(kBorvanMarkerPause == 65535 && kBorvanLongestPauseMilliseconds == 255);
static_assert(kBorvanMarkerFirstDelay == 65533 && kBorvanMarkerSecondDelay == 65534);
static_assert(kBorvanMarkerSlave == 65528 && kBorvanMarkerWidthCode == 65534);
static_assert(kBorvanExceptionCode == 541541187);
static_assert(BORVAN_USB_VERSION_NUMBER_OF(1, 2, 3) == 1002003U);

// A status converts to the unsigned number that it is, never to a negative one.
static_assert(std::uint64_t{kBorvanFileError} == 3758096394U);

std::uint64_t Progress(std::uint32_t status, std::uint32_t percent) {
  return (std::uint64_t{status} << 32U) | percent;
}

struct StatusText {
  std::uint32_t status;
  const char* text;
};

TEST(StatusMessage, GivesEachOfTheElevenTexts) {
  constexpr std::array<StatusText, 11> kTexts{{
      {0xE0000001U, "Flash failed to erase"},
      {0xE0000002U, "GetLen fails in channel"},
      {0xE0000003U, "Flash write  failed"},
      {0xE0000004U, "Invalid address"},
      {0xE0000005U, "Flash read failed"},
      {0xE0000006U, "Termination of work"},
      {0xE0000007U, "The Fast interface failed to execute"},
      {0xE0000008U, "The values of fff8 and fffe were not obtained"},
      {0xE0000009U, "Device not found"},
      {0xE000000AU, "File name error or file error"},
      {0xE000000BU, "File format failed"},
  }};
  for (const StatusText& expected : kTexts) {
    EXPECT_STREQ(expected.text, borvan_status_message(expected.status));
  }
}

TEST(StatusMessage, IsNullForEveryOtherStatus) {
  for (const std::uint32_t status :
       {0U, 1U, 11U, 0x80004005U, 0xE0000000U, 0xE000000CU, 0xE0010001U, 0xFFFFFFFFU}) {
    EXPECT_EQ(nullptr, borvan_status_message(status)) << std::hex << status;
  }
}

TEST(StatusText, IsTheMessageOfTheLibrarysOwnFailures) {
  EXPECT_STREQ("Flash write  failed", borvan_status_text(0xE0000003U));
  EXPECT_STREQ("The job did not end within the time limit", borvan_status_text(0xE0001001U));
}

TEST(StatusText, HasWordsForTheSystemsCodes) {
  constexpr std::array<StatusText, 6> kTexts{{
      {0x80004003U, "no camera is open"},
      {0x8007000EU, "out of memory"},
      {0x8007001FU, "the camera refused the transfer"},
      {0x8007048FU, "the camera is not connected any more"},
      {0x80070490U, "the camera's vendor unit has no such control"},
      {0x8007000DU, "the camera reported an impossible length"},
  }};
  for (const StatusText& expected : kTexts) {
    EXPECT_STREQ(expected.text, borvan_status_text(expected.status));
  }
}

TEST(StatusText, IsNeverNull) {
  EXPECT_STREQ("no failure", borvan_status_text(0));
  for (const std::uint32_t status : {1U, 11U, 0x7FFFFFFFU}) {
    EXPECT_STREQ("no failure: a positive status", borvan_status_text(status)) << status;
  }
  for (const std::uint32_t status : {0x80000000U, 0xE0000000U, 0xE000000CU, 0xFFFFFFFFU}) {
    EXPECT_STREQ("error code of the system or of the camera's driver", borvan_status_text(status))
        << std::hex << status;
  }
}

TEST(StatusCode, ServesInASwitch) {
  const auto number = [](std::uint32_t status) {
    switch (status) {
      case kBorvanFlashEraseFailed:
        return 1;
      case kBorvanSystemNoChannel:
        return 2;
      case kBorvanWaitEndMissed:
        return 3;
      default:
        return 0;
    }
  };
  EXPECT_EQ(1, number(0xE0000001U));
  EXPECT_EQ(2, number(0x80004003U));
  EXPECT_EQ(3, number(0xE0001002U));
}

TEST(Version, OfTheHeadersIsThatOfTheProject) {
  EXPECT_STREQ(BORVAN_PROJECT_VERSION, BORVAN_USB_VERSION_TEXT);
  const std::string numbers = std::to_string(BORVAN_USB_VERSION_MAJOR) + "." +
                              std::to_string(BORVAN_USB_VERSION_MINOR) + "." +
                              std::to_string(BORVAN_USB_VERSION_PATCH);
  EXPECT_EQ(BORVAN_PROJECT_VERSION, numbers);
}

TEST(ProgressValue, HoldsThePercentageLowAndTheStatusHigh) {
  EXPECT_EQ(37, borvan_progress_percent(0x0000000000000025U));
  EXPECT_EQ(0, borvan_progress_status(0x0000000000000025U));
  EXPECT_EQ(-2147467261, borvan_progress_status(0x8000400300000000U));  // 0x80004003, signed
  EXPECT_EQ(0, borvan_progress_percent(0x8000400300000000U));
}

TEST(ProgressValue, RunsBelow100AndIsDoneAt100) {
  EXPECT_EQ(kBorvanProgressRunning, borvan_progress_state(Progress(0, 0)));
  EXPECT_EQ(kBorvanProgressRunning, borvan_progress_state(Progress(0, 1)));
  EXPECT_EQ(kBorvanProgressRunning, borvan_progress_state(Progress(0, 99)));
  EXPECT_EQ(kBorvanProgressDone, borvan_progress_state(Progress(0, 100)));
}

TEST(ProgressValue, FailsWithANegativeStatus) {
  EXPECT_EQ(kBorvanProgressFailed, borvan_progress_state(Progress(0xE0000001U, 0)));
  EXPECT_EQ(kBorvanProgressFailed, borvan_progress_state(Progress(0x80004003U, 0)));
}

TEST(ProgressValue, TakesAPositiveStatusForNoFailure) {
  EXPECT_EQ(kBorvanProgressNotice, borvan_progress_state(Progress(1, 0)));   // dump past 100 %
  EXPECT_EQ(kBorvanProgressNotice, borvan_progress_state(Progress(11, 0)));  // list not begun
}

TEST(ProgressValue, WithHalvesOfTwoReportsIsNeitherDoneNorFailed) {
  // The former job's failure beside the percentage of a job that runs or has just ended.
  EXPECT_EQ(kBorvanProgressRunning, borvan_progress_state(Progress(0xE0000001U, 100)));
  EXPECT_EQ(kBorvanProgressRunning, borvan_progress_state(Progress(0xE0000001U, 40)));
  EXPECT_EQ(kBorvanProgressRunning, borvan_progress_state(Progress(1, 99)));
}

TEST(DeviceRecord, KeepsThePlacesOfItsFields) {
  EXPECT_EQ(248U, sizeof(UsbDeviceInfo));
  EXPECT_EQ(0U, offsetof(UsbDeviceInfo, path));
  EXPECT_EQ(120U, offsetof(UsbDeviceInfo, name));
  EXPECT_EQ(240U, offsetof(UsbDeviceInfo, vendor_id));
  EXPECT_EQ(244U, offsetof(UsbDeviceInfo, product_id));
}

TEST(DeviceRecord, TextEndsAtItsTerminator) {
  std::array<char, 120> field{};
  std::memcpy(field.data(), "camera\0rest", 12);
  std::array<char, 121> text{};
  text.fill('x');
  borvan_copy_text(field.data(), text.data());
  EXPECT_STREQ("camera", text.data());
}

TEST(DeviceRecord, TextOfTheWholeFieldGetsATerminator) {
  std::array<char, 120> field{};
  field.fill('p');
  std::array<char, 121> text{};
  text.fill('x');
  borvan_copy_text(field.data(), text.data());
  EXPECT_EQ(std::string(120, 'p'), text.data());
}

TEST(DeviceRecord, EmptyTextStaysEmpty) {
  const std::array<char, 120> field{};
  std::array<char, 121> text{};
  text.fill('x');
  borvan_copy_text(field.data(), text.data());
  EXPECT_STREQ("", text.data());
}

TEST(DeviceRecord, IdsRunTogetherAndAreReadApart) {
  UsbDeviceInfo info{};
  std::memcpy(info.vendor_id, "012FBEEF", 8);  // vendor and product ID, as the library stores them
  std::array<char, 5> id{};
  id.fill('x');
  borvan_copy_id(info.vendor_id, id.data());
  EXPECT_STREQ("012F", id.data());
  borvan_copy_id(info.product_id, id.data());
  EXPECT_STREQ("BEEF", id.data());
  EXPECT_EQ(0x012F, borvan_id_number(info.vendor_id));
  EXPECT_EQ(0xBEEF, borvan_id_number(info.product_id));
}

TEST(DeviceRecord, IdOfOtherCharactersIsNoNumber) {
  EXPECT_EQ(-1, borvan_id_number("\0\0\0\0"));
  EXPECT_EQ(-1, borvan_id_number("12G4"));
  EXPECT_EQ(-1, borvan_id_number("123 "));
  EXPECT_EQ(0xFFFF, borvan_id_number("FFFF"));
  EXPECT_EQ(0, borvan_id_number("0000"));
}

TEST(Selection, HasNoMessageWhenItIsMade) {
  const char* message = "untouched";
  EXPECT_TRUE(borvan_select_device(kFakeCamera, &message));
  EXPECT_EQ(nullptr, message);
}

TEST(Selection, HasNoMessageForACameraThatIsMissing) {
  const char* message = "untouched";
  EXPECT_FALSE(borvan_select_device(kNoFakeCamera, &message));
  EXPECT_EQ(nullptr, message);
}

TEST(Selection, HasTheMessageOfACameraThatCannotBeOpened) {
  const char* message = nullptr;
  EXPECT_FALSE(borvan_select_device(kFakeCameraThatIsGone, &message));
  EXPECT_STREQ("ERROR: the fake camera is gone", message);
}

TEST(Selection, HasAMessageWhenMemoryRunsOut) {
  const char* message = nullptr;
  EXPECT_FALSE(borvan_select_device(kFakeCameraWithoutMemory, &message));
  EXPECT_STREQ("ERROR: an exception other than a message, such as out of memory", message);
}

TEST(Selection, NeedsNoPlaceForTheMessage) {
  EXPECT_FALSE(borvan_select_device(kFakeCameraThatIsGone, nullptr));
  EXPECT_TRUE(borvan_select_device(kFakeCamera, nullptr));
}

}  // namespace
