#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "maps/register_map.h"

namespace borvanusb {

// Limits for a file, so that a small or broken file can't use up time and memory.
struct MapLimits {
  std::size_t bytes = std::size_t{64} << 20U;
  std::uint64_t tags = 4'000'000;     // elements in the file
  std::uint32_t depth = 64;           // nested elements; also nested clusters after expansion
  std::uint64_t entries = 2'000'000;  // registers, fields and values after expansion
};

// Why a file can't be used, in one line: "<register>: …". Line 0 means the whole file.
class SvdError : public std::exception {
 public:
  SvdError(std::uint64_t line, std::string text) : line_(line), text_(std::move(text)) {}
  std::uint64_t Line() const { return line_; }
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::uint64_t line_;
  std::string text_;
};

// Reads a CMSIS-SVD file, up to schema 1.3. A local error becomes a doubt of the map. An element
// that lacks something essential, such as a register without an address, is skipped, also with a
// doubt. Throws SvdError if the whole file can't be used.
RegisterMap ReadSvd(std::string text, const MapLimits& limits = {});

}  // namespace borvanusb
