// Appends a line for each transfer to the trace file.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "camera.h"
#include "configuration.h"
#include "shared_file.h"

namespace virtual_camera {

struct TracedTransfer {
  std::uint64_t time_us = 0;  // since 1970, UTC
  Direction direction = Direction::kSet;
  std::uint32_t selector = 0;
  std::uint32_t length = 0;             // of the buffer; of a length query: the length reported
  std::span<const std::uint8_t> bytes;  // sent, or answered
  std::int32_t result = 0;
};

// Cameras and processes may share a file: each line is written whole, under the file's lock.
class TraceWriter {
 public:
  // Throws ConfigurationError when the file can't be opened.
  TraceWriter(const std::string& path_utf8, const std::string& camera);

  void Write(const TracedTransfer& transfer);

 private:
  SharedFile file_;
  std::string camera_json_;
};

}  // namespace virtual_camera
