#include "scripted_control.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace borvan::test {
namespace {

// {DD880F8A-1CBA-4954-8A25-F7875967F0F7} as a GUID lies in memory: three little-endian numbers,
// then eight bytes.
constexpr std::array<std::uint8_t, 16> kVendorUnit = {
    0x8A, 0x0F, 0x88, 0xDD, 0xBA, 0x1C, 0x54, 0x49, 0x8A, 0x25, 0xF7, 0x87, 0x59, 0x67, 0xF0, 0xF7};

constexpr std::uint32_t kGetFlags = 0x10000001;
constexpr std::uint32_t kSetFlags = 0x10000002;

constexpr Result kMoreDataAnswer = static_cast<Result>(0x800700EA);

const char* NameOf(Direction direction) {
  switch (direction) {
    case Direction::kLengthQuery:
      return "length query";
    case Direction::kSet:
      return "set";
    case Direction::kGet:
      return "get";
  }
  return "?";
}

std::string Describe(Direction direction, std::uint32_t selector, std::uint32_t length) {
  return std::string(NameOf(direction)) + ", selector " + std::to_string(selector) + ", length " +
         std::to_string(length);
}

// The bytes of a transfer: `bytes`, then zeros up to its length, and nothing beyond it.
Bytes Fitted(const Bytes& bytes, std::uint32_t length) {
  Bytes fitted = bytes;
  fitted.resize(length);
  return fitted;
}

}  // namespace

Transfer ReportsLength(std::uint32_t selector, std::uint32_t length) {
  return {Direction::kLengthQuery, selector, 0, {}, kMoreDataAnswer, length};
}

Transfer AnswersLengthQuery(std::uint32_t selector, Result result, std::uint32_t reported) {
  return {Direction::kLengthQuery, selector, 0, {}, result, reported};
}

Transfer Takes(std::uint32_t selector, std::uint32_t length, Bytes bytes, Result result) {
  return {Direction::kSet, selector, length, std::move(bytes), result, length};
}

Transfer Gives(std::uint32_t selector, std::uint32_t length, Bytes reply, Result result) {
  return {Direction::kGet, selector, length, std::move(reply), result, length};
}

Transfer GivesNothing(std::uint32_t selector, std::uint32_t length, Result result) {
  return {Direction::kGet, selector, length, {}, result, 0};
}

std::string Hex(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (!text.empty()) {
      text += ' ';
    }
    text += kDigits[byte / 16];
    text += kDigits[byte % 16];
  }
  return text;
}

Direction CheckRequest(const NodePropertyRequest& request, const void* data, std::uint32_t length) {
  EXPECT_EQ(Hex(request.set), Hex(kVendorUnit)) << "property set";
  EXPECT_EQ(request.node_id, 2U) << "node";
  EXPECT_EQ(request.reserved, 0U) << "last field of the request";
  if (request.flags == kSetFlags) {
    EXPECT_NE(data, nullptr) << "buffer of a set";
    return Direction::kSet;
  }
  EXPECT_EQ(request.flags, kGetFlags) << "flags";
  if (data == nullptr) {
    EXPECT_EQ(length, 0U) << "a length query has neither buffer nor length";
    return Direction::kLengthQuery;
  }
  return Direction::kGet;
}

void ScriptedControl::Play(std::vector<Transfer> script) {
  script_ = std::move(script);
  times_.clear();
  before_answer_ = nullptr;
}

void ScriptedControl::ExpectAllPlayed() const {
  if (times_.size() < script_.size()) {
    const Transfer& missing = script_[times_.size()];
    ADD_FAILURE() << "only " << times_.size() << " of " << script_.size()
                  << " transfers were made; the next should have been: "
                  << Describe(missing.direction, missing.selector, missing.length);
  }
}

Result ScriptedControl::KsProperty(const NodePropertyRequest& request, void* data,
                                   std::uint32_t length, std::uint32_t& bytes_returned) {
  const std::size_t index = times_.size();
  times_.push_back(std::chrono::steady_clock::now());
  const Direction direction = CheckRequest(request, data, length);
  const std::string arrived = Describe(direction, request.id, length);
  auto* const buffer = static_cast<std::uint8_t*>(data);
  if (index >= script_.size()) {
    ADD_FAILURE() << "transfer " << index << " is one too many: " << arrived
                  << (direction == Direction::kSet ? "\n  bytes: " + Hex({buffer, length}) : "");
    return kOffScript;
  }
  const Transfer& expected = script_[index];
  const std::string wanted = Describe(expected.direction, expected.selector, expected.length);
  if (arrived != wanted) {
    ADD_FAILURE() << "transfer " << index << "\n  expected: " << wanted
                  << "\n  arrived:  " << arrived;
    return kOffScript;
  }
  if (direction == Direction::kSet) {
    const Bytes wanted_bytes = Fitted(expected.bytes, length);
    const Bytes arrived_bytes(buffer, buffer + length);
    if (arrived_bytes != wanted_bytes) {
      ADD_FAILURE() << "transfer " << index << " (" << wanted
                    << ")\n  expected: " << Hex(wanted_bytes)
                    << "\n  arrived:  " << Hex(arrived_bytes);
      return kOffScript;
    }
  }
  if (before_answer_) {
    before_answer_(index);
  }
  if (direction == Direction::kGet && expected.reported != 0) {
    const Bytes reply = Fitted(expected.bytes, length);
    std::copy(reply.begin(), reply.end(), buffer);
  }
  bytes_returned = expected.reported;
  return expected.result;
}

}  // namespace borvan::test
