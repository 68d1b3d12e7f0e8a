#pragma once

#include "base/failure.h"
#include "camera/host.h"
#include "command/context.h"

namespace borvanusb {

// --wait: while an object exists, finding, reserving or opening a camera is retried until the time
// is over. The time starts with the first failure. Without --wait it has no effect.
class CameraWait {
 public:
  // The context must outlive it.
  explicit CameraWait(Context& context);
  ~CameraWait();
  CameraWait(const CameraWait&) = delete;
  CameraWait& operator=(const CameraWait&) = delete;

 private:
  bool TryAgain(const Failure& failure);

  Context& context_;
  Host::TryAgain before_;
  bool waiting_ = false;
  std::chrono::steady_clock::time_point begin_;
};

}  // namespace borvanusb
