// Exceptions leave the exports as what they were thrown as, after all that the call owned is gone.

#include "api/guarded_call.h"

#include <gtest/gtest.h>

#include <ios>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>

namespace borvan {
namespace {

// What went out of a guarded call, as exactly this type.
template <typename Exception, typename Body>
Exception Thrown(Body body) {
  try {
    Guarded(body);
  } catch (const Exception& exception) {
    EXPECT_EQ(typeid(exception), typeid(Exception));
    return exception;
  }
  throw std::logic_error("nothing was thrown");
}

TEST(GuardedCall, ReturnsWhatItsBodyReturns) {
  const int number = 41;
  EXPECT_EQ(Guarded([=] { return number + 1; }), 42);
  EXPECT_FALSE(Guarded([] { return false; }));
}

TEST(GuardedCall, ThrowsAMessage) {
  EXPECT_STREQ(Thrown<const char*>([]() -> bool { throw "ERROR: a message"; }), "ERROR: a message");
}

TEST(GuardedCall, ThrowsBadAlloc) {
  const std::string expected = std::bad_alloc().what();
  EXPECT_EQ(Thrown<std::bad_alloc>([]() -> bool { throw std::bad_alloc(); }).what(), expected);
}

TEST(GuardedCall, ThrowsASystemErrorWithItsCodeAndText) {
  const auto error = Thrown<std::system_error>([]() -> bool {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again),
                            "no thread");
  });
  EXPECT_EQ(error.code(), std::errc::resource_unavailable_try_again);
  EXPECT_STREQ(error.what(), "no thread: Resource temporarily unavailable");
}

TEST(GuardedCall, KeepsTheTypesThatDeriveFromThose) {
  Thrown<std::bad_array_new_length>([]() -> bool { throw std::bad_array_new_length(); });
  const auto failure =
      Thrown<std::ios_base::failure>([]() -> bool { throw std::ios_base::failure("a stream"); });
  EXPECT_NE(std::string(failure.what()).find("a stream"), std::string::npos);
}

TEST(GuardedCall, ThrowsWhateverElseIsThrown) {
  EXPECT_STREQ(Thrown<std::length_error>([]() -> bool { throw std::length_error("long"); }).what(),
               "long");
  EXPECT_EQ(Thrown<int>([]() -> bool { throw 7; }), 7);
}

// Counts those that exist, the exception objects among them.
struct Counted {
  static inline int existing = 0;
  Counted() { ++existing; }
  Counted(const Counted&) { ++existing; }
  ~Counted() { --existing; }
};

TEST(GuardedCall, FreesWhatWasThrown) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_THROW(Guarded([]() -> bool { throw Counted(); }), Counted);
    EXPECT_EQ(Counted::existing, 0);
  }
}

TEST(GuardedCall, DestroysWhatItsBodyOwns) {
  EXPECT_THROW(Guarded([]() -> bool {
                 const Counted owned;
                 throw std::bad_alloc();
               }),
               std::bad_alloc);
  EXPECT_EQ(Counted::existing, 0);
}

}  // namespace
}  // namespace borvan
