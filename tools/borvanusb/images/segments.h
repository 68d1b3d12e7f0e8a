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

// A contiguous block of bytes.
struct Segment {
  std::uint32_t address = 0;
  std::vector<std::uint8_t> bytes;  // never empty; must end below 4 GiB

  std::uint64_t End() const { return std::uint64_t{address} + bytes.size(); }  // one past the last
  Range Place() const { return {address, static_cast<std::uint32_t>(End() - 1)}; }
  bool operator==(const Segment&) const = default;
};

// Sorted by address, without overlap. Adjacent segments are joined.
using Segments = std::vector<Segment>;

// The content of an image file.
struct ImageContent {
  Segments segments;
  std::optional<std::uint32_t> start;  // entry point of the program, if the file has one
};

// More than any linker produces. Each segment is read, stored and written separately.
constexpr std::size_t kMostSegments = 4096;

// Why a file can't be read as an image. The text has the place in the file and the error: "line 3:
// the checksum is 0x00, but the record adds up to 0x1e".
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

// Collects bytes in any order into segments. Gaps need no memory.
class SegmentCollector {
 public:
  // `place` is the position in the file, for messages. Throws ImageError if an address already has
  // a byte or is beyond 4 GiB.
  void Add(std::uint64_t address, std::span<const std::uint8_t> bytes, const FilePlace& place);

  // Throws ImageError if there are no bytes or more than kMostSegments segments.
  Segments Take();

 private:
  std::map<std::uint32_t, std::vector<std::uint8_t>> runs_;
};

// The address ranges of the segments.
std::vector<Range> PlacesOf(const Segments& segments);

// The number of bytes in all segments.
std::uint64_t TotalSize(const Segments& segments);

// Moves all segments up by `offset`. Throws ImageError if a byte would be beyond 4 GiB.
Segments Shifted(Segments segments, std::uint32_t offset);

}  // namespace borvanusb
