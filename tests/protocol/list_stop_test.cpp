// A stop request at each point where a list operation looks for one.

#include <algorithm>
#include <functional>

#include "camera_with_script.h"
#include "support/list_building.h"

namespace borvan::test {
namespace {

// Does all it is asked for. The feature register answers `fill`, and so does everything else.
class ObedientControl : public ExtensionUnitControl {
 public:
  explicit ObedientControl(std::uint8_t fill) : fill_(fill) {}

  Result KsProperty(const NodePropertyRequest& request, void* data, std::uint32_t length,
                    std::uint32_t& bytes_returned) override {
    ++count;
    switch (CheckRequest(request, data, length)) {
      case Direction::kLengthQuery:
        bytes_returned = request.id == 6 ? 64 : 4;
        return kMoreData;
      case Direction::kGet:
        std::fill_n(static_cast<std::uint8_t*>(data), length, fill_);
        static_cast<std::uint8_t*>(data)[3] = 0x28;  // the tag of a byte read
        break;
      case Direction::kSet:
        break;
    }
    bytes_returned = length;
    return 0;
  }

  std::size_t count = 0;

 private:
  const std::uint8_t fill_;
};

// Says yes from the poll `stop_at` on, counted from 0.
class StoppingDevice : public BorvanUsb_Q7 {
 public:
  using BorvanUsb_Q7::BorvanUsb_Q7;
  bool IsStopRequested() override { return polls++ >= stop_at; }
  std::size_t polls = 0;
  std::size_t stop_at = static_cast<std::size_t>(-1);
};

// Transfers made when the stop is asked for at poll 0, 1, ...; the last is that of a whole run.
void ExpectTransfers(std::uint8_t feature, const std::vector<std::size_t>& transfers,
                     const std::function<Result(StoppingDevice&)>& run) {
  const auto camera = std::make_shared<Camera>();
  const auto control = std::make_shared<ObedientControl>(feature);
  camera->control = control;
  StoppingDevice device(PlatformWith(camera));
  static_cast<void>(device.EnumerateDevices());
  ASSERT_EQ(device.SelectDevice(0), 0);
  for (std::size_t poll = 0; poll < transfers.size(); ++poll) {
    control->count = 0;
    device.polls = 0;
    device.stop_at = poll;
    EXPECT_EQ(run(device), poll + 1 == transfers.size() ? 0 : kTerminated) << "poll " << poll;
    EXPECT_EQ(control->count, transfers[poll]) << "poll " << poll;
  }
}

// Eight entries, of which each is polled for.
const List kEntries = {{0xFFF8, 0x6C}, {0xFFFE, 0}, {0xFEF0, 0}, {0x10, 1},
                       {0xFFFF, 1},    {0x11, 1},   {0x12, 1},   {0xFFFF, 256}};

TEST(ListStop, OfAWriteStepByStepComesBeforeEachEntry) {
  // 1 length query; 3 commands for the width code and for each register.
  ExpectTransfers(0x00, {1, 1, 4, 4, 7, 7, 10, 13, 13},
                  [](auto& device) { return device.I2cWriteList(kEntries, 0, {}); });
}

TEST(ListStop, OfAFastWriteComesBeforeEachEntryAndDiscardsWhatIsPending) {
  // 1 length query; a packet at the pause, another at the end.
  ExpectTransfers(0x20, {1, 1, 1, 1, 1, 2, 2, 2, 3},
                  [](auto& device) { return device.I2cWriteList(kEntries, 0, {}); });
}

TEST(ListStop, OfAReadStepByStepComesBeforeEachRegister) {
  // 1 length query; two sets and a get for each register.
  ExpectTransfers(0x00, {1, 4, 7, 10}, [](auto& device) {
    List list;
    return device.I2cReadList(list, 0x6C, 0, 2, 0, {});
  });
}

TEST(ListStop, OfAFastReadComesBeforeEachExchange) {
  // 1 length query; a set and a get for each 56 registers.
  ExpectTransfers(0x20, {1, 3, 5, 7}, [](auto& device) {
    List list;
    return device.I2cReadList(list, 0x6C, 0, 112, 0, {});
  });
}

}  // namespace
}  // namespace borvan::test
