#pragma once

// Appends a line for each transfer to the trace file.

#include <cstdint>
#include <span>
#include <string>

#include "core/camera.h"
#include "core/configuration.h"
#include "core/shared_file.h"
#include "core/trace_lock.h"

namespace virtual_camera {

struct TracedTransfer {
  std::uint64_t time_us = 0;  // since 1970, UTC
  Direction direction = Direction::kSet;
  std::uint32_t selector = 0;
  std::uint32_t length = 0;             // of the buffer; of a length query: the length reported
  std::span<const std::uint8_t> bytes;  // sent, or answered
  std::int32_t result = 0;
};

// Cameras and processes may share a file, because each line is written under the file's lock. If a
// process is killed while it writes, a part of its line may remain. The next line then starts after
// this part, on a new line.
class TraceWriter {
 public:
  // Throws ConfigurationError if the file can't be opened or is not a trace.
  TraceWriter(const std::string& path_utf8, const std::string& camera);

  // Appends the transfer. If `missing` is not 0, first appends a line with the number of transfers
  // of this camera that are missing in the file. Returns false if it can't write; the file is then
  // unchanged.
  bool Write(const TracedTransfer& transfer, std::uint64_t missing) noexcept;

 private:
  std::string Lines(const TracedTransfer& transfer, std::uint64_t missing) const;
  void Append(const std::string& lines);

  SharedFile file_;
  TraceLock lock_;
  std::string camera_json_;
  // The end of the file, after a complete line, when this object last wrote. 0: unknown.
  std::uint64_t end_ = 0;
};

}  // namespace virtual_camera
