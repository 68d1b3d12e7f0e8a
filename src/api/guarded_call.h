#pragma once

// How exceptions leave the library.
//
// A host in the ABI of another compiler sees a C++ exception as a structured exception. When the
// host catches it, the system unwinds every frame between the throw and the host. For each frame
// with something to destroy it calls this compiler's runtime, which can't return to a handler that
// is not its own: the host hangs. So every export runs its body separately, lets all of it be
// destroyed, and throws the exception again from frames that own nothing. Hosts built with this
// compiler see no difference.

#include <array>
#include <cstddef>
#include <exception>
#include <system_error>
#include <type_traits>

namespace borvan {

// How a call ended. It may own an exception, but has no destructor: ThrowAgain takes over the
// exception.
struct KeptException {
  enum class Kind { kNone, kMessage, kBadAlloc, kSystemError, kOther };

  KeptException() = default;
  ~KeptException() = default;
  KeptException(const KeptException&) = delete;
  KeptException& operator=(const KeptException&) = delete;

  Kind kind = Kind::kNone;
  const char* message = nullptr;
  alignas(std::system_error) std::array<std::byte, sizeof(std::system_error)> system_error{};
  alignas(std::exception_ptr) std::array<std::byte, sizeof(std::exception_ptr)> other{};
};

// Calls `run(argument)`. Stores what it throws in `kept`; everything else is destroyed on return.
void RunAndKeep(void (*run)(void*), void* argument, KeptException& kept) noexcept;

// Throws the kept exception, with the same type and text.
[[noreturn]] void ThrowAgain(KeptException& kept);

// Returns the result of `body()` and throws what it throws. Neither `body` nor the result may have
// a destructor.
template <typename Body>
auto Guarded(Body body) -> decltype(body()) {
  using Value = decltype(body());
  static_assert(std::is_trivially_destructible_v<Body>);
  static_assert(std::is_trivially_destructible_v<Value>);
  static_assert(std::is_trivially_destructible_v<KeptException>);
  struct Call {
    Body* body;
    Value value;
  };
  Call call{&body, Value{}};
  KeptException kept;
  RunAndKeep(
      [](void* argument) {
        auto* const called = static_cast<Call*>(argument);
        called->value = (*called->body)();
      },
      &call, kept);
  if (kept.kind != KeptException::Kind::kNone) {
    ThrowAgain(kept);
  }
  return call.value;
}

// For throw_again.cpp: take over what is kept.
std::system_error TakeSystemError(KeptException& kept) noexcept;
[[noreturn]] void RethrowOther(KeptException& kept);

}  // namespace borvan
