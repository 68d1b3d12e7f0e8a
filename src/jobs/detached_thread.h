#pragma once

#include <memory>
#include <utility>

namespace borvan {

// Runs `procedure(argument)` on its own thread, which nobody waits for. Throws std::system_error
// (resource_unavailable_try_again) if no thread can be created.
void StartDetachedThread(void (*procedure)(void*), void* argument);

// Runs `run` once on such a thread, then destroys it there. If no thread can be created, `run` is
// destroyed before the exception leaves.
template <typename Run>
void RunDetached(Run run) {
  auto owned = std::make_unique<Run>(std::move(run));
  StartDetachedThread(
      [](void* argument) {
        const std::unique_ptr<Run> started(static_cast<Run*>(argument));
        (*started)();
      },
      owned.get());
  static_cast<void>(owned.release());
}

}  // namespace borvan
