// Each get of each operation is answered well, but with bytes that are no answer: what the caller
// is given, and what is still sent. The replies to sets and length queries have no such bytes.

#include <functional>
#include <sstream>

#include "camera_with_script.h"
#include "support/guarded_memory.h"

namespace borvan::test {
namespace {

enum class Fault { kNone, kWrongTag, kZeros, kOnes };

constexpr std::size_t kNoGet = static_cast<std::size_t>(-1);

// Answers the n-th get with the n-th reply, but for the one at fault.
class ReplyingControl : public ExtensionUnitControl {
 public:
  // `tag` is the place of the byte that kWrongTag inverts.
  void Play(std::vector<Bytes> replies, std::size_t tag, std::size_t faulty_get, Fault fault) {
    replies_ = std::move(replies);
    tag_ = tag;
    faulty_get_ = faulty_get;
    fault_ = fault;
    gets_ = 0;
    transfers_after_ = 0;
  }

  std::size_t Gets() const { return gets_; }
  std::size_t TransfersAfterTheFault() const { return transfers_after_; }

  Result KsProperty(const NodePropertyRequest& request, void* data, std::uint32_t length,
                    std::uint32_t& bytes_returned) override {
    const Direction direction = CheckRequest(request, data, length);
    TouchAll(data, length);
    if (gets_ > faulty_get_) {
      ++transfers_after_;
    }
    if (direction == Direction::kLengthQuery) {
      bytes_returned = 64;
      return kMoreData;
    }
    bytes_returned = length;
    if (direction == Direction::kGet) {
      const Bytes reply = Reply(gets_, length);
      std::copy(reply.begin(), reply.end(), static_cast<std::uint8_t*>(data));
      ++gets_;
    }
    return 0;
  }

 private:
  Bytes Reply(std::size_t index, std::uint32_t length) const {
    Bytes reply = replies_.at(index);
    reply.resize(length, reply.back());
    if (index == faulty_get_ && fault_ == Fault::kWrongTag) {
      reply[tag_] = static_cast<std::uint8_t>(~reply[tag_]);
    } else if (index == faulty_get_ && fault_ != Fault::kNone) {
      reply.assign(length, fault_ == Fault::kZeros ? 0x00 : 0xFF);
    }
    return reply;
  }

  std::vector<Bytes> replies_;
  std::size_t tag_ = 0;
  std::size_t faulty_get_ = kNoGet;
  Fault fault_ = Fault::kNone;
  std::size_t gets_ = 0;
  std::size_t transfers_after_ = 0;
};

struct Row {
  std::string wrong_tag;
  std::string zeros;
  std::string ones;
  std::size_t following;  // transfers after the get at fault, whatever the fault
};

struct OperationCase {
  const char* name;
  bool fast_i2c;
  // The result in hexadecimal and what was delivered.
  std::function<std::string(BorvanUsb_Q7&)> run;
  std::size_t tag;
  std::vector<Bytes> replies;
  std::string undisturbed;
  std::vector<Row> rows;  // one for each get
};

std::string Outcome(Result result, const std::string& value) {
  std::ostringstream text;
  text << std::hex << static_cast<std::uint32_t>(result) << ' ' << value;
  return text.str();
}

constexpr const char* kUntouched = "untouched";

// Values of three registers of a run, the last of the first block and the one after it among them.
std::string ThreeOf(Result result, const std::vector<ListEntry>& list, std::size_t head) {
  EXPECT_EQ(list.size(), head + 57);
  const auto value = [&](std::size_t i) {
    return static_cast<std::uint8_t>(list.at(head + i).value);
  };
  const Bytes values = {value(0), value(55), value(56)};
  return Outcome(result, Hex(values));
}

const OperationCase kOperations[] = {
    {"SelectDevice, index refused",
     false,
     [](auto& device) {
       const Result result = device.SelectDevice(1);
       return Outcome(result, device.FeatureText());
     },
     3,
     {{0x24, 0x21, 0x00, 0x28}},
     "80004005 21",
     // What the chip said at the former selection stays.
     {{"80004005 00", "80004005 00", "80004005 00", 0}}},
    {"RegisterRead, byte",
     false,
     [](auto& device) {
       std::string value = kUntouched;
       const Result result = device.RegisterRead("1", value, 0);
       return Outcome(result, value);
     },
     3,
     {{0x24, 0x5A, 0x00, 0x28}},
     "0 5a",
     {{"0 untouched", "0 untouched", "0 untouched", 0}}},
    {"RegisterRead, wide",
     false,
     [](auto& device) {
       std::string value = kUntouched;
       const Result result = device.RegisterRead("1", value, 1);
       return Outcome(result, value);
     },
     3,
     {{0x41, 0x34, 0x12, 0x11}, {0x81, 0x78, 0x56, 0x21}},
     "0 56781234",
     {{"0 untouched", "0 untouched", "0 untouched", 1},
      {"0 untouched", "0 untouched", "0 untouched", 0}}},
    {"I2cRead",
     false,
     [](auto& device) {
       std::string value = kUntouched;
       const Result result = device.I2cRead("1", "2", value, 5, 0);
       return Outcome(result, value);
     },
     0,
     {{0x01, 0x01, 0x00, 0x05, 0x00, 0x00, 0x00, 0x02, 0x12, 0x34, 0x56, 0x78}},
     "0 12345678",
     // Replies are not told apart: the bus has its own acknowledgement.
     {{"0 12345678", "0 00000000", "0 ffffffff", 0}}},
    {"FlashRead",
     false,
     [](auto& device) {
       std::string value = kUntouched;
       const Result result = device.FlashRead("1000", value);
       return Outcome(result, value);
     },
     0,
     {{0x34, 0x00, 0x00, 0x10, 0x00, 0xDE, 0xAD, 0xBE, 0xEF, 0x00, 0x00}},
     "0 deadbeef",
     {{"1 untouched", "1 untouched", "1 untouched", 0}}},
    {"FlashQuickReadImage, 65 bytes",
     false,
     [](auto& device) {
       Bytes output;
       const Result result =
           device.FlashQuickReadImage(output, 0, 64, [](std::int32_t, std::int32_t) {});
       EXPECT_EQ(output.size(), 65U);
       const Bytes some = {output.at(0), output.at(63), output.at(64)};
       return Outcome(result, Hex(some));
     },
     0,
     {{0x5A}, {0x5A}},
     "0 5A 5A 5A",
     // All bytes are data.
     {{"0 A5 5A 5A", "0 00 00 5A", "0 FF FF 5A", 2},
      {"0 5A 5A A5", "0 5A 5A 00", "0 5A 5A FF", 0}}},
    {"RegisterReadList, 57 registers",
     false,
     [](auto& device) {
       std::vector<ListEntry> list;
       const Result result = device.RegisterReadList(list, 0, 56, {});
       return ThreeOf(result, list, 2);
     },
     0,
     {{0x5A}, {0x5A}},
     "0 5A 5A 5A",
     // The head is not looked at.
     {{"0 5A 5A 5A", "0 00 00 5A", "0 FF FF 5A", 2},
      {"0 5A 5A 5A", "0 5A 5A 00", "0 5A 5A FF", 0}}},
    {"I2cReadList, in blocks, 57 registers",
     true,
     [](auto& device) {
       std::vector<ListEntry> list;
       const Result result = device.I2cReadList(list, 0x6C, 0, 56, 0, {});
       return ThreeOf(result, list, 0);
     },
     0,
     {{0x5A}, {0x5A}},
     "0 5A 5A 5A",
     {{"0 5A 5A 5A", "0 00 00 5A", "0 FF FF 5A", 2},
      {"0 5A 5A 5A", "0 5A 5A 00", "0 5A 5A FF", 0}}},
    {"I2cReadList, step by step, 2 registers",
     false,
     [](auto& device) {
       std::vector<ListEntry> list;
       const Result result = device.I2cReadList(list, 0x6C, 0, 1, 0, {});
       EXPECT_EQ(list.size(), 2U);
       const Bytes values = {static_cast<std::uint8_t>(list.at(0).value),
                             static_cast<std::uint8_t>(list.at(1).value)};
       return Outcome(result, Hex(values));
     },
     3,
     {{0x14, 0x5A, 0x00, 0x02}, {0x14, 0x5B, 0x00, 0x02}},
     "0 5A 5B",
     // The tag is not looked at. A register takes three transfers.
     {{"0 5A 5B", "0 00 5B", "0 FF 5B", 3}, {"0 5A 5B", "0 5A 00", "0 5A FF", 0}}},
};

class FaultReply : public ::testing::Test {
 protected:
  // Runs on a camera just selected.
  std::string Run(const OperationCase& operation, std::size_t faulty_get, Fault fault) {
    const auto camera = std::make_shared<Camera>();
    camera->control = control_;
    BorvanUsb_Q7 device(PlatformWith(camera));
    static_cast<void>(device.EnumerateDevices());
    const std::uint8_t features = operation.fast_i2c ? 0x20 : 0x00;
    control_->Play({{0x24, features, 0x00, 0x28}}, 3, kNoGet, Fault::kNone);
    EXPECT_EQ(device.SelectDevice(0), 0);
    control_->Play(operation.replies, operation.tag, faulty_get, fault);
    ++runs_;
    const GuardedMemory guarded;
    return operation.run(device);
  }

  void TearDown() override { RecordProperty("runs", runs_); }

  std::shared_ptr<ReplyingControl> control_ = std::make_shared<ReplyingControl>();

 private:
  int runs_ = 0;
};

TEST_F(FaultReply, UndisturbedRunsDeliverTheReplies) {
  for (const OperationCase& operation : kOperations) {
    EXPECT_EQ(Run(operation, kNoGet, Fault::kNone), operation.undisturbed) << operation.name;
    EXPECT_EQ(control_->Gets(), operation.rows.size()) << operation.name;
    EXPECT_EQ(operation.replies.size(), operation.rows.size()) << operation.name;
  }
}

TEST_F(FaultReply, EachForeignReplyHasItsOutcomeAndItsFollowingTransfers) {
  for (const OperationCase& operation : kOperations) {
    for (std::size_t get = 0; get < operation.rows.size(); ++get) {
      const Row& row = operation.rows[get];
      EXPECT_EQ(Run(operation, get, Fault::kWrongTag), row.wrong_tag)
          << operation.name << ": wrong tag in get " << get;
      EXPECT_EQ(control_->TransfersAfterTheFault(), row.following) << operation.name;
      EXPECT_EQ(Run(operation, get, Fault::kZeros), row.zeros)
          << operation.name << ": zeros in get " << get;
      EXPECT_EQ(control_->TransfersAfterTheFault(), row.following) << operation.name;
      EXPECT_EQ(Run(operation, get, Fault::kOnes), row.ones)
          << operation.name << ": ones in get " << get;
      EXPECT_EQ(control_->TransfersAfterTheFault(), row.following) << operation.name;
    }
  }
}

}  // namespace
}  // namespace borvan::test
