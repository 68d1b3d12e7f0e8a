#include "support/check.h"

#include <cstdio>
#include <cstdlib>

namespace borvan_fuzz {

void Fail(std::string_view what) {
  std::fprintf(stderr, "broken property: %.*s\n", static_cast<int>(what.size()), what.data());
  std::abort();
}

void CheckEqual(std::uint64_t found, std::uint64_t expected, std::string_view what) {
  if (found != expected) {
    std::fprintf(stderr, "found 0x%llx instead of 0x%llx\n", static_cast<unsigned long long>(found),
                 static_cast<unsigned long long>(expected));
    Fail(what);
  }
}

void CheckEqual(const std::string& found, const std::string& expected, std::string_view what) {
  if (found != expected) {
    std::fprintf(stderr, "found    \"%s\"\nexpected \"%s\"\n", found.c_str(), expected.c_str());
    Fail(what);
  }
}

}  // namespace borvan_fuzz
