// Stands in for the library where only the header is tried: what it selects depends on the index.
#include <cstdint>
#include <new>

#include "fake_library.h"

bool UsbSelectDevice(std::int32_t index) {
  switch (index) {
    case kFakeCamera:
      return true;
    case kFakeCameraThatIsGone:
      throw "ERROR: the fake camera is gone";
    case kFakeCameraWithoutMemory:
      throw std::bad_alloc();
    default:
      return false;
  }
}
