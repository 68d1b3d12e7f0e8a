#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>

namespace borvan {

// fopen, with the runtime's usual sharing. Null on failure.
std::FILE* OpenFile(const char* path, const char* mode);

// Returns the length of an open file, also above 2 GiB, and leaves the position at the start.
// Returns nullopt for anything without a length.
std::optional<std::uint64_t> FileSize(std::FILE* file);

}  // namespace borvan
