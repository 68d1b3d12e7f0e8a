#include "support/dialogue.h"

#include <algorithm>

#include "support/check.h"

namespace borvan_fuzz {
namespace {

constexpr borvan::Result kMoreData = static_cast<borvan::Result>(0x800700EA);
constexpr borvan::Result kInvalidData = static_cast<borvan::Result>(0x8007000D);

}  // namespace

const Exchange& Dialogue::Next(Direction direction) {
  const std::string place = "transfer " + std::to_string(at_);
  Check(at_ < exchanges_.size(), place + " was not made");
  const Exchange& exchange = exchanges_[at_++];
  Check(exchange.direction == direction, place + " goes another way");
  CheckEqual(exchange.selector, selector_, place + ": selector");
  CheckEqual(exchange.length, direction == Direction::kLengthQuery ? 0 : length_,
             place + ": length");
  return exchange;
}

borvan::Result Dialogue::Query(std::uint32_t selector, std::size_t minimum) {
  selector_ = selector;
  const Exchange& exchange = Next(Direction::kLengthQuery);
  borvan::Result result = exchange.result;
  length_ = 0;
  if (result == kMoreData) {
    const bool possible = exchange.reported <= 0xFFFF;
    result = possible ? 0 : kInvalidData;
    length_ = possible ? exchange.reported : 0;
  }
  block_.assign(std::max<std::size_t>(minimum, length_), 0);
  return result;
}

borvan::Result Dialogue::QueryFixed(std::uint32_t selector, std::uint32_t length) {
  selector_ = selector;
  const borvan::Result result = Next(Direction::kLengthQuery).result;
  length_ = length;
  block_.assign(length, 0);
  return result == kMoreData ? 0 : result;
}

borvan::Result Dialogue::Send(std::span<const std::uint8_t> command) {
  std::copy(command.begin(), command.end(), block_.begin());
  const Exchange& exchange = Next(Direction::kSet);
  Check(std::equal(exchange.bytes.begin(), exchange.bytes.end(), block_.begin()),
        "transfer " + std::to_string(at_ - 1) + " sends other bytes");
  return exchange.result;
}

borvan::Result Dialogue::Receive() {
  const Exchange& exchange = Next(Direction::kGet);
  std::copy(exchange.bytes.begin(), exchange.bytes.end(), block_.begin());
  return exchange.result;
}

void Dialogue::End() const {
  CheckEqual(exchanges_.size(), at_, "transfers made");
}

}  // namespace borvan_fuzz
