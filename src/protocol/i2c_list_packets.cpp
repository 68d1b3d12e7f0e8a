// The fast path of an I2C list: 64-byte packets of runs and of scattered registers.

#include <algorithm>
#include <array>
#include <optional>

#include "base/byte_order.h"
#include "protocol/i2c_list_plan.h"

namespace borvan {
namespace {

constexpr std::uint32_t kUnset = 0xFFFFFFFF;
constexpr std::uint8_t kUnusedByte = 0xFF;
constexpr std::size_t kRunHead = 8;
constexpr std::size_t kScatterHead = 4;

// How many records a packet may hold.
struct Limits {
  std::uint32_t run = 0;
  std::uint32_t scatter = 0;
};

// The capacity of a packet in each width mode.
struct PacketLayout {
  Limits capacity;
  std::uint32_t address_bytes;
  std::uint32_t data_bytes;
};
constexpr std::array<PacketLayout, 3> kLayouts = {{
    {{56, 30}, 1, 1},
    {{56, 20}, 2, 1},
    {{28, 15}, 2, 2},
}};

constexpr bool FitsItsPacket(const PacketLayout& layout) {
  return kRunHead + std::size_t{layout.capacity.run} * layout.data_bytes <= kPacketLength &&
         kScatterHead + std::size_t{layout.capacity.scatter} *
                            (layout.address_bytes + layout.data_bytes) <=
             kPacketLength;
}
static_assert(FitsItsPacket(kLayouts[0]) && FitsItsPacket(kLayouts[1]) &&
              FitsItsPacket(kLayouts[2]));

// The limit that applies, at most the capacity of a packet. A `limit` of 0 means none.
std::uint32_t Bounded(std::uint32_t limit, std::uint32_t capacity) {
  return limit == 0 ? capacity : std::min(limit, capacity);
}

// Registers and values are signed numbers here: the register after 0xFFFFFFFF is 0, and none
// follows 0x7FFFFFFF.
struct PendingRecord {
  std::int64_t address = 0;
  std::int64_t value = 0;
};

std::int64_t SignExtended(std::uint32_t number) {
  return static_cast<std::int32_t>(number);
}

std::uint8_t LowByte(std::int64_t number, unsigned index) {
  return ByteOf(static_cast<std::uint32_t>(number), index);
}

class PacketPlanner {
 public:
  explicit PacketPlanner(std::uint32_t option) : option_(option) {}

  // Returns false to end the list.
  bool Take(const ListEntry& entry) {
    ++polls_;
    switch (entry.address) {
      case list_marker::kPause:
        Pause(static_cast<std::int32_t>(entry.value));
        return true;
      case list_marker::kIgnoredA:
      case list_marker::kIgnoredB:
        return true;
      case list_marker::kSlave:
        SendPending();
        slave_ = entry.value;
        slave_seen_ = true;
        return true;
      case list_marker::kWidthCode:
        if (slave_seen_) {
          slave_seen_ = false;
          SetWidth(entry.value);
          return true;
        }
        break;
      default:
        break;
    }
    if (slave_ == kUnset || !mode_.has_value()) {
      Act(I2cListAction::Kind::kIncomplete);
      return false;
    }
    slave_seen_ = false;
    Add({SignExtended(entry.address), SignExtended(entry.value)});
    return true;
  }

  I2cListPlan Finish() {
    SendPending();
    Act(I2cListAction::Kind::kEnd);
    return std::move(plan_);
  }

 private:
  void Act(I2cListAction::Kind kind, std::uint32_t pause = 0) {
    plan_.actions.push_back({kind, polls_, pause});
    polls_ = 0;
  }

  // A pause that is too long is ignored. A negative one still separates two packets, but takes no
  // time.
  void Pause(std::int32_t milliseconds) {
    if (milliseconds > static_cast<std::int32_t>(list_marker::kLongestPause)) {
      return;
    }
    SendPending();
    if (milliseconds > 0) {
      Act(I2cListAction::Kind::kPause, static_cast<std::uint32_t>(milliseconds));
    }
  }

  // Deliberately unlike the step path: an unknown code means mode 1 and leaves the limits
  // unchanged.
  void SetWidth(std::uint32_t width_code) {
    switch (width_code) {
      case 0:
      case 1:
        mode_ = i2c_mode::kAddress8Data8;
        limits_ = kLayouts[0].capacity;
        break;
      case 4:
        mode_ = i2c_mode::kAddress16Data16;
        limits_ = kLayouts[2].capacity;
        break;
      case 3:
        mode_ = i2c_mode::kAddress16Data8;
        limits_ = kLayouts[1].capacity;
        break;
      default:
        mode_ = i2c_mode::kAddress16Data8;
        break;
    }
  }

  const PacketLayout& Layout() const { return kLayouts[static_cast<std::size_t>(*mode_)]; }

  void Add(const PendingRecord& record) {
    const std::uint32_t scatter_limit = Bounded(limits_.scatter, Layout().capacity.scatter);
    if (count_ == 0) {
      Append(record);
    } else if (!is_run_) {
      Append(record);
      SendWhenHolding(scatter_limit);
    } else if (record.address == pending_[count_ - 1].address + 1) {
      Append(record);
      SendWhenHolding(Bounded(limits_.run, Layout().capacity.run));
    } else if (limits_.scatter != 0 && count_ < scatter_limit) {
      is_run_ = false;
      Append(record);
      SendWhenHolding(scatter_limit);
    } else {
      SendPending();
      Append(record);
    }
  }

  void Append(const PendingRecord& record) { pending_[count_++] = record; }

  void SendWhenHolding(std::uint32_t limit) {
    if (count_ >= limit) {
      SendPending();
    }
  }

  void SendPending() {
    if (count_ == 0) {
      return;
    }
    plan_.packets.push_back(is_run_ ? RunPacket() : ScatterPacket());
    Act(I2cListAction::Kind::kSend);
    count_ = 0;
    is_run_ = true;
  }

  Packet OpenPacket(std::uint8_t kind) const {
    Packet packet;
    packet.fill(kUnusedByte);
    packet[0] = kind;
    packet[1] = ByteOf(slave_, 0);
    packet[2] =
        static_cast<std::uint8_t>(ByteOf(option_ << 4U, 0) | static_cast<std::uint8_t>(*mode_));
    packet[3] = static_cast<std::uint8_t>(count_);
    return packet;
  }

  Packet RunPacket() const {
    Packet packet = OpenPacket(i2c::kListRun);
    PutBytes(packet, kRunHead - Layout().address_bytes, pending_[0].address,
             Layout().address_bytes);
    std::size_t at = kRunHead;
    for (std::size_t i = 0; i < count_; ++i) {
      at = PutBytes(packet, at, pending_[i].value, Layout().data_bytes);
    }
    return packet;
  }

  Packet ScatterPacket() const {
    Packet packet = OpenPacket(i2c::kListScatter);
    std::size_t at = kScatterHead;
    for (std::size_t i = 0; i < count_; ++i) {
      at = PutBytes(packet, at, pending_[i].address, Layout().address_bytes);
      at = PutBytes(packet, at, pending_[i].value, Layout().data_bytes);
    }
    return packet;
  }

  // Writes the high byte first. Returns the position of the next field.
  static std::size_t PutBytes(Packet& packet, std::size_t at, std::int64_t number,
                              std::uint32_t bytes) {
    for (std::uint32_t i = bytes; i > 0; --i) {
      packet[at++] = LowByte(number, i - 1);
    }
    return at;
  }

  const std::uint32_t option_;
  I2cListPlan plan_;
  std::uint32_t polls_ = 0;
  std::uint32_t slave_ = kUnset;
  bool slave_seen_ = false;
  std::optional<std::int32_t> mode_;
  Limits limits_;
  std::array<PendingRecord, kBlockReadCount> pending_;  // no packet contains more
  std::size_t count_ = 0;
  bool is_run_ = true;
};

}  // namespace

I2cListPlan PlanI2cPackets(const std::vector<ListEntry>& list, std::uint32_t option) {
  PacketPlanner planner(option);
  for (const ListEntry& entry : list) {
    if (!planner.Take(entry)) {
      break;
    }
  }
  return planner.Finish();
}

}  // namespace borvan
