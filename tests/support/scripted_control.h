#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "device/extension_unit_control.h"

namespace borvan::test {

using Bytes = std::vector<std::uint8_t>;

enum class Direction { kLengthQuery, kSet, kGet };

// One expected transfer and the device's answer to it.
struct Transfer {
  Direction direction = Direction::kLengthQuery;
  std::uint32_t selector = 0;
  std::uint32_t length = 0;  // length handed over; 0 for a length query
  Bytes bytes;               // sets: what must arrive; gets: the reply. Zeros follow up to `length`
  Result result = 0;         // the device's answer
  std::uint32_t reported = 0;  // what the device says it moved, or would move
};

// A length query that is answered as a device answers it: "more data", and the length.
Transfer ReportsLength(std::uint32_t selector, std::uint32_t length);

// A length query with any other answer; `reported` must then play no part.
Transfer AnswersLengthQuery(std::uint32_t selector, Result result, std::uint32_t reported = 0);

Transfer Takes(std::uint32_t selector, std::uint32_t length, Bytes bytes, Result result = 0);
Transfer Gives(std::uint32_t selector, std::uint32_t length, Bytes reply, Result result = 0);

// A get whose answer moves no byte: the buffer stays as it was.
Transfer GivesNothing(std::uint32_t selector, std::uint32_t length, Result result);

// "12 44 33 00"
std::string Hex(std::span<const std::uint8_t> bytes);

// The fields that every request has alike, and the direction of this one. Reports a test failure
// where the record is not what the vendor unit needs.
Direction CheckRequest(const NodePropertyRequest& request, const void* data, std::uint32_t length);

// A device that plays one conversation. Whatever departs from the script is a test failure that
// shows both sides, and is answered with kOffScript.
class ScriptedControl : public ExtensionUnitControl {
 public:
  static constexpr Result kOffScript = static_cast<Result>(0x8000FFFF);

  // Starts a new conversation.
  void Play(std::vector<Transfer> script);

  // Called with the number of each transfer, from 0, before it is answered.
  void BeforeAnswer(std::function<void(std::size_t)> action) { before_answer_ = std::move(action); }

  // Reports a test failure when part of the script was not asked for.
  void ExpectAllPlayed() const;

  // The number of transfers so far.
  std::size_t Count() const { return times_.size(); }

  // When transfer `index` arrived.
  std::chrono::steady_clock::time_point ArrivalOf(std::size_t index) const {
    return times_.at(index);
  }

  Result KsProperty(const NodePropertyRequest& request, void* data, std::uint32_t length,
                    std::uint32_t& bytes_returned) override;

 private:
  std::vector<Transfer> script_;
  std::vector<std::chrono::steady_clock::time_point> times_;
  std::function<void(std::size_t)> before_answer_;
};

}  // namespace borvan::test
