#pragma once

#include <stdexcept>
#include <string>

// The program's exit codes; --help lists them.
enum class ExitCode : int {
  kIdentical = 0,
  kWrongArguments = 1,
  kImageUnusable = 2,
  kNoCamera = 3,
  kCameraNotOpened = 4,
  kProgrammingFailed = 5,
  kReadingBackFailed = 6,
  kDifferent = 7,
  kTimeLimit = 8,
  kInterrupted = 9,
  kUnexpected = 10,
};

// Why the program ends early: one line for people, one code for scripts.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

  ExitCode Code() const { return code_; }

 private:
  ExitCode code_;
};
