#pragma once

#include <exception>
#include <string>
#include <utility>

#include "base/exit_code.h"

namespace borvanusb {

// The exception that ends a command early. The message says what failed, where and why. The hint
// says what the user can do: one line for each possible action. Both are UTF-8; the message is one
// line.
class Failure : public std::exception {
 public:
  Failure(ExitCode code, std::string message, std::string hint = {})
      : code_(code), message_(std::move(message)), hint_(std::move(hint)) {}

  ExitCode Code() const { return code_; }
  const std::string& Message() const { return message_; }
  const std::string& Hint() const { return hint_; }
  const char* what() const noexcept override { return message_.c_str(); }

 private:
  ExitCode code_;
  std::string message_;
  std::string hint_;
};

}  // namespace borvanusb
