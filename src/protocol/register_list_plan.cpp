#include "protocol/register_list_plan.h"

#include <algorithm>

#include "base/byte_order.h"
#include "protocol/chip_commands.h"

namespace borvan {
namespace {

constexpr std::uint8_t kUnusedByte = 0xFF;

// A register of the list, with what the planner found out about it.
struct Record {
  std::uint32_t address = 0;
  std::uint32_t value = 0;
  std::uint32_t run_length = 0;  // above 0 where a run begins
  bool marked = false;           // delay values came before it
  std::uint32_t first_delay = 0;
  std::uint32_t second_delay = 0;
};

struct Delays {
  std::uint32_t first = 0;
  std::uint32_t second = 0;
};

bool IsMark(const ListEntry& entry) {
  return entry.address == list_marker::kFirstDelay || entry.address == list_marker::kSecondDelay;
}

// Counts consecutive registers and notes the runs they form.
class RunFinder {
 public:
  explicit RunFinder(std::vector<Record>& records) : records_(records) {}

  // Must be called before the register is added to the records.
  void Take(std::uint32_t address) {
    if (records_.empty()) {
      previous_ = address;
    }
    // After a run the next register is deliberately compared with 0: neither the register after a
    // full run nor the one that ended a long run continues a run. Only register 1 is a step then.
    if (address == previous_ + 1) {
      ++steps_;
      if (steps_ == register_list::kLongestRun - 1) {
        CloseRun(records_.size() + 1);
        return;
      }
    } else if (steps_ + 1 >= register_list::kShortestRun) {
      CloseRun(records_.size());
      return;
    } else {
      steps_ = 0;
    }
    previous_ = address;
  }

  void Finish() {
    if (steps_ + 1 >= register_list::kShortestRun) {
      CloseRun(records_.size());
    }
  }

  // Records a run whose last register was not yet added when the run was closed.
  void AfterAdding() {
    if (full_run_pending_) {
      records_[records_.size() - register_list::kLongestRun].run_length =
          register_list::kLongestRun;
      full_run_pending_ = false;
    }
  }

 private:
  void CloseRun(std::size_t end) {
    const std::uint32_t length = steps_ + 1;
    if (end > records_.size()) {
      full_run_pending_ = true;
    } else {
      records_[end - length].run_length = length;
    }
    steps_ = 0;
    previous_ = 0;
  }

  std::vector<Record>& records_;
  std::uint32_t steps_ = 0;
  std::uint32_t previous_ = 0;
  bool full_run_pending_ = false;
};

std::vector<Record> FindRuns(const std::vector<ListEntry>& list,
                             std::vector<std::uint32_t>& pauses) {
  std::vector<Record> records;
  records.reserve(list.size());
  RunFinder runs(records);
  Record next;
  std::uint32_t last_first_delay = 0;
  for (const ListEntry& entry : list) {
    switch (entry.address) {
      case list_marker::kPause:
        if (entry.value <= list_marker::kLongestPause) {
          pauses.push_back(entry.value);
        }
        break;
      case list_marker::kFirstDelay:
        next.marked = true;
        next.first_delay = entry.value;
        last_first_delay = entry.value;
        break;
      case list_marker::kSecondDelay:
        next.marked = true;
        next.second_delay = entry.value;
        next.first_delay = last_first_delay;
        break;
      default:
        runs.Take(entry.address);
        next.address = entry.address;
        next.value = entry.value;
        records.push_back(next);
        runs.AfterAdding();
        next = Record{};
        break;
    }
  }
  runs.Finish();
  return records;
}

constexpr std::size_t kRunHead = 8;
constexpr std::size_t kScatterHead = 10;
constexpr std::size_t kScatterRecordSize = 3;
static_assert(kRunHead + register_list::kLongestRun == kPacketLength);
static_assert(kScatterHead + register_list::kScatterRecords * kScatterRecordSize == kPacketLength);

Packet RunPacket(std::span<const Record> run, const Delays& delays) {
  Packet packet;
  packet.fill(kUnusedByte);
  packet[0] = 0x00;
  packet[1] = register_list::kRun;
  packet[2] = run.front().marked ? 1 : 0;
  packet[3] = static_cast<std::uint8_t>(run.size());
  packet[4] = ByteOf(delays.first, 0);
  packet[5] = ByteOf(delays.second, 0);
  packet[6] = ByteOf(run.front().address, 1);
  packet[7] = ByteOf(run.front().address, 0);
  for (std::size_t i = 0; i < run.size(); ++i) {
    packet[kRunHead + i] = ByteOf(run[i].value, 0);
  }
  return packet;
}

// Collects scatter records until the block is full or something else must be sent first.
class ScatterBlock {
 public:
  bool Empty() const { return count_ == 0; }
  bool Full() const { return count_ == register_list::kScatterRecords; }

  void Add(const Record& record) {
    if (count_ == 0) {
      packet_.fill(kUnusedByte);
    }
    const std::size_t at = kScatterHead + kScatterRecordSize * count_;
    packet_[at] = ByteOf(record.address, 1);
    packet_[at + 1] = ByteOf(record.address, 0);
    packet_[at + 2] = ByteOf(record.value, 0);
    last_ = record;
    ++count_;
  }

  // Returns the finished block; the next one starts empty. A finished block always contains an even
  // number of records: the last one is repeated if necessary.
  Packet Take(const Delays& delays) {
    if (count_ % 2 != 0) {
      Add(Record(last_));
    }
    packet_[0] = 0x00;
    packet_[1] = register_list::kScatter;
    packet_[2] = delays.first != 0 && delays.second != 0 ? 1 : 0;
    packet_[3] = static_cast<std::uint8_t>(count_);
    packet_[4] = ByteOf(list_marker::kFirstDelay, 1);
    packet_[5] = ByteOf(list_marker::kFirstDelay, 0);
    packet_[6] = ByteOf(delays.first, 0);
    packet_[7] = ByteOf(list_marker::kSecondDelay, 1);
    packet_[8] = ByteOf(list_marker::kSecondDelay, 0);
    packet_[9] = ByteOf(delays.second, 0);
    count_ = 0;
    return packet_;
  }

 private:
  Packet packet_{};
  std::size_t count_ = 0;
  Record last_;
};

std::vector<RegisterListBlock> BuildBlocks(const std::vector<Record>& records) {
  std::vector<RegisterListBlock> blocks;
  ScatterBlock scatter;
  Delays delays;
  for (std::size_t at = 0; at < records.size();) {
    const Record& record = records[at];
    if (record.run_length != 0) {
      if (!scatter.Empty()) {
        blocks.push_back({scatter.Take(delays), false});
      }
      if (record.marked) {
        delays = {record.first_delay, record.second_delay};
      }
      // Marks and run starts inside the run are skipped with it.
      blocks.push_back({RunPacket({&record, record.run_length}, delays), true});
      at += record.run_length;
      continue;
    }
    if (record.marked) {
      if (!scatter.Empty()) {
        blocks.push_back({scatter.Take(delays), true});
      }
      delays = {record.first_delay, record.second_delay};
    }
    scatter.Add(record);
    if (scatter.Full()) {
      blocks.push_back({scatter.Take(delays), true});
    }
    ++at;
  }
  if (!scatter.Empty()) {
    blocks.push_back({scatter.Take(delays), true});
  }
  return blocks;
}

}  // namespace

void DropTrailingMarks(std::vector<ListEntry>& list) {
  while (!list.empty() && IsMark(list.back())) {
    list.pop_back();
  }
}

bool HasListHeader(const std::vector<ListEntry>& list) {
  const auto first = std::find_if(list.begin(), list.end(), [](const ListEntry& entry) {
    return entry.address != list_marker::kPause;
  });
  return first == list.end() || first->address == list_marker::kFirstDelay;
}

RegisterListPlan PlanRegisterList(const std::vector<ListEntry>& list) {
  RegisterListPlan plan;
  plan.blocks = BuildBlocks(FindRuns(list, plan.pauses));
  return plan;
}

}  // namespace borvan
