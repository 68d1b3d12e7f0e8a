#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/numbers.h"

namespace borvanusb {

// Bytes that follow one another in the address space.
struct Segment {
  std::uint32_t address = 0;
  std::vector<std::uint8_t> bytes;  // never empty; the last one lies below 4 GiB

  std::uint64_t End() const { return std::uint64_t{address} + bytes.size(); }  // one past the last
  Range Place() const { return {address, static_cast<std::uint32_t>(End() - 1)}; }
  bool operator==(const Segment&) const = default;
};

// In rising order, without overlap, joined where they touch.
using Segments = std::vector<Segment>;

// What an image file says.
struct ImageContent {
  Segments segments;
  std::optional<std::uint32_t> start;  // where a program begins, if the file names it
};

// More pieces than any linker leaves; each would be read, kept and written by itself.
constexpr std::size_t kMostSegments = 4096;

// Why a file can't be read as an image: the place in it and what is wrong there, as "line 3: the
// checksum is 0x00, but the record adds up to 0x1e".
class ImageError : public std::exception {
 public:
  explicit ImageError(std::string text) : text_(std::move(text)) {}
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::string text_;
};

// A place in a file, for messages: "line 3", "byte 52".
struct FilePlace {
  const char* unit = "line";
  std::uint64_t number = 0;

  std::string Text() const;
};

// Collects bytes in any order into segments. Memory is taken for bytes alone, not for gaps.
class SegmentCollector {
 public:
  // `place` is where the file has them. Throws ImageError for bytes at addresses that have some
  // already, or beyond 4 GiB.
  void Add(std::uint64_t address, std::span<const std::uint8_t> bytes, const FilePlace& place);

  // Throws ImageError when there is no byte, and for more than kMostSegments pieces.
  Segments Take();

 private:
  std::map<std::uint32_t, std::vector<std::uint8_t>> runs_;
};

// Where the segments lie.
std::vector<Range> PlacesOf(const Segments& segments);

// The bytes in all segments together.
std::uint64_t TotalSize(const Segments& segments);

// The same bytes `offset` higher. Throws ImageError when one would lie beyond 4 GiB.
Segments Shifted(Segments segments, std::uint32_t offset);

}  // namespace borvanusb
