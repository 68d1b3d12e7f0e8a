#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>

namespace borvan {

// fopen, with the runtime's usual sharing. Null on failure.
std::FILE* OpenFile(const char* path, const char* mode);

// The length of an open file, past 2 GiB too; the position is back at the start. nullopt for what
// has no length.
std::optional<std::uint64_t> FileSize(std::FILE* file);

}  // namespace borvan
