// How supervising threads observe the working thread.
#include "dll/supervisor.h"

#include <gtest/gtest.h>

#include <thread>

#include "base/failure.h"

namespace borvanusb::tool_test {
namespace {

using std::chrono::milliseconds;

TEST(SupervisorTest, OnlyACallThatLastsIsOverdue) {
  Supervisor supervisor;
  supervisor.SetLimit(milliseconds(20));
  EXPECT_EQ(supervisor.Overdue(), std::nullopt);
  {
    const Supervisor::Call call(supervisor, "reading a register");
    EXPECT_EQ(supervisor.Overdue(milliseconds(10000)), std::nullopt);
    std::this_thread::sleep_for(milliseconds(30));
    EXPECT_EQ(supervisor.Overdue(), "reading a register");
  }
  EXPECT_EQ(supervisor.Overdue(), std::nullopt);
}

TEST(SupervisorTest, CallInsideACallLeavesTheOuterOneWatched) {
  Supervisor supervisor;
  const Supervisor::Call outer(supervisor, "reading a register");
  std::this_thread::sleep_for(milliseconds(30));
  {
    const Supervisor::Call inner(supervisor, "listing the cameras");
    EXPECT_EQ(supervisor.Overdue(milliseconds(0)), "listing the cameras");
  }
  EXPECT_EQ(supervisor.Overdue(milliseconds(0)), "reading a register");
  EXPECT_EQ(supervisor.Overdue(milliseconds(20)), std::nullopt) << "its time begins anew";
}

TEST(SupervisorTest, StopKeepsCallsFromBeginningUnlessHeld) {
  Supervisor supervisor;
  EXPECT_EQ(supervisor.RequestStop(), 1);
  EXPECT_EQ(supervisor.RequestStop(), 2);
  EXPECT_THROW(Supervisor::Call(supervisor, "anything"), Failure);
  {
    const Supervisor::Hold hold(supervisor);
    EXPECT_TRUE(supervisor.IsHeld());
    EXPECT_NO_THROW(Supervisor::Call(supervisor, "anything"));
  }
  EXPECT_FALSE(supervisor.IsHeld());
  EXPECT_THROW(supervisor.ObeyStop(), Failure);
}

TEST(SupervisorTest, LastWordsAreThoseSetLast) {
  Supervisor supervisor;
  EXPECT_TRUE(supervisor.LastWords().empty());
  supervisor.SetLastWords([] { return std::vector<std::string>{"one"}; });
  EXPECT_EQ(supervisor.LastWords(), std::vector<std::string>{"one"});
  supervisor.SetLastWords(nullptr);
  EXPECT_TRUE(supervisor.LastWords().empty());
}

TEST(SupervisorTest, CallsAreCountedByWhatTheyDo) {
  Supervisor supervisor;
  EXPECT_TRUE(supervisor.Calls().empty());
  { const Supervisor::Call call(supervisor, "listing the cameras"); }
  { const Supervisor::Call call(supervisor, "reading a register"); }
  { const Supervisor::Call call(supervisor, "listing the cameras"); }
  EXPECT_EQ(supervisor.Calls(), (std::vector<Supervisor::Count>{{"listing the cameras", 2},
                                                                {"reading a register", 1}}));
}

}  // namespace
}  // namespace borvanusb::tool_test
