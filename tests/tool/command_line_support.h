#pragma once

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

#include "base/failure.h"
#include "command/command_line.h"

namespace borvanusb::tool_test {

using Words = std::vector<std::string>;

// The values that a command line gives a command.
template <typename C>
C As(const Words& words) {
  return *ValuesOf<C>(*std::get<Arguments>(ParseCommandLine(words)).command);
}

inline Failure FailureOf(const Words& words) {
  try {
    ParseCommandLine(words);
  } catch (const Failure& failure) {
    return failure;
  }
  ADD_FAILURE() << "the command line is taken";
  return {ExitCode::kDone, ""};
}

inline void ExpectRefused(const Words& words, const std::string& message) {
  const Failure failure = FailureOf(words);
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_EQ(failure.Message(), message);
}

}  // namespace borvanusb::tool_test
