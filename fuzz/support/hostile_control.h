#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "device/extension_unit_control.h"
#include "support/input.h"

namespace borvan_fuzz {

enum class Direction { kLengthQuery, kSet, kGet };

// One transfer and its answer.
struct Exchange {
  Direction direction = Direction::kLengthQuery;
  std::uint32_t selector = 0;
  std::uint32_t length = 0;         // length of the buffer
  std::vector<std::uint8_t> bytes;  // set: sent bytes; get: returned bytes, at most `length`
  borvan::Result result = 0;
  std::uint32_t reported = 0;  // length query
};

// A device that answers as the input determines: any result, any reported length, replies with any
// bytes, short replies, right and wrong tags. At the end of the input it answers every transfer
// successfully, so that all operations end.
class Conversation {
 public:
  explicit Conversation(Input& input) : input_(input) {}

  // Called before each transfer is answered. It may call the library.
  std::function<void()> before_answer;

  std::vector<Exchange> exchanges;

  borvan::Result Answer(const borvan::NodePropertyRequest& request, void* data,
                        std::uint32_t length, std::uint32_t& bytes_returned);

 private:
  void AnswerLengthQuery(Exchange& exchange);
  void AnswerSet(Exchange& exchange);
  void AnswerGet(Exchange& exchange);

  Input& input_;
};

// Sets the source of answers for the control; null: the device is not connected.
void SetConversation(Conversation* conversation);

// The control that all cameras share.
std::shared_ptr<borvan::ExtensionUnitControl> TheControl();

// The length that such a device normally reports.
std::uint32_t UsualLength(std::uint32_t selector);

}  // namespace borvan_fuzz
