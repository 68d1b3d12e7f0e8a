#pragma once

// "-" instead of a file name: standard input or standard output.

#include <string>
#include <string_view>

#include "camera/host.h"
#include "command/command_rules.h"

namespace borvanusb {

constexpr std::string_view kStandardStream = "-";
constexpr const char* kStandardInput = "standard input";
constexpr const char* kStandardOutput = "standard output";

inline bool IsStandardStream(const std::string& file) {
  return file == kStandardStream;
}

// The file name for messages; for "-" it is `stream`, such as "standard input".
std::string ShownName(const std::string& file, const std::string& stream);

// Reads the whole file, or standard input. Throws Failure kFile, and kStopped if the user stops
// before standard input ends.
std::string ReadTextOrInput(const std::string& file, Host& host);

// Rejects --json if the result is already written to standard output. Throws WrongUse.
void CheckStandardOutput(const std::string& file, const GivenOptions& given);

}  // namespace borvanusb
