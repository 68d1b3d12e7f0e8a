#pragma once

#include <borvan_usb.h>

// The indices that fake_library.cpp knows; with any other there is no camera.
enum {
  kFakeCamera = 0,
  kFakeCameraThatIsGone = 1,     // throws the message "ERROR: the fake camera is gone"
  kFakeCameraWithoutMemory = 2,  // throws std::bad_alloc
  kNoFakeCamera = 3,
};
