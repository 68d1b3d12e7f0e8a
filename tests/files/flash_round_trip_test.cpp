// Image files into a chip's flash and back into dumps, with the chip's own commands between.

#include <gtest/gtest.h>

#include "jobs/job_starters.h"
#include "jobs/scripted_device.h"
#include "protocol/borvan_usb_q7.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

class FlashRoundTripTest : public testing::Test {
 protected:
  FlashRoundTripTest() {
    script->cameras = {MakeCamera(u'a', chip)};
    device->EnumerateDevices();
    device->SelectDevice(0);
    chip->ForgetTransfers();
  }

  void Write(const std::string& path, const std::string& start) {
    EXPECT_EQ(borvan::StartFlashWriteJob(device, path, start, recorder.Callback()), 0);
    ASSERT_TRUE(recorder.JobsEnded());
    EXPECT_EQ(recorder.Reports().back(), (std::pair{0U, 100}));
  }

  std::string Read(const std::string& name, const std::string& start, const std::string& end) {
    EXPECT_EQ(
        borvan::StartFlashQuickReadJob(device, folder.Path(name), start, end, recorder.Callback()),
        0);
    EXPECT_TRUE(recorder.JobsEnded());
    EXPECT_EQ(recorder.Reports().back(), (std::pair{0U, 100}));
    return folder.Content(name);
  }

 public:
  const TemporaryFolder folder;
  const std::shared_ptr<MemoryChip> chip = std::make_shared<MemoryChip>();
  const std::shared_ptr<PlatformScript> script = std::make_shared<PlatformScript>();
  const std::shared_ptr<borvan::BorvanUsb_Q7> device =
      std::make_shared<borvan::BorvanUsb_Q7>(std::make_unique<ScriptedPlatform>(script));
  ReportRecorder recorder{device};
};

struct SizeCase {
  std::size_t size;
  std::size_t erases;   // sectors of 4096 bytes
  std::size_t packets;  // pieces of 60 bytes, none of them blank
};

TEST_F(FlashRoundTripTest, ImagesOfEverySizeComeBack) {
  const SizeCase cases[] = {{0, 0, 0},     {1, 1, 1},     {59, 1, 1},    {60, 1, 1},     {61, 1, 2},
                            {4095, 1, 69}, {4096, 1, 69}, {4097, 2, 69}, {20000, 5, 334}};
  for (const SizeCase& tried : cases) {
    SCOPED_TRACE(tried.size);
    chip->PutFlash(0x1000, std::vector<std::uint8_t>(0x6000, 0xEE));
    chip->ForgetTransfers();
    std::string content(tried.size, '\0');
    for (std::size_t i = 0; i < content.size(); ++i) {
      content[i] = static_cast<char>(i % 239 + 1);
    }
    Write(folder.Put("image.bin", content), "00001000");
    EXPECT_EQ(chip->Sent(3).size(), tried.erases);
    EXPECT_EQ(chip->Sent(4).size(), tried.packets);
    if (tried.size != 0) {
      char end[16];
      std::snprintf(end, sizeof(end), "%zx", 0x1000 + tried.size - 1);
      EXPECT_EQ(Read("dump.bin", "1000", end), content);
    }
  }
}

TEST_F(FlashRoundTripTest, LastPieceIsFilledUpWithZeros) {
  Write(folder.Put("image.bin", "\xFF"), "00000000");
  const std::vector<std::vector<std::uint8_t>> sent = chip->Sent(4);
  ASSERT_EQ(sent.size(), 1U);
  std::vector<std::uint8_t> expected(64, 0x00);  // address 0, 60 bytes
  expected.at(4) = 0xFF;
  EXPECT_EQ(sent.at(0), expected);
}

TEST_F(FlashRoundTripTest, EmptyImageErasesAndWritesNothing) {
  Write(folder.Put("image.bin", ""), "00000000");
  EXPECT_TRUE(chip->Sent(3).empty());
  EXPECT_TRUE(chip->Sent(4).empty());
}

TEST_F(FlashRoundTripTest, TextDumpShowsTheFlash) {
  chip->PutFlash(0x2000, {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE, 0x99});
  EXPECT_EQ(Read("dump.txt", "2000", "2008"),
            "00002000h: 10 32 54 76 98 ba dc fe;\r\n"
            "00002008h: 99 00 00 00 00 00 00 00;\r\n");
}

TEST_F(FlashRoundTripTest, ShortRangeReportsHundredTwice) {
  chip->PutFlash(0x2000, {0x42});
  EXPECT_EQ(Read("dump.bin", "2000", "2000"), "\x42");
  ASSERT_EQ(recorder.Reports().size(), 2U);  // the operation's own and the job's
  EXPECT_EQ(recorder.Reports().at(0), (std::pair{0U, 100}));
}

TEST_F(FlashRoundTripTest, RangeThatEndsBeforeItStartsFailsAndLeavesAnEmptyFile) {
  folder.Put("dump.bin", "old");
  borvan::StartFlashQuickReadJob(device, folder.Path("dump.bin"), "10", "f", recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  ASSERT_EQ(recorder.Reports().size(), 1U);
  EXPECT_EQ(recorder.Reports().at(0), (std::pair{0xE0000004U, -1}));
  EXPECT_EQ(folder.Content("dump.bin"), "");
}

TEST_F(FlashRoundTripTest, ReadThatIsStoppedAfterSomePacketsLeavesADumpOfThem) {
  chip->PutFlash(0, std::vector<std::uint8_t>(64, 0x5A));
  int gets = 0;
  chip->Intercept([&](const Transfer& transfer) -> std::optional<borvan::Result> {
    if (transfer.request.id == 5 && transfer.request.flags == kGetFlags &&
        !transfer.is_length_query && ++gets > 1) {
      device->Jobs().stop_requested = true;
      return static_cast<borvan::Result>(0x8007001F);
    }
    return std::nullopt;
  });
  borvan::StartFlashQuickReadJob(device, folder.Path("dump.bin"), "0", "fff", recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  EXPECT_EQ(recorder.Reports().back(), (std::pair{0xE0000006U, -1}));
  EXPECT_EQ(folder.Content("dump.bin"), std::string(64, '\x5A'));
  EXPECT_FALSE(device->Jobs().stop_requested);
}

}  // namespace
}  // namespace borvan_test
