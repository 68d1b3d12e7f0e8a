#pragma once

// "-" in place of a file's name: standard input or standard output.

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

// The name for messages; `stream`, such as "standard input", for "-".
std::string ShownName(const std::string& file, const std::string& stream);

// All of a file, or of standard input. Throws Failure kFile, and kStopped when the user stops while
// standard input has not ended.
std::string ReadTextOrInput(const std::string& file, Host& host);

// A result on standard output leaves no room there for the JSON. Throws WrongUse.
void CheckStandardOutput(const std::string& file, const GivenOptions& given);

}  // namespace borvanusb
