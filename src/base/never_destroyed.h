#pragma once

namespace borvan {

// A value of the whole process: at its end a job may have been killed in the middle of using it,
// and the drivers' libraries may be gone, so it is never destroyed. To be defined outside of
// functions: what makes a function's static once for all threads takes, under winpthreads, one of
// the process's thousand thread-local indices each time the library is loaded, and ends the host
// when none is left.
template <typename T>
union NeverDestroyed {
  constexpr NeverDestroyed() : value() {}
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;
  // NOLINTNEXTLINE(modernize-use-equals-default): that would be deleted, for the value has one
  ~NeverDestroyed() {}

  T value;
};

}  // namespace borvan
