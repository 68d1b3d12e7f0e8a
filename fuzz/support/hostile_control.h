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
  std::uint32_t length = 0;  // handed over
  std::vector<std::uint8_t>
      bytes;  // set: what was sent; get: what was moved, no more than `length`
  borvan::Result result = 0;
  std::uint32_t reported = 0;  // length query
};

// A device that answers whatever the input says: any result, any reported length, replies of any
// bytes, short ones, tags that fit and tags that do not. When the input is used up it answers every
// transfer well, so that everything ends.
class Conversation {
 public:
  explicit Conversation(Input& input) : input_(input) {}

  // Called before each transfer is answered; may use the library itself.
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

// What the one control asks from now on; null: nothing is there to be asked.
void SetConversation(Conversation* conversation);

// The one control of all cameras.
std::shared_ptr<borvan::ExtensionUnitControl> TheControl();

// What a device of this kind reports.
std::uint32_t UsualLength(std::uint32_t selector);

}  // namespace borvan_fuzz
