// Lengths as devices report them. The control here uses every buffer to its last byte, so that the
// page behind the buffer tells one that is too short.

#include <algorithm>
#include <array>
#include <functional>

#include "camera_with_script.h"
#include "support/guarded_memory.h"

namespace borvan::test {
namespace {

// A device that reports one length for everything, reads all of what it is given and fills all of
// what it is to fill.
class GreedyControl : public ExtensionUnitControl {
 public:
  explicit GreedyControl(std::uint32_t reported) : reported_(reported) {}

  // Every other selector reports 64 from here on.
  void ReportOnlyFor(std::uint32_t selector) { selector_ = selector; }
  // A reply's first byte: the register read's value, and with it the chip's features.
  void AnswerReadsWith(std::uint8_t value) { value_ = value; }

  Result KsProperty(const NodePropertyRequest& request, void* data, std::uint32_t length,
                    std::uint32_t& bytes_returned) override {
    auto* const bytes = static_cast<std::uint8_t*>(data);
    TouchAll(data, length);
    switch (CheckRequest(request, data, length)) {
      case Direction::kLengthQuery:
        bytes_returned = selector_ == 0 || selector_ == request.id ? reported_ : 64;
        return kMoreData;
      case Direction::kSet: {
        lengths_.push_back(length);
        const Bytes taken(bytes, bytes + length);
        const auto command_end = taken.begin() + std::min<std::ptrdiff_t>(64, length);
        tails_are_zero_ &=
            std::all_of(command_end, taken.end(), [](auto byte) { return byte == 0; });
        return 0;
      }
      case Direction::kGet:
        lengths_.push_back(length);
        std::fill(bytes, bytes + length, kReplyFill);
        if (length > 1) {
          bytes[1] = value_;
        }
        return get_result_;
    }
    return ScriptedControl::kOffScript;
  }

  const std::vector<std::uint32_t>& Lengths() const { return lengths_; }
  bool TailsAreZero() const { return tails_are_zero_; }
  void AnswerGetsWith(Result result) { get_result_ = result; }

 private:
  static constexpr std::uint8_t kReplyFill = 0x28;
  const std::uint32_t reported_;
  std::uint32_t selector_ = 0;
  std::uint8_t value_ = kReplyFill;
  Result get_result_ = 0;
  std::vector<std::uint32_t> lengths_;
  bool tails_are_zero_ = true;
};

using Operation = std::function<Result(BorvanUsb_Q7&)>;

struct OperationCase {
  const char* name;
  Operation run;
  std::size_t transfers;          // sets and gets of an undisturbed run
  bool length_is_twelve;          // the reported length is not used
  Result length_refused;          // the result when a length can't be true
  std::size_t transfers_refused;  // sets and gets made all the same
  std::uint32_t selector;         // whose length counts; 0 when two selectors do
  bool fast_i2c = false;          // the chip has the fast I2C transfers
};

std::string ignored_value;
Bytes ignored_bytes;
std::vector<ListEntry> ignored_list;

const OperationCase kOperations[] = {
    {"SelectDevice, index refused",
     // The selection's own result is the constant one; 0 here tells that it came.
     [](auto& device) { return device.SelectDevice(1) == Code(0x80004005) ? 0 : -1; }, 3, false, 0,
     0, 1},
    {"RegisterWrite, wide", [](auto& device) { return device.RegisterWrite("1", "2", 1); }, 4,
     false, kLengthQueryFailed, 0, 1},
    {"RegisterWrite, byte", [](auto& device) { return device.RegisterWrite("1", "2", 0); }, 3,
     false, kLengthQueryFailed, 0, 1},
    {"RegisterRead, wide", [](auto& device) { return device.RegisterRead("1", ignored_value, 1); },
     4, false, kLengthQueryFailed, 0, 1},
    {"RegisterRead, byte", [](auto& device) { return device.RegisterRead("1", ignored_value, 0); },
     3, false, kLengthQueryFailed, 0, 1},
    {"I2cWrite", [](auto& device) { return device.I2cWrite("1", "2", "3", 5, 0); }, 1, true, 0, 1,
     2},
    {"I2cRead", [](auto& device) { return device.I2cRead("1", "2", ignored_value, 5, 0); }, 2, true,
     0, 2, 2},
    {"FlashWrite", [](auto& device) { return device.FlashWrite("1", "2"); }, 1, false, kBadLength,
     0, 3},
    {"FlashErase", [](auto& device) { return device.FlashErase("1"); }, 1, false, kBadLength, 0, 3},
    // Two sectors, 69 pieces.
    {"FlashWriteImage",
     [](auto& device) { return device.FlashWriteImage(Bytes(4097, 0x11), 0, {}); }, 2 + 69, false,
     // The erases' length query is not checked: they are sent, with length 0.
     kFastInterfaceFailed, 2, 0},
    {"FlashQuickReadImage",
     [](auto& device) {
       ignored_bytes.clear();
       return device.FlashQuickReadImage(ignored_bytes, 0, 64, {});
     },
     4, false, kFastInterfaceFailed, 0, 5},
    {"RegisterReadList",
     [](auto& device) {
       ignored_list.clear();
       return device.RegisterReadList(ignored_list, 0, 55, {});
     },
     2, false, kBadLength, 0, 7},
    {"RegisterWriteList",
     [](auto& device) {
       return device.RegisterWriteList({{0xFFFD, 0}, {0x10, 1}}, 0, {});
     },
     1, false, kBadLength, 0, 7},
    {"I2cReadList, in blocks",
     [](auto& device) {
       ignored_list.clear();
       return device.I2cReadList(ignored_list, 0x6C, 0, 55, 0, {});
     },
     // The length query is not checked: the exchange is made with length 0.
     2, false, 0, 2, 6, true},
    {"I2cWriteList, in packets",
     [](auto& device) {
       return device.I2cWriteList({{0xFFF8, 0x6C}, {0xFFFE, 0}, {0x10, 1}}, 0, {});
     },
     1, false, kFastInterfaceFailed, 0, 6, true},
    {"I2cReadList, step by step, 2 registers",
     [](auto& device) {
       ignored_list.clear();
       return device.I2cReadList(ignored_list, 0x6C, 0, 1, 0, {});
     },
     6, false, kBadLength, 0, 2},
    {"I2cWriteList, step by step",
     [](auto& device) {
       return device.I2cWriteList({{0xFFF8, 0x6C}, {0xFFFE, 0}, {0x10, 1}}, 0, {});
     },
     6, false, kLengthQueryFailed, 0, 2},
};

class ReportedLength : public ::testing::Test {
 protected:
  std::shared_ptr<GreedyControl> Select(std::uint32_t reported, bool fast_i2c = false) {
    // The feature read of the selection goes to a control of its own.
    auto control = std::make_shared<GreedyControl>(reported);
    const auto features = std::make_shared<GreedyControl>(4);
    features->AnswerReadsWith(fast_i2c ? 0x20 : 0x00);
    control->AnswerReadsWith(fast_i2c ? 0x20 : 0x00);
    const auto camera = std::make_shared<Camera>();
    camera->control = features;
    device_ = std::make_unique<BorvanUsb_Q7>(PlatformWith(camera));
    static_cast<void>(device_->EnumerateDevices());
    EXPECT_EQ(device_->SelectDevice(0), 0);
    camera->control = control;
    EXPECT_EQ(device_->OpenExtensionUnit(), 0);
    return control;
  }

  void TearDown() override { RecordProperty("runs", runs_); }

  Result Run(const Operation& operation) {
    ++runs_;
    const GuardedMemory guarded;
    return operation(*device_);
  }

  static constexpr std::array kPossible = {0U,  1U,  2U,  3U,  4U,    10U,   11U,
                                           12U, 63U, 64U, 65U, 4096U, 65535U};
  static constexpr std::array kImpossible = {65536U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU};

  std::unique_ptr<BorvanUsb_Q7> device_;

 private:
  int runs_ = 0;
};

TEST_F(ReportedLength, IsPassedOnAndHeldByEachBuffer) {
  for (const std::uint32_t reported : kPossible) {
    for (const OperationCase& operation : kOperations) {
      const auto control = Select(reported, operation.fast_i2c);
      EXPECT_EQ(Run(operation.run), 0) << operation.name << ", length " << reported;
      EXPECT_EQ(control->Lengths(),
                std::vector<std::uint32_t>(operation.transfers,
                                           operation.length_is_twelve ? 12 : reported))
          << operation.name << ", length " << reported;
      EXPECT_TRUE(control->TailsAreZero()) << operation.name << ", length " << reported;
    }
  }
}

TEST_F(ReportedLength, OfFlashReadsIsHeldByTheRetriesToo) {
  for (const std::uint32_t reported : kPossible) {
    const auto control = Select(reported);
    control->AnswerGetsWith(kDeviceGone);
    std::string value;
    EXPECT_EQ(Run([&](auto& device) { return device.FlashRead("1000", value); }), 1);
    EXPECT_EQ(control->Lengths(), std::vector<std::uint32_t>(14, reported));
  }
}

TEST_F(ReportedLength, Above65535IsRefused) {
  for (const std::uint32_t reported : kImpossible) {
    for (const OperationCase& operation : kOperations) {
      const auto control = Select(reported, operation.fast_i2c);
      EXPECT_EQ(Run(operation.run), operation.length_refused)
          << operation.name << ", length " << reported;
      EXPECT_EQ(control->Lengths(), std::vector<std::uint32_t>(operation.transfers_refused,
                                                               operation.length_is_twelve ? 12 : 0))
          << operation.name << ", length " << reported;
    }
    const auto control = Select(reported);
    std::string value = "5";
    EXPECT_EQ(Run([&](auto& device) { return device.FlashRead("1000", value); }), kBadLength);
    EXPECT_EQ(value, "5");
    EXPECT_TRUE(control->Lengths().empty());
  }
}

TEST_F(ReportedLength, OfAnotherSelectorIsNeverUsed) {
  for (std::uint32_t selector = 1; selector <= 7; ++selector) {
    for (const std::uint32_t reported : {0U, 3U, 65535U, 65536U, 0xFFFFFFFFU}) {
      for (const OperationCase& operation : kOperations) {
        if (operation.selector == 0 || operation.selector == selector) {
          continue;
        }
        const auto control = Select(reported, operation.fast_i2c);
        control->ReportOnlyFor(selector);
        EXPECT_EQ(Run(operation.run), 0)
            << operation.name << ", length " << reported << " of selector " << selector;
        EXPECT_EQ(
            control->Lengths(),
            std::vector<std::uint32_t>(operation.transfers, operation.length_is_twelve ? 12 : 64))
            << operation.name << ", length " << reported << " of selector " << selector;
      }
    }
  }
}

TEST_F(ReportedLength, OfErasesAndOfPiecesAreTwo) {
  const Operation write_piece = [](auto& device) { return device.FlashWriteImage({0x11}, 0, {}); };
  for (const std::uint32_t reported : kPossible) {
    const auto erases = Select(reported);
    erases->ReportOnlyFor(3);
    EXPECT_EQ(Run(write_piece), 0);
    EXPECT_EQ(erases->Lengths(), (std::vector<std::uint32_t>{reported, 64}));
    const auto pieces = Select(reported);
    pieces->ReportOnlyFor(4);
    EXPECT_EQ(Run(write_piece), 0);
    EXPECT_EQ(pieces->Lengths(), (std::vector<std::uint32_t>{64, reported}));
  }
}

#if defined(__linux__) && !defined(BORVAN_UNGUARDED)

// Without this the tables above could pass with buffers that are too short.
TEST(GuardedMemoryDeathTest, EndsTheProgramAtTheByteBehindABuffer) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const std::size_t size : {1U, 3U, 4U, 11U, 12U, 63U, 64U, 65U, 4096U, 65535U}) {
    const auto touch = [size](std::size_t length) {
      const GuardedMemory guarded;
      std::vector<std::uint8_t> buffer(size);
      TouchAll(buffer.data(), length);
    };
    touch(size);
    EXPECT_DEATH(touch(size + 1), "") << size;
  }
}

#endif

TEST_F(CameraWithScript, BulkReadDoesNotUseTheLengthOfItsFirstQuery) {
  Play(
      {ReportsLength(3, 0xFFFFFFFF), ReportsLength(5, 64), Takes(5, 64, {}), Gives(5, 64, {0x11})});
  Bytes output;
  EXPECT_EQ(device_.FlashQuickReadImage(output, 0, 0, Recorder()), 0);
  EXPECT_EQ(output, Bytes{0x11});
}

TEST_F(CameraWithScript, ImageWriteNeedsATrueLengthForPiecesAlone) {
  Play({ReportsLength(3, 65536), Takes(3, 0, {}), ReportsLength(4, 64),
        Takes(4, 64, {0x00, 0x00, 0x00, 0x00, 0x11})});
  EXPECT_EQ(device_.FlashWriteImage({0x11}, 0, {}), 0);
}

TEST_F(CameraWithScript, ShortReportsStillCarryTheWholeBlockInTheBuffer) {
  // A reply of three bytes has no tag: the buffer's fourth byte is the request's.
  Play({ReportsLength(1, 3), Takes(1, 3, {0x24, 0xCD, 0xAB}), Takes(1, 3, {0x24, 0x00, 0x00}),
        Gives(1, 3, {0x24, 0x5A, 0x00})});
  std::string value = "7";
  EXPECT_EQ(device_.RegisterRead("abcd", value, 0), 0);
  EXPECT_EQ(value, "7");
}

TEST_F(CameraWithScript, LongRepliesAreReadAtTheirUsualPlaces) {
  Play({ReportsLength(3, 64), Takes(3, 64, {0x34, 0x00, 0x00, 0x10, 0x00}),
        Gives(3, 64, {0x34, 0, 0, 0, 0, 0xDE, 0xAD, 0xBE, 0xEF, 0x11, 0x22, 0x33, 0x44})});
  std::string value;
  EXPECT_EQ(device_.FlashRead("1000", value), 0);
  EXPECT_EQ(value, "deadbeef");
}

TEST_F(CameraWithScript, BulkReadTakes64BytesOfALongerReply) {
  Play({ReportsLength(3, 11), ReportsLength(5, 72), Takes(5, 72, {0, 0, 0, 0}),
        Gives(5, 72, Bytes(72, 0xEE)), Takes(5, 72, {0, 0, 0, 0x40}),
        Gives(5, 72, Bytes(72, 0xEE))});
  Bytes output;
  EXPECT_EQ(device_.FlashQuickReadImage(output, 0, 99, {}), 0);
  EXPECT_EQ(output, Bytes(100, 0xEE));
}

}  // namespace
}  // namespace borvan::test
