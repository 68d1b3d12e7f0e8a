#pragma once

// The errors of the C++ binding, and results for those who do not want exceptions.

#include <borvan_usb.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

namespace borvan {

enum class ErrorKind {
  kArgument,        // an argument is not allowed; nothing was done
  kBusy,            // a job may still run, or another Camera exists
  kClosed,          // the Camera was closed
  kNoSuchCamera,    // no camera has this index
  kCannotOpen,      // the camera can't be opened
  kAccess,          // a single access failed; the library gives no code
  kNoAnswer,        // the transfers succeeded, but the reply belongs to another request
  kNothingWritten,  // a register list does not begin with 0xfffd
  kStatus,          // a job failed, with a status code
  kTimeLimit,       // a job did not end in time and may still run
  kEndMissed,       // the end of a job was missed
  kThread,          // a call from a thread other than the one that made the Camera
  kProcess,         // borvanusb can't be started, or ended without a result
  kProgram,         // borvanusb reported a failure: see ProgramError
};

// The name of a kind, as in the table of cases.
inline const char* KindName(ErrorKind kind) noexcept {
  switch (kind) {
    case ErrorKind::kArgument:
      return "argument";
    case ErrorKind::kBusy:
      return "busy";
    case ErrorKind::kClosed:
      return "closed";
    case ErrorKind::kNoSuchCamera:
      return "no-such-camera";
    case ErrorKind::kCannotOpen:
      return "cannot-open";
    case ErrorKind::kAccess:
      return "access";
    case ErrorKind::kNoAnswer:
      return "no-answer";
    case ErrorKind::kNothingWritten:
      return "nothing-written";
    case ErrorKind::kStatus:
      return "status";
    case ErrorKind::kTimeLimit:
      return "time-limit";
    case ErrorKind::kEndMissed:
      return "end-missed";
    case ErrorKind::kThread:
      return "thread";
    case ErrorKind::kProcess:
      return "process";
    case ErrorKind::kProgram:
      return "program";
  }
  return "";
}

// The error that every call of this binding throws. what() is "CALL: REASON".
class Error : public std::runtime_error {
 public:
  Error(ErrorKind kind, const std::string& message, std::uint32_t status = 0)
      : std::runtime_error(message), kind_(kind), status_(status) {}

  ErrorKind Kind() const noexcept { return kind_; }
  // The code of borvan_usb_status.h of a failed job; otherwise 0.
  std::uint32_t Status() const noexcept { return status_; }

 private:
  ErrorKind kind_;
  std::uint32_t status_;
};

// The value of a call, or the Error that it ended with.
template <typename Value>
class [[nodiscard]] Result {
 public:
  Result(Value value) : content_(std::in_place_index<0>, std::move(value)) {}
  Result(Error error) : content_(std::in_place_index<1>, std::move(error)) {}

  explicit operator bool() const noexcept { return content_.index() == 0; }
  // The value; throws the Error when there is none.
  const Value& Get() const& {
    ThrowError();
    return std::get<0>(content_);
  }
  Value Get() && {
    ThrowError();
    return std::get<0>(std::move(content_));
  }
  // The Error; only when there is no value.
  const Error& GetError() const { return std::get<1>(content_); }

 private:
  void ThrowError() const {
    if (const Error* const error = std::get_if<1>(&content_)) {
      throw Error(*error);
    }
  }

  std::variant<Value, Error> content_;
};

struct Nothing {};
using Outcome = Result<Nothing>;

}  // namespace borvan
