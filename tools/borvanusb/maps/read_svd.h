#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "maps/register_map.h"

namespace borvanusb {

// What a file may ask of the reader.
struct MapLimits {
  std::size_t bytes = std::size_t{64} << 20U;
  std::uint64_t tags = 4'000'000;     // elements of the file
  std::uint32_t depth = 64;           // elements within each other, clusters when written out, too
  std::uint64_t entries = 2'000'000;  // registers, fields and values when written out
};

// Why a file can't be used: "<register>: …", in one line. Line 0 is the file as a whole.
class SvdError : public std::exception {
 public:
  SvdError(std::uint64_t line, std::string text) : line_(line), text_(std::move(text)) {}
  std::uint64_t Line() const { return line_; }
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::uint64_t line_;
  std::string text_;
};

// Reads a CMSIS-SVD file, up to schema 1.3. What is wrong in one place is a doubt of the map, and
// what can't be known (a register without an address) is left out and told so. Throws SvdError for
// a file that can't be used as a whole.
RegisterMap ReadSvd(std::string text, const MapLimits& limits = {});

}  // namespace borvanusb
