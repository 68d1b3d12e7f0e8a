#include "api/guarded_call.h"

#include <memory>
#include <new>
#include <typeinfo>
#include <utility>

namespace borvan {
namespace {

// An object of a derived class would lose what the class adds if it were copied as its base.
template <typename Exception>
bool IsExactly(const Exception& exception) {
  return typeid(exception) == typeid(Exception);
}

void KeepOther(KeptException& kept) {
  kept.kind = KeptException::Kind::kOther;
  new (kept.other.data()) std::exception_ptr(std::current_exception());
}

// Moves an object out of its storage, which is then empty.
template <typename Object>
Object TakeOut(void* storage) noexcept {
  auto* const stored = std::launder(static_cast<Object*>(storage));
  Object object(std::move(*stored));
  std::destroy_at(stored);
  return object;
}

}  // namespace

void RunAndKeep(void (*run)(void*), void* argument, KeptException& kept) noexcept {
  try {
    run(argument);
  } catch (const char* message) {
    kept.kind = KeptException::Kind::kMessage;
    kept.message = message;
  } catch (const std::bad_alloc& error) {
    if (IsExactly(error)) {
      kept.kind = KeptException::Kind::kBadAlloc;
    } else {
      KeepOther(kept);
    }
  } catch (const std::system_error& error) {
    if (IsExactly(error)) {
      kept.kind = KeptException::Kind::kSystemError;
      new (kept.system_error.data()) std::system_error(error);
    } else {
      KeepOther(kept);
    }
  } catch (...) {
    KeepOther(kept);
  }
}

std::system_error TakeSystemError(KeptException& kept) noexcept {
  return TakeOut<std::system_error>(kept.system_error.data());
}

// Nothing in the library throws an exception that gets here. It reaches hosts built with this
// compiler. It does not reach others, because this frame owns a reference to the exception.
void RethrowOther(KeptException& kept) {
  std::rethrow_exception(TakeOut<std::exception_ptr>(kept.other.data()));
}

}  // namespace borvan
