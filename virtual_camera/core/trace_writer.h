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

// Cameras and processes may share a file: each line is written under the file's lock. A process
// that is killed meanwhile may leave a part of its line; the next line begins anew behind it.
class TraceWriter {
 public:
  // Throws ConfigurationError when the file can't be opened, or holds something else than a trace.
  TraceWriter(const std::string& path_utf8, const std::string& camera);

  // Appends the transfer; before it, unless `missing` is 0, a line which says that so many
  // transfers of this camera are not in the file. False when that could not be written: then the
  // file is as before.
  bool Write(const TracedTransfer& transfer, std::uint64_t missing) noexcept;

 private:
  std::string Lines(const TracedTransfer& transfer, std::uint64_t missing) const;
  void Append(const std::string& lines);

  SharedFile file_;
  TraceLock lock_;
  std::string camera_json_;
  // The file ended here, and with a whole line, when this object wrote last; 0: not known.
  std::uint64_t end_ = 0;
};

}  // namespace virtual_camera
