// Live reading on the desk: between other work, for several pages, and after failures.
#include <gtest/gtest.h>

#include "workbench_desk_support.h"

namespace borvanusb::tool_test {
namespace {

using std::chrono::milliseconds;
using Order = WorkerOrder::Kind;
using Report = WorkerReport::Kind;

TEST(WorkbenchDeskLiveTest, LiveReadingFillsTheTimeBetweenWork) {
  DeskRig rig;
  rig.desk->SetPages({""});
  WorkerSide& worker = rig.PlugIn();
  EXPECT_EQ(rig.ReadLive("", {"0x100"}, 20)["live"], "live-1");
  ASSERT_TRUE(worker.Runs(Order::kRepeat));
  ASSERT_EQ(worker.orders.back().repeated.size(), 1U);
  EXPECT_EQ(worker.orders.back().repeated[0].rate, 20);
  EXPECT_EQ(worker.orders.back().repeated[0].words,
            (Words{"--json", "--progress", "none", "--camera", DeskRig::kCamera, "reg", "read",
                   "0x100"}));
  worker.Report(Report::kOut, R"({"registers":[{"address":256,"value":7}]})");
  worker.Report(Report::kRound, "");
  rig.Settle();
  EXPECT_EQ(
      rig.EventsOf("values").at(0),
      Json::parse(
          R"({"camera":"\\\\?\\usb#1","pages":[""],"words":["reg","read","0x100"],"time":0.0,"registers":[{"address":256,"value":7}]})"));
  rig.Run(rig.Order({"reg", "write", "1", "2"}));
  EXPECT_TRUE(worker.Runs(Order::kStop));
  worker.End("", 0);
  rig.Settle();
  EXPECT_EQ(worker.orders.back().words.back(), "2");
  worker.End("{}");
  rig.Settle();
  EXPECT_TRUE(worker.Runs(Order::kRepeat));
}

TEST(WorkbenchDeskLiveTest, LiveReadingEndsWithTheLastPageAndWithoutWords) {
  DeskRig rig;
  rig.desk->SetPages({""});
  WorkerSide& worker = rig.PlugIn();
  rig.ReadLive("", {"1"}, 10);
  rig.desk->SetPages({});
  EXPECT_TRUE(worker.Runs(Order::kStop));
  worker.End("", 0);
  rig.Settle();
  EXPECT_TRUE(worker.Runs(Order::kStop));
  EXPECT_TRUE(rig.ReadLive("", {"1"}, 10)["live"].is_null());
}

TEST(WorkbenchDeskLiveTest, LiveReadingThatFailsIsToldOnceAndTriedAgain) {
  DeskRig rig;
  rig.desk->SetPages({""});
  WorkerSide& worker = rig.PlugIn();
  rig.ReadLive("", {"1"}, 10);
  const auto fail = [&] {
    worker.Report(Report::kOut, R"({"error":{"code":7,"kind":"device","message":"m","hint":""}})");
    worker.Report(Report::kRound, "", 7);
    worker.Report(Report::kEnd, "", 7);
    rig.Settle();
  };
  fail();
  const std::size_t before = worker.orders.size();
  rig.Pass(milliseconds(2000));
  EXPECT_EQ(worker.orders.size(), before + 1);
  fail();
  EXPECT_EQ(rig.EventsOf("log").size(), 1U);
  EXPECT_EQ(rig.EventsOf("log").front()["text"], "m");
}

TEST(WorkbenchDeskLiveTest, LiveReadingComesBackWithTheCamera) {
  DeskRig rig;
  rig.desk->SetPages({""});
  rig.PlugIn();
  rig.ReadLive("", {"1"}, 10);
  rig.Pass(milliseconds(500));
  rig.List({});
  rig.workers.at(1)->End("", 2);
  rig.Settle();
  rig.Pass(milliseconds(500));
  rig.List({});
  rig.Pass(milliseconds(500));
  rig.List({DeskRig::kCamera});
  EXPECT_TRUE(rig.workers.back()->Runs(Order::kRepeat));
}

TEST(WorkbenchDeskLiveTest, TwoPagesReadTheSameCameraAndOneLeaves) {
  DeskRig rig;
  rig.desk->SetPages({"a", "b"});
  WorkerSide& worker = rig.PlugIn();
  rig.ReadLive("a", {"0x100"}, 20);
  rig.ReadLive("b", {"0x200"}, 5);
  EXPECT_TRUE(worker.Runs(Order::kStop));
  worker.End("", 0);
  rig.Settle();
  ASSERT_TRUE(worker.Runs(Order::kRepeat));
  ASSERT_EQ(worker.orders.back().repeated.size(), 2U);
  EXPECT_EQ(worker.orders.back().repeated[0].words.back(), "0x100");
  EXPECT_EQ(worker.orders.back().repeated[0].rate, 20);
  EXPECT_EQ(worker.orders.back().repeated[1].words.back(), "0x200");
  EXPECT_EQ(worker.orders.back().repeated[1].rate, 5);
  worker.Report(Report::kOut, R"({"registers":[{"address":512,"value":7}]})");
  worker.Report(Report::kRound, "", 0, 1);
  rig.Settle();
  EXPECT_EQ(rig.EventsOf("values").back()["pages"], Json::parse(R"(["b"])"));
  EXPECT_EQ(rig.EventsOf("values").back()["words"], Json::parse(R"(["reg","read","0x200"])"));
  rig.desk->SetPages({"b"});
  EXPECT_TRUE(worker.Runs(Order::kStop));
  worker.End("", 0);
  rig.Settle();
  ASSERT_TRUE(worker.Runs(Order::kRepeat));
  ASSERT_EQ(worker.orders.back().repeated.size(), 1U);
  EXPECT_EQ(worker.orders.back().repeated[0].words.back(), "0x200");
  // A page that reads nothing leaves the others alone.
  const std::size_t before = worker.orders.size();
  rig.desk->SetPages({"b", "c"});
  rig.ReadLive("c", {}, 1);
  EXPECT_EQ(worker.orders.size(), before);
}

TEST(WorkbenchDeskLiveTest, WrongWordsOfOnePageAreToldToItAndEndNoOtherReading) {
  DeskRig rig;
  rig.desk->SetPages({"a", "b"});
  WorkerSide& worker = rig.PlugIn();
  rig.ReadLive("a", {"0x100"}, 20);
  rig.ReadLive("b", {"NONE"}, 5);
  worker.End("", 0);
  rig.Settle();
  worker.Report(Report::kOut, R"({"error":{"code":1,"kind":"usage","message":"m","hint":""}})");
  worker.Report(Report::kRound, "", 1, 1);
  worker.Report(Report::kOut, R"({"registers":[]})");
  worker.Report(Report::kRound, "", 0, 0);
  rig.Settle();
  EXPECT_EQ(rig.EventsOf("values").size(), 1U);
  ASSERT_EQ(rig.EventsOf("log").size(), 1U);
  EXPECT_EQ(rig.EventsOf("log")[0],
            Json::parse(R"({"time":"1970-01-01T00:00:00Z","camera":"\\\\?\\usb#1","pages":["b"],
    "ended":true,"text":"m","line":"borvanusb reg read NONE --camera 0"})"));
  // The wrong words are not tried again when the other page's change.
  rig.ReadLive("a", {"0x104"}, 20);
  worker.End("", 0);
  rig.Settle();
  ASSERT_EQ(worker.orders.back().repeated.size(), 1U);
  EXPECT_EQ(worker.orders.back().repeated[0].words.back(), "0x104");
}

TEST(WorkbenchDeskLiveTest, PageWithoutAnEventStreamReadsNothing) {
  DeskRig rig;
  rig.desk->SetPages({"a"});
  rig.PlugIn();
  EXPECT_TRUE(rig.ReadLive("b", {"0x100"}, 20)["live"].is_null());
  EXPECT_FALSE(rig.ReadLive("a", {"0x100"}, 20)["live"].is_null());
  EXPECT_TRUE(rig.ReadLive("a", {}, 20)["live"].is_null());
}

// Memory does not grow over 20,000 readings.
TEST(WorkbenchDeskLiveTest, LongLiveReadingKeepsNothing) {
  DeskRig rig;
  rig.desk->SetPages({""});
  WorkerSide& worker = rig.PlugIn();
  rig.ReadLive("", {"1"}, 100);
  for (int i = 0; i < 20000; ++i) {
    worker.Report(Report::kOut, R"({"registers":[{"address":1,"value":2}]})");
    worker.Report(Report::kRound, "");
    rig.Settle();
  }
  EXPECT_EQ(rig.EventsOf("values").size(), 20000U);
  EXPECT_EQ(rig.EventsOf("values").back()["registers"].size(), 1U);
}

}  // namespace
}  // namespace borvanusb::tool_test
