#pragma once

#include <windows.h>

#include "base/failure.h"
#include "base/format.h"
#include "windows/handle.h"
#include "windows/text.h"

namespace borvanusb {

// Both ends of an anonymous pipe. A new process does not inherit them.
struct Pipe {
  UniqueHandle read;
  UniqueHandle write;
};

// Throws Failure kInternal if the system makes no pipe.
inline Pipe MakePipe() {
  HANDLE read = nullptr;
  HANDLE write = nullptr;
  if (CreatePipe(&read, &write, nullptr, 0) == FALSE) {
    throw Failure(
        ExitCode::kInternal,
        Format("a pipe to another process can't be made: {}", SystemMessage(GetLastError())),
        "Close other programs and try again.");
  }
  return {UniqueHandle(read), UniqueHandle(write)};
}

}  // namespace borvanusb
