#pragma once

// A camera's SPI flash in memory behind the control selectors that reach it: as little work a
// transfer as a device can have, so that what the library adds shows.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

// What a timing program sets before a bulk transfer and reads after it. Only transfers of the flash
// selectors that carry data count; length queries and register accesses do not.
struct TransferClock {
  std::uint64_t wait_cycles = 0;         // every counted transfer spins for so long
  std::uint64_t expected_transfers = 0;  // the bulk transfer ends with this many

  std::uint64_t transfers = 0;
  std::uint64_t first_cycle = 0;    // when the first counted transfer came in
  std::uint64_t last_cycle = 0;     // when the last expected one went out
  std::uint64_t waited_cycles = 0;  // what the spinning really took, all transfers together
  std::atomic<bool> done{false};    // the last expected transfer has gone out

  // Forgets the last bulk transfer. Nothing may be transferring meanwhile.
  void Arm(std::uint64_t expected, std::uint64_t wait) {
    wait_cycles = wait;
    expected_transfers = expected;
    transfers = 0;
    first_cycle = 0;
    last_cycle = 0;
    waited_cycles = 0;
    done.store(false);
  }
};

// Answers of the control, as the system numbers them.
constexpr std::int32_t kAnswerOk = 0;
constexpr std::int32_t kAnswerMoreData = static_cast<std::int32_t>(0x800700EA);
constexpr std::int32_t kAnswerInvalid = static_cast<std::int32_t>(0x80070057);

class MemoryFlash {
 public:
  // `size` is a power of two; addresses wrap there. Every byte is 0xFF and has its memory page.
  explicit MemoryFlash(std::size_t size);

  // One property request: `data` of `length` bytes is read, or filled when `is_get`. Null data asks
  // for the selector's length.
  std::int32_t Transfer(std::uint32_t selector, bool is_get, void* data, std::uint32_t length,
                        std::uint32_t& bytes_returned);

  TransferClock& Clock() { return clock_; }
  std::uint8_t* Bytes() { return bytes_.data(); }

 private:
  std::int32_t MoveWord(bool is_get, std::uint8_t* data);
  std::int32_t Move(std::uint32_t selector, bool is_get, std::uint8_t* data, std::uint32_t length);

  std::size_t mask_;
  std::vector<std::uint8_t> bytes_;  // with room for a packet past the last address
  std::uint32_t read_address_ = 0;
  TransferClock clock_;
};

}  // namespace bench
