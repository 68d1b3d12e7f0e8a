#pragma once

#include <windows.h>

#include <functional>
#include <mutex>
#include <string>

#include "windows/handle.h"

namespace borvanusb {

// Transfers lines through a pipe, in both directions.

// Calls `on_line` for each line, without its line end, until the pipe ends.
void ReadPipeLines(HANDLE pipe, const std::function<void(const std::string&)>& on_line);

// Writes complete lines. Lines from several threads are not mixed.
class PipeWriter {
 public:
  explicit PipeWriter(UniqueHandle pipe) : pipe_(std::move(pipe)) {}

  // Write errors are ignored, because they mean that the other process has ended.
  void Write(const std::string& line);

 private:
  std::mutex mutex_;
  UniqueHandle pipe_;
};

}  // namespace borvanusb
