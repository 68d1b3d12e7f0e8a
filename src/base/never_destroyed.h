#pragma once

namespace borvan {

// A value that lasts as long as the process and is never destroyed: when the process ends, a job
// may have been killed while it used the value, and the drivers' libraries may be gone. Must be
// defined outside of functions: with winpthreads, the thread-safe initialisation of a function's
// static takes one of the process's thousand thread-local indices each time the library is loaded,
// and ends the host when none is left.
template <typename T>
union NeverDestroyed {
  constexpr NeverDestroyed() : value() {}
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;
  // NOLINTNEXTLINE(modernize-use-equals-default): that would be deleted if T has a destructor
  ~NeverDestroyed() {}

  T value;
};

}  // namespace borvan
