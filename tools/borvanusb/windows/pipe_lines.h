#pragma once

#include <windows.h>

#include <functional>
#include <mutex>
#include <string>

#include "windows/handle.h"

namespace borvanusb {

// Lines through a pipe, in both directions.

// Calls `on_line` for each line, without its end, until the pipe ends.
void ReadPipeLines(HANDLE pipe, const std::function<void(const std::string&)>& on_line);

// Writes whole lines; from several threads, each line stays in one piece.
class PipeWriter {
 public:
  explicit PipeWriter(UniqueHandle pipe) : pipe_(std::move(pipe)) {}

  // What can't be written is lost: the other process is gone.
  void Write(const std::string& line);

 private:
  std::mutex mutex_;
  UniqueHandle pipe_;
};

}  // namespace borvanusb
