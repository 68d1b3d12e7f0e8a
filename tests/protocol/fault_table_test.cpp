// Each transfer of each operation answers otherwise than with 0, once: what comes of it, and what
// is still sent. What replies of foreign bytes come to stands in fault_reply_test.cpp, what
// foreign lengths do in reported_length_test.cpp.

#include <array>
#include <functional>

#include "camera_with_script.h"
#include "support/guarded_memory.h"

namespace borvan::test {
namespace {

constexpr std::uint8_t kFastI2c = 0x20;

// A device that does all it is asked for. A get leaves the buffer as it is, so replies echo
// requests; only the transfer at fault is special.
class FaultyControl : public ExtensionUnitControl {
 public:
  // The chip's answer to the selection's read of its feature register.
  explicit FaultyControl(std::uint8_t features) : features_(features) {}

  void FailAt(std::size_t index, Result result) {
    count_ = 0;
    fault_index_ = index;
    fault_ = result;
  }

  std::size_t Count() const { return count_; }

  Result KsProperty(const NodePropertyRequest& request, void* data, std::uint32_t length,
                    std::uint32_t& bytes_returned) override {
    const Direction direction = CheckRequest(request, data, length);
    const bool query = direction == Direction::kLengthQuery;
    TouchAll(data, length);
    if (count_++ == fault_index_) {
      return fault_;
    }
    bytes_returned = query ? 64 : length;
    if (direction == Direction::kGet && !selected_) {
      const Bytes reply = {0x24, features_, 0x00, 0x28};
      std::copy(reply.begin(), reply.end(), static_cast<std::uint8_t*>(data));
    }
    return query ? kMoreData : 0;
  }

  void EndSelection() { selected_ = true; }

 private:
  const std::uint8_t features_;
  bool selected_ = false;
  std::size_t count_ = 0;
  std::size_t fault_index_ = 0;
  Result fault_ = 0;
};

struct Outcome {
  Result result;
  std::size_t following;  // transfers after the one at fault
};

struct Row {
  std::size_t index;  // of the transfer at fault
  Outcome negative;   // it answers 0x80070017
  Outcome five;       // it answers 5
  Outcome s_false;    // it answers 1
};

struct OperationCase {
  const char* name;
  std::function<Result(BorvanUsb_Q7&)> run;
  std::size_t transfers;  // of an undisturbed run, which gives 0
  std::vector<Row> rows;  // one for each transfer
  bool fast_i2c = false;  // the chip has the fast I2C transfers
};

std::string ignored_value;

Result ReadRange(BorvanUsb_Q7& device, std::uint32_t end) {
  Bytes output;
  return device.FlashQuickReadImage(output, 0, end, [](std::int32_t, std::int32_t) {});
}

std::vector<ListEntry>& Emptied() {
  static std::vector<ListEntry> list;
  list.clear();
  return list;
}

// A single register, a run, and a single register again.
std::vector<ListEntry> RegisterList() {
  std::vector<ListEntry> list = {{0xFFFD, 0}, {0x10, 1}};
  for (std::uint32_t i = 0; i < 21; ++i) {
    list.push_back({0x100 + i, i});
  }
  list.push_back({0x10, 1});
  return list;
}

const OperationCase kOperations[] = {
    {"RegisterWrite, wide",
     [](auto& device) { return device.RegisterWrite("1", "2", 1); },
     5,
     {{0, {kLengthQueryFailed, 0}, {0, 4}, {0, 4}},  // length
      {1, {0, 3}, {0, 3}, {0, 3}},                   // value, low half
      {2, {0, 2}, {0, 2}, {0, 2}},                   // value, high half
      {3, {0, 1}, {0, 1}, {0, 1}},                   // address, low half
      {4, {kDeviceGone, 0}, {5, 0}, {1, 0}}}},       // address, high half
    {"RegisterWrite, byte",
     [](auto& device) { return device.RegisterWrite("1", "2", 0); },
     4,
     {{0, {kLengthQueryFailed, 0}, {0, 3}, {0, 3}},  // length
      {1, {0, 2}, {0, 2}, {0, 2}},                   // address, low half
      {2, {0, 1}, {0, 1}, {0, 1}},                   // address, high half
      {3, {kDeviceGone, 0}, {5, 0}, {1, 0}}}},       // value
    {"RegisterRead, wide",
     [](auto& device) { return device.RegisterRead("1", ignored_value, 1); },
     5,
     {{0, {kLengthQueryFailed, 0}, {0, 4}, {0, 4}},  // length
      {1, {0, 3}, {0, 3}, {0, 3}},                   // address, low half
      {2, {kDeviceGone, 0}, {0, 2}, {0, 2}},         // address, high half
      {3, {0, 1}, {0, 1}, {0, 1}},                   // first get
      {4, {kDeviceGone, 0}, {5, 0}, {1, 0}}}},       // second get
    {"RegisterRead, byte",
     [](auto& device) { return device.RegisterRead("1", ignored_value, 0); },
     4,
     {{0, {kLengthQueryFailed, 0}, {0, 3}, {0, 3}},  // length
      {1, {0, 2}, {0, 2}, {0, 2}},                   // address, low half
      {2, {kDeviceGone, 0}, {0, 1}, {0, 1}},         // address, high half
      {3, {kDeviceGone, 0}, {5, 0}, {1, 0}}}},       // get
    {"SelectDevice, index refused",
     // The selection's own result is the constant one; 0 here tells that it came.
     [](auto& device) { return device.SelectDevice(1) == Code(0x80004005) ? 0 : -1; },
     4,
     {{0, {0, 0}, {0, 3}, {0, 3}},    // length
      {1, {0, 2}, {0, 2}, {0, 2}},    // address, low half
      {2, {0, 0}, {0, 1}, {0, 1}},    // address, high half
      {3, {0, 0}, {0, 0}, {0, 0}}}},  // get
    {"I2cWrite",
     [](auto& device) { return device.I2cWrite("1", "2", "3", 0, 0); },
     2,
     {{0, {kLengthQueryFailed, 0}, {0, 1}, {0, 1}},  // length
      {1, {kDeviceGone, 0}, {5, 0}, {1, 0}}}},       // set
    {"I2cRead",
     [](auto& device) { return device.I2cRead("1", "2", ignored_value, 0, 0); },
     3,
     {{0, {kLengthQueryFailed, 0}, {0, 2}, {0, 2}},  // length
      {1, {kDeviceGone, 0}, {0, 1}, {0, 1}},         // set
      {2, {kDeviceGone, 0}, {5, 0}, {1, 0}}}},       // get
    {"FlashWrite",
     [](auto& device) { return device.FlashWrite("1", "2"); },
     2,
     {{0, {kDeviceGone, 0}, {0, 1}, {0, 1}},    // length
      {1, {kDeviceGone, 0}, {5, 0}, {1, 0}}}},  // set
    {"FlashErase",
     [](auto& device) { return device.FlashErase("1"); },
     2,
     {{0, {kDeviceGone, 0}, {0, 1}, {0, 1}},    // length
      {1, {kDeviceGone, 0}, {5, 0}, {1, 0}}}},  // set
    {"FlashRead",
     [](auto& device) { return device.FlashRead("1000", ignored_value); },
     3,
     {{0, {kDeviceGone, 0}, {0, 2}, {0, 2}},  // length
      {1, {0, 1}, {0, 1}, {0, 1}},            // set
      // get: a failure makes one pair of set and get more, twice; 5 and 1 are no failures
      {2, {1, 4}, {0, 0}, {0, 0}}}},
    {"FlashWriteImage, 61 bytes",
     [](auto& device) { return device.FlashWriteImage(Bytes(61, 0x11), 0x1000, {}); },
     5,
     {{0, {0, 4}, {0, 4}, {0, 4}},             // length of erases: not checked
      {1, {kEraseFailed, 0}, {0, 3}, {0, 3}},  // erase
      // length of pieces: 0 alone will do
      {2, {kFastInterfaceFailed, 0}, {kFastInterfaceFailed, 0}, {kFastInterfaceFailed, 0}},
      {3, {0, 2}, {0, 2}, {0, 2}},    // first piece: once more, then the second
      {4, {0, 1}, {0, 1}, {0, 1}}}},  // second piece: once more
    {"FlashQuickReadImage, 65 bytes",
     [](auto& device) { return ReadRange(device, 64); },
     6,
     {{0, {kLengthQueryFailed, 0}, {0, 5}, {0, 5}},    // length of selector 3
      {1, {kFastInterfaceFailed, 0}, {0, 4}, {0, 4}},  // length of selector 5
      {2, {0, 3}, {0, 3}, {0, 3}},                     // first set
      {3, {0, 4}, {0, 4}, {0, 4}},                     // first get: set and get once more
      {4, {0, 1}, {0, 1}, {0, 1}},                     // second set
      {5, {0, 2}, {0, 2}, {0, 2}}}},                   // second get: set and get once more
    {"FlashQuickReadImage, 7 bytes",
     [](auto& device) { return ReadRange(device, 6); },
     4,
     {{0, {kLengthQueryFailed, 0}, {0, 3}, {0, 3}},    // length of selector 3
      {1, {kFastInterfaceFailed, 0}, {0, 2}, {0, 2}},  // length of selector 5
      {2, {0, 1}, {0, 1}, {0, 1}},                     // set
      {3, {kDeviceGone, 0}, {5, 0}, {1, 0}}}},         // get: not repeated
    {"RegisterReadList, 57 registers",
     [](auto& device) { return device.RegisterReadList(Emptied(), 0, 56, {}); },
     5,
     {{0, {kDeviceGone, 0}, {0, 4}, {0, 4}},    // length
      {1, {0, 3}, {0, 3}, {0, 3}},              // first set
      {2, {0, 2}, {0, 2}, {0, 2}},              // first get
      {3, {0, 1}, {0, 1}, {0, 1}},              // second set
      {4, {kDeviceGone, 0}, {5, 0}, {1, 0}}}},  // second get
    {"RegisterWriteList",
     [](auto& device) { return device.RegisterWriteList(RegisterList(), 0, {}); },
     4,
     {{0, {kDeviceGone, 0}, {0, 3}, {0, 3}},             // length
      {1, {kFastInterfaceFailed, 0}, {0, 2}, {0, 2}},    // scattered, before the run
      {2, {kFastInterfaceFailed, 0}, {0, 1}, {0, 1}},    // run
      {3, {kFastInterfaceFailed, 0}, {5, 0}, {1, 0}}}},  // scattered, at the end
    {"I2cReadList, step by step, 2 registers",
     [](auto& device) { return device.I2cReadList(Emptied(), 0x6C, 0, 1, 0, {}); },
     7,
     {{0, {kDeviceGone, 0}, {0, 6}, {0, 6}},    // length
      {1, {0, 5}, {0, 5}, {0, 5}},              // first register: slave
      {2, {0, 4}, {0, 4}, {0, 4}},              // address
      {3, {kDeviceGone, 0}, {0, 3}, {0, 3}},    // get: the second register is passed over
      {4, {0, 2}, {0, 2}, {0, 2}},              // second register: slave
      {5, {0, 1}, {0, 1}, {0, 1}},              // address
      {6, {kDeviceGone, 0}, {5, 0}, {1, 0}}}},  // get
    {"I2cWriteList, step by step",
     [](auto&
            device) { return device.I2cWriteList({{0xFFF8, 0x6C}, {0xFFFE, 3}, {0x10, 1}}, 0, {}); },
     7,
     {{0, {kLengthQueryFailed, 0}, {0, 6}, {0, 6}},  // length
      {1, {0, 5}, {0, 5}, {0, 5}},                   // width code: slave
      {2, {0, 4}, {0, 4}, {0, 4}},                   // address
      {3, {kDeviceGone, 0}, {0, 3}, {0, 3}},         // value
      {4, {0, 2}, {0, 2}, {0, 2}},                   // register: slave
      {5, {0, 1}, {0, 1}, {0, 1}},                   // address
      {6, {kDeviceGone, 0}, {5, 0}, {1, 0}}}},       // value
    {"I2cReadList, in blocks, 57 registers",
     [](auto& device) { return device.I2cReadList(Emptied(), 0x6C, 0, 56, 0, {}); },
     5,
     {{0, {0, 4}, {0, 4}, {0, 4}},             // length: not checked
      {1, {0, 3}, {0, 3}, {0, 3}},             // first set
      {2, {0, 2}, {0, 2}, {0, 2}},             // first get
      {3, {0, 1}, {0, 1}, {0, 1}},             // second set
      {4, {kDeviceGone, 0}, {5, 0}, {1, 0}}},  // second get
     true},
    {"I2cWriteList, in packets",
     // Two slaves: a packet each.
     [](auto& device) {
       return device.I2cWriteList(
           {{0xFFF8, 0x6C}, {0xFFFE, 3}, {0x10, 1}, {0xFFF8, 0x6D}, {0xFFFE, 3}, {0x10, 1}}, 0, {});
     },
     3,
     {{0, {kFastInterfaceFailed, 0}, {0, 2}, {0, 2}},  // length
      {1, {kDeviceGone, 0}, {0, 1}, {0, 1}},           // first packet
      {2, {kDeviceGone, 0}, {5, 0}, {1, 0}}},          // second packet
     true},
};

// A chip with or without the fast I2C transfers, selected.
struct SelectedCamera {
  explicit SelectedCamera(bool fast_i2c)
      : control(std::make_shared<FaultyControl>(fast_i2c ? kFastI2c : std::uint8_t{0})),
        camera(std::make_shared<Camera>()),
        device(PlatformWith(camera)) {
    camera->control = control;
    static_cast<void>(device.EnumerateDevices());
    control->FailAt(kNever, 0);
    EXPECT_EQ(device.SelectDevice(0), 0);
    control->EndSelection();
  }

  Result Run(const OperationCase& operation) {
    ++runs;
    const GuardedMemory guarded;
    return operation.run(device);
  }

  static constexpr std::size_t kNever = static_cast<std::size_t>(-1);

  std::shared_ptr<FaultyControl> control;
  std::shared_ptr<Camera> camera;
  BorvanUsb_Q7 device;
  int runs = 0;
};

class FaultTable : public ::testing::Test {
 protected:
  void TearDown() override { RecordProperty("runs", fast_.runs + slow_.runs); }

  SelectedCamera& For(const OperationCase& operation) { return operation.fast_i2c ? fast_ : slow_; }

  static constexpr std::size_t kNever = SelectedCamera::kNever;

 private:
  SelectedCamera fast_{true};
  SelectedCamera slow_{false};
};

TEST_F(FaultTable, UndisturbedRunsGiveZero) {
  for (const OperationCase& operation : kOperations) {
    SelectedCamera& camera = For(operation);
    camera.control->FailAt(kNever, 0);
    EXPECT_EQ(camera.Run(operation), 0) << operation.name;
    EXPECT_EQ(camera.control->Count(), operation.transfers) << operation.name;
  }
}

TEST_F(FaultTable, HasARowForEachTransfer) {
  for (const OperationCase& operation : kOperations) {
    ASSERT_EQ(operation.rows.size(), operation.transfers) << operation.name;
    for (std::size_t index = 0; index < operation.transfers; ++index) {
      EXPECT_EQ(operation.rows[index].index, index) << operation.name;
    }
  }
}

TEST_F(FaultTable, EachFaultHasItsResultAndItsFollowingTransfers) {
  for (const OperationCase& operation : kOperations) {
    SelectedCamera& camera = For(operation);
    for (const Row& row : operation.rows) {
      const std::array<std::pair<Result, Outcome>, 3> kinds = {std::pair{kDeviceGone, row.negative},
                                                               std::pair{Result{5}, row.five},
                                                               std::pair{Result{1}, row.s_false}};
      for (const auto& [answer, expected] : kinds) {
        camera.control->FailAt(row.index, answer);
        EXPECT_EQ(camera.Run(operation), expected.result)
            << operation.name << ": transfer " << row.index << " answers " << answer;
        EXPECT_EQ(camera.control->Count() - row.index - 1, expected.following)
            << operation.name << ": transfer " << row.index << " answers " << answer;
      }
    }
  }
}

}  // namespace
}  // namespace borvan::test
