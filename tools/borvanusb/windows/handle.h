#pragma once

#include <windows.h>

#include <memory>

namespace borvanusb {

// Owns a system handle. Both null and INVALID_HANDLE_VALUE mean no handle.
struct HandleCloser {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const {
    if (handle != nullptr && handle != INVALID_HANDLE_VALUE) {
      CloseHandle(handle);
    }
  }
};
using UniqueHandle = std::unique_ptr<HANDLE, HandleCloser>;

}  // namespace borvanusb
