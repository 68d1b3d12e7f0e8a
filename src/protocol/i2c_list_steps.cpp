// The step path of an I2C list: three 4-byte commands per register.

#include "base/byte_order.h"
#include "protocol/i2c_list_plan.h"

namespace borvan {
namespace {

constexpr std::uint32_t kUnset = 0xFFFFFFFF;

// The width modes of the codes in list files. Deliberately unlike the fast path: an unknown code
// means mode 0.
std::uint8_t StepMode(std::uint32_t width_code) {
  switch (width_code) {
    case 3:
      return static_cast<std::uint8_t>(i2c_mode::kAddress16Data8);
    case 4:
      return static_cast<std::uint8_t>(i2c_mode::kAddress16Data16);
    default:
      return static_cast<std::uint8_t>(i2c_mode::kAddress8Data8);
  }
}

// The settings that the markers of a list have made so far.
class StepPlanner {
 public:
  I2cListStep Take(const ListEntry& entry) {
    using Kind = I2cListStep::Kind;
    switch (entry.address) {
      case list_marker::kPause:
        return entry.value <= list_marker::kLongestPause
                   ? I2cListStep{Kind::kPause, 0, 0, 0, entry.value}
                   : I2cListStep{};
      case list_marker::kIgnoredA:
      case list_marker::kIgnoredB:
        return {};
      case list_marker::kSlave:
        slave_ = entry.value;
        slave_seen_ = true;
        return {};
      case list_marker::kWidthCode:
        if (slave_seen_) {
          slave_seen_ = false;
          mode_ = StepMode(entry.value);
          width_known_ = true;
          return Write(Kind::kWidth, entry);
        }
        break;
      default:
        break;
    }
    if (slave_ == kUnset || !width_known_) {
      return I2cListStep{Kind::kIncomplete, 0, 0, 0, 0};
    }
    slave_seen_ = false;
    return Write(Kind::kWrite, entry);
  }

 private:
  I2cListStep Write(I2cListStep::Kind kind, const ListEntry& entry) const {
    return {kind, ByteOf(slave_, 0), mode_, static_cast<std::uint16_t>(entry.address), entry.value};
  }

  std::uint32_t slave_ = kUnset;
  bool slave_seen_ = false;
  bool width_known_ = false;
  std::uint8_t mode_ = 0;
};

}  // namespace

std::vector<I2cListStep> PlanI2cSteps(const std::vector<ListEntry>& list) {
  std::vector<I2cListStep> steps;
  steps.reserve(list.size());
  StepPlanner planner;
  for (const ListEntry& entry : list) {
    steps.push_back(planner.Take(entry));
    if (steps.back().kind == I2cListStep::Kind::kIncomplete) {
      break;
    }
  }
  return steps;
}

std::array<I2cCommand, 3> I2cStepWrite(const I2cListStep& step) {
  return {I2cCommand{i2c::kStepWrite, step.slave, step.mode, i2c::kStepSlaveTag},
          I2cCommand{i2c::kStepWrite, ByteOf(step.register_address, 0),
                     ByteOf(step.register_address, 1), i2c::kStepAddressTag},
          I2cCommand{i2c::kStepWrite, ByteOf(step.value, 0), ByteOf(step.value, 1),
                     i2c::kStepValueTag}};
}

}  // namespace borvan
