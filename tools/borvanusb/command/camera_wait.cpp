#include "command/camera_wait.h"

#include <utility>

#include "base/format.h"
#include "output/output.h"

namespace borvanusb {

namespace {

// Shorter than the time that a camera needs to appear.
constexpr std::chrono::milliseconds kInterval{250};

}  // namespace

CameraWait::CameraWait(Context& context) : context_(context) {
  const bool wanted = context.common.wait.count() > 0;
  before_ = context.host.SetTryAgain(
      wanted ? [this](const Failure& failure) { return TryAgain(failure); } : Host::TryAgain());
}

CameraWait::~CameraWait() {
  context_.host.SetTryAgain(std::move(before_));
}

bool CameraWait::TryAgain(const Failure& failure) {
  if (failure.Code() != ExitCode::kNoCamera && failure.Code() != ExitCode::kRefused) {
    return false;
  }
  const auto now = context_.host.Clock();
  if (!waiting_) {
    waiting_ = true;
    begin_ = now;
    const std::chrono::duration<double> limit = context_.common.wait;
    context_.output.Note(
        Format("{}; waiting for it, {} s at most", failure.Message(), limit.count()));
  }
  if (now - begin_ >= context_.common.wait) {
    return false;
  }
  context_.host.Sleep(kInterval);
  if (context_.host.StopRequested()) {
    throw Failure(ExitCode::kStopped, "stopped by the user while waiting for a camera");
  }
  return true;
}

}  // namespace borvanusb
