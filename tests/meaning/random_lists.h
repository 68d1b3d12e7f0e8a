#pragma once

// Lists from a seed: the same seed gives the same list on every machine.

#include <cstdint>

#include "list_text.h"

namespace borvan_test {

enum class Pauses { kNone, kReal };

// Runs of all lengths around the borders of run and scatter blocks, gaps, repeated registers, marks
// inside and outside of runs, addresses above 16 bits, values above a byte; now and then no header.
// Pauses take 0 ms or count as none.
List RandomRegisterList(std::uint32_t seed);

// Likewise, with slaves, width codes known and unknown, ignored entries and width entries without a
// slave; now and then registers before the slave is told. Pauses::kReal: pauses of 1 to 255 ms too.
// Slaves 0x20, 0x30 and 0x40 are mostly followed by the width code of mode 0, 1 and 2.
List RandomI2cList(std::uint32_t seed, Pauses pauses);

// Plain registers from `lowest` to `highest`, each value at most `largest`.
List RandomPlainRegisters(std::uint32_t seed, std::uint32_t lowest, std::uint32_t highest,
                          std::uint32_t largest);

}  // namespace borvan_test
