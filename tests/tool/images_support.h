#pragma once

// Helpers for the tests of the image readers.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "images/segments.h"

namespace borvanusb::tool_test {

inline std::vector<std::uint8_t> BytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

// The error of a reader; empty if it succeeds.
inline std::string ErrorOf(const std::function<void()>& read) {
  try {
    read();
  } catch (const ImageError& error) {
    return error.what();
  }
  return "";
}

}  // namespace borvanusb::tool_test
