#include "support/hostile_control.h"

#include <algorithm>
#include <array>

#include "support/check.h"

namespace borvan_fuzz {
namespace {

constexpr std::uint32_t kGetFlags = 0x10000001;
constexpr std::uint32_t kSetFlags = 0x10000002;
constexpr borvan::Result kMoreData = static_cast<borvan::Result>(0x800700EA);

Conversation*& Current() {
  static Conversation* current = nullptr;
  return current;
}

class Control : public borvan::ExtensionUnitControl {
 public:
  borvan::Result KsProperty(const borvan::NodePropertyRequest& request, void* data,
                            std::uint32_t length, std::uint32_t& bytes_returned) override {
    Check(Current() != nullptr, "a transfer while nobody uses the library");
    return Current()->Answer(request, data, length, bytes_returned);
  }
};

Direction DirectionOf(const borvan::NodePropertyRequest& request, const void* data,
                      std::uint32_t length) {
  CheckEqual(request.node_id, 2, "node of a transfer");
  if (request.flags == kSetFlags) {
    Check(data != nullptr, "a set without a buffer");
    return Direction::kSet;
  }
  CheckEqual(request.flags, kGetFlags, "flags of a transfer");
  if (data == nullptr) {
    CheckEqual(length, 0, "length of a length query");
    return Direction::kLengthQuery;
  }
  return Direction::kGet;
}

}  // namespace

borvan::Result Conversation::Answer(const borvan::NodePropertyRequest& request, void* data,
                                    std::uint32_t length, std::uint32_t& bytes_returned) {
  Exchange exchange;
  exchange.direction = DirectionOf(request, data, length);
  exchange.selector = request.id;
  exchange.length = length;
  auto* const buffer = static_cast<std::uint8_t*>(data);
  if (before_answer) {
    before_answer();
  }
  switch (exchange.direction) {
    case Direction::kLengthQuery:
      AnswerLengthQuery(exchange);
      bytes_returned = exchange.reported;
      break;
    case Direction::kSet:
      // Reads the complete buffer, so that a sanitizer detects a buffer that is too short.
      exchange.bytes.assign(buffer, buffer + length);
      AnswerSet(exchange);
      break;
    case Direction::kGet:
      AnswerGet(exchange);
      std::copy(exchange.bytes.begin(), exchange.bytes.end(), buffer);
      bytes_returned = static_cast<std::uint32_t>(exchange.bytes.size());
      break;
  }
  exchanges.push_back(exchange);
  return exchange.result;
}

void Conversation::AnswerLengthQuery(Exchange& exchange) {
  exchange.result = kMoreData;
  exchange.reported = UsualLength(exchange.selector);
  switch (input_.Choice(8)) {
    case 4:
      exchange.reported = input_.Byte();
      break;
    case 5:
      exchange.reported = input_.Word();
      break;
    case 6:
      exchange.reported = input_.Word();
      exchange.result = static_cast<borvan::Result>(input_.Byte());
      break;
    case 7:
      exchange.result = static_cast<borvan::Result>(input_.Word());
      break;
    default:
      break;
  }
}

void Conversation::AnswerSet(Exchange& exchange) {
  if (input_.Choice(4) == 3) {
    exchange.result = static_cast<borvan::Result>(input_.Word());
  }
}

void Conversation::AnswerGet(Exchange& exchange) {
  const std::uint32_t kind = input_.Choice(8);
  if (kind == 0) {
    return;  // success without any data
  }
  if (kind >= 6) {
    exchange.result = static_cast<borvan::Result>(input_.Word());
  }
  if (kind == 6) {
    return;
  }
  exchange.bytes = input_.Bytes(std::min<std::uint32_t>(input_.Byte(), exchange.length));
  if (kind >= 3 && exchange.bytes.size() >= 4) {
    // Writes the tags that hosts expect, at the position where hosts check whether a reply is
    // theirs.
    constexpr std::array<std::uint8_t, 3> kRegisterTags = {0x28, 0x11, 0x21};
    exchange.bytes[exchange.selector == 1 ? 3 : 0] =
        exchange.selector == 1 ? kRegisterTags[kind % kRegisterTags.size()] : std::uint8_t{0x34};
  }
  if (kind == 5) {
    exchange.bytes.resize(exchange.length, exchange.bytes.empty() ? 0xA5 : exchange.bytes.back());
  }
}

void SetConversation(Conversation* conversation) {
  Current() = conversation;
}

std::shared_ptr<borvan::ExtensionUnitControl> TheControl() {
  static const auto& control =
      *new std::shared_ptr<borvan::ExtensionUnitControl>(std::make_shared<Control>());
  return control;
}

std::uint32_t UsualLength(std::uint32_t selector) {
  constexpr std::array<std::uint32_t, 7> kLengths = {4, 12, 11, 64, 64, 64, 64};
  return selector >= 1 && selector <= kLengths.size() ? kLengths[selector - 1] : 0;
}

}  // namespace borvan_fuzz
