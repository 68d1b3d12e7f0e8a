#include "core/trace_lock.h"

namespace virtual_camera {

TraceLock::TraceLock(SharedFile& file, const std::string& /*path_utf8*/) : file_(file) {}

void TraceLock::Lock() {
  file_.Lock();
}

void TraceLock::Unlock() noexcept {
  file_.Unlock();
}

}  // namespace virtual_camera
