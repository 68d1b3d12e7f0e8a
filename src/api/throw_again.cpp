// A separate file, so that no function that owns something is inlined into the one that throws.

#include <new>

#include "api/guarded_call.h"

namespace borvan {

void ThrowAgain(KeptException& kept) {
  switch (kept.kind) {
    case KeptException::Kind::kMessage:
      // NOLINTNEXTLINE(misc-throw-by-value-catch-by-reference): hosts catch a const char*
      throw kept.message;
    case KeptException::Kind::kBadAlloc:
      throw std::bad_alloc();
    case KeptException::Kind::kSystemError:
      // Created in the exception's own storage: no copy in this frame has to be destroyed.
      throw TakeSystemError(kept);
    default:
      RethrowOther(kept);
  }
}

}  // namespace borvan
