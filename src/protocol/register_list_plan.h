#pragma once

// Plans a register list: what to send, as values, before anything is sent.

#include <cstdint>
#include <vector>

#include "base/list_entry.h"
#include "base/packet.h"

namespace borvan {

// One block of a register list.
struct RegisterListBlock {
  Packet packet{};
  // False for a scatter block that is sent only because a run follows: its result is discarded.
  bool keeps_result = true;
};

struct RegisterListPlan {
  // Pauses in milliseconds. All of them come before the first block.
  std::vector<std::uint32_t> pauses;
  std::vector<RegisterListBlock> blocks;
};

// Removes the marks (delay values) at the end of a list: no register follows them.
void DropTrailingMarks(std::vector<ListEntry>& list);

// True when the first entry that is not a pause is a first delay value, as the chip's list header
// requires. Also true for a list that contains only pauses.
bool HasListHeader(const std::vector<ListEntry>& list);

// Runs of 21 to 56 consecutive registers become run blocks; all other registers go into scatter
// blocks of at most 18 records.
RegisterListPlan PlanRegisterList(const std::vector<ListEntry>& list);

}  // namespace borvan
