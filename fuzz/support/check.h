#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace borvan_fuzz {

// Prints the violated property and ends the process. The fuzzer stores the input.
[[noreturn]] void Fail(std::string_view what);

// Fails with `what` unless the property is true.
inline void Check(bool holds, std::string_view what) {
  if (!holds) {
    Fail(what);
  }
}

// Fails with `what` and both values unless they are equal.
void CheckEqual(std::uint64_t found, std::uint64_t expected, std::string_view what);
void CheckEqual(const std::string& found, const std::string& expected, std::string_view what);

}  // namespace borvan_fuzz
