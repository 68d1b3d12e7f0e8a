// Jobs, cameras that are connected and disconnected, and workers that end.
#include <gtest/gtest.h>

#include "workbench_desk_support.h"

namespace borvanusb::tool_test {
namespace {

using std::chrono::milliseconds;
using Order = WorkerOrder::Kind;
using Report = WorkerReport::Kind;

TEST(WorkbenchDeskTest, CommandRunsInTheCamerasWorkerAndItsResultIsTheAnswer) {
  DeskRig rig;
  WorkerSide& worker = rig.PlugIn();
  EXPECT_EQ(worker.orders.at(0).kind, Order::kEnter);
  EXPECT_EQ(worker.orders.at(0).text, "folder");
  const auto answer = rig.Run(rig.Order({"reg", "read", "1"}));
  EXPECT_EQ(worker.orders.back().words, (Words{"--json", "--progress", "json", "--camera",
                                               DeskRig::kCamera, "reg", "read", "1"}));
  EXPECT_EQ(answer->status, 0);
  worker.Report(Report::kError,
                "borvanusb: a note\n{\"progress\":{\"stage\":\"read\",\"percent\":5}}\nrest");
  worker.End("{\"registers\":[]}\n");
  rig.Settle();
  EXPECT_EQ(answer->status, 200);
  EXPECT_EQ(answer->body, Json::parse(R"({"exit":0,"result":{"registers":[]},"error":null,
    "messages":["borvanusb: a note"],"line":"borvanusb reg read 1 --camera 0","job":"job-1"})"));
  EXPECT_EQ(rig.EventsOf("progress").at(0),
            Json::parse(R"({"job":"job-1","stage":"read","percent":5})"));
  EXPECT_EQ(rig.EventsOf("job").at(0)["state"], "started");
  EXPECT_EQ(rig.EventsOf("job").at(1)["state"], "ended");
  EXPECT_EQ(rig.EventsOf("job").at(1)["exit"], 0);
}

TEST(WorkbenchDeskTest, FailureOfACommandIsTheError) {
  DeskRig rig;
  WorkerSide& worker = rig.PlugIn();
  const auto answer = rig.Run(rig.Order({"reg", "read", "x"}));
  worker.End("{\"error\":{\"code\":1,\"kind\":\"usage\",\"message\":\"m\",\"hint\":\"h\"}}\n", 1);
  rig.Settle();
  EXPECT_EQ(answer->body["exit"], 1);
  EXPECT_TRUE(answer->body["result"].is_null());
  EXPECT_EQ(answer->body["error"]["message"], "m");
}

TEST(WorkbenchDeskTest, FilesOfTheRunHaveTheirPlainNamesInEveryAnswer) {
  DeskRig rig;
  WorkerSide& worker = rig.PlugIn();
  const auto failed = rig.Run(rig.Order({"flash", "program", "fw.bin"}));
  worker.Report(Report::kError, "borvanusb: folder\\fw.bin is odd\n");
  worker.End(R"({"error":{"code":9,"kind":"stopped","message":"stopped: folder\\fw.bin",)"
             R"("hint":"To go back: borvanusb flash program folder\\old.bin"}})"
             "\n",
             9);
  rig.Settle();
  EXPECT_EQ(failed->body["error"]["message"], "stopped: fw.bin");
  EXPECT_EQ(failed->body["error"]["hint"], "To go back: borvanusb flash program old.bin");
  EXPECT_EQ(failed->body["messages"], Json::parse(R"(["borvanusb: fw.bin is odd"])"));
  const auto done = rig.Run(rig.Order({"flash", "program", "fw.bin"}));
  worker.End(R"({"backup":"folder\\old.bin","image":{"file":"folder/fw.bin","size":3}})");
  rig.Settle();
  EXPECT_EQ(done->body["result"],
            Json::parse(R"({"backup":"old.bin","image":{"file":"fw.bin","size":3}})"));
}

TEST(WorkbenchDeskTest, ShortWorkIsWaitedForLongWorkIsNot) {
  DeskRig rig;
  WorkerSide& worker = rig.PlugIn();
  const auto first = rig.Run(rig.Order({"flash", "erase", "0+4K", "--yes"}, "first"));
  const auto second = rig.Run(rig.Order({"reg", "read", "1"}));
  rig.Pass(milliseconds(1000));
  EXPECT_EQ(second->status, 0);
  rig.Pass(milliseconds(1100));
  EXPECT_EQ(second->status, 409);
  EXPECT_EQ(second->body["job"]["id"], "first");
  const auto third = rig.Run(rig.Order({"reg", "read", "1"}));
  EXPECT_EQ(third->status, 409);
  worker.End("{}");
  rig.Settle();
  EXPECT_EQ(first->status, 200);
  EXPECT_EQ(worker.orders.size(), 2U);
}

TEST(WorkbenchDeskTest, WaitingWorkRunsWhenTheOtherHasEnded) {
  DeskRig rig;
  WorkerSide& worker = rig.PlugIn();
  rig.Run(rig.Order({"reg", "read", "1"}));
  const auto second = rig.Run(rig.Order({"reg", "read", "2"}));
  worker.End("{}");
  rig.Settle();
  EXPECT_EQ(worker.orders.back().words.back(), "2");
  worker.End("{}");
  rig.Settle();
  EXPECT_EQ(second->status, 200);
}

TEST(WorkbenchDeskTest, StopIsHandedOnAndASecondOneEndsTheProcessThatDoesNotObey) {
  DeskRig rig;
  WorkerSide& worker = rig.PlugIn();
  const auto answer = rig.Run(rig.Order({"flash", "read", "all", "a.bin"}, "long"));
  EXPECT_FALSE(rig.desk->StopJob("other"));
  EXPECT_FALSE(rig.desk->StopJob(""));
  EXPECT_TRUE(rig.desk->StopJob("long"));
  EXPECT_TRUE(worker.Runs(Order::kStop));
  rig.Pass(milliseconds(5000));
  EXPECT_FALSE(worker.killed);
  EXPECT_TRUE(rig.desk->StopJob("long"));
  rig.Pass(milliseconds(3100));
  rig.Settle();
  EXPECT_TRUE(worker.killed);
  EXPECT_EQ(answer->body["exit"], 9);
  EXPECT_EQ(answer->body["error"]["kind"], "stopped");
}

TEST(WorkbenchDeskTest, WorkerThatEndsInTheMiddleIsReplacedAndTheErrorSaysWhatIsUnsure) {
  DeskRig rig;
  WorkerSide& worker = rig.PlugIn();
  const auto answer = rig.Run(rig.Order({"reg", "write", "1", "2"}));
  worker.events.on_end(-1073741819);
  rig.Settle();
  EXPECT_EQ(answer->body["exit"], 10);
  EXPECT_NE(answer->body["error"]["hint"].get<std::string>().find("unsure"), std::string::npos);
  const std::size_t before = rig.workers.size();
  rig.Run(rig.Order({"reg", "read", "1"}));
  EXPECT_EQ(rig.workers.size(), before + 1);
  EXPECT_FALSE(worker.alive);
}

TEST(WorkbenchDeskTest, CallThatHungIsReportedAndTheWorkerReplaced) {
  DeskRig rig;
  WorkerSide& worker = rig.PlugIn();
  const auto answer = rig.Run(rig.Order({"reg", "read", "1"}));
  worker.Report(
      Report::kOut,
      "{\"error\":{\"code\":8,\"kind\":\"timeout\",\"message\":\"hangs\",\"hint\":\"\"}}\n");
  worker.events.on_end(8);
  rig.Settle();
  EXPECT_EQ(answer->body["exit"], 8);
  EXPECT_EQ(answer->body["error"]["message"], "hangs");
  EXPECT_FALSE(worker.alive);
}

TEST(WorkbenchDeskTest, ReportsOfAFormerWorkerCountForNothing) {
  DeskRig rig;
  WorkerSide& worker = rig.PlugIn();
  rig.Run(rig.Order({"reg", "read", "1"}));
  worker.events.on_end(1);
  rig.Settle();
  const auto answer = rig.Run(rig.Order({"reg", "read", "2"}));
  worker.events.on_report({Report::kEnd, 2, "", 0});
  worker.events.on_end(0);
  rig.Settle();
  EXPECT_EQ(answer->status, 0);
}

TEST(WorkbenchDeskTest, WorkerThatCannotStartIsAnError) {
  DeskRig rig;
  rig.List({});
  rig.start_failure = true;
  RunOrder order = rig.Order({"list"});
  order.camera.reset();
  const auto answer = rig.Run(order);
  EXPECT_EQ(answer->body["exit"], 10);
  EXPECT_EQ(answer->body["error"]["message"], "no process");
}

TEST(WorkbenchDeskTest, CameraThatIsNotThereIsLookedForOnceMore) {
  DeskRig rig;
  rig.List({});
  const auto missing = rig.Run(rig.Order({"reg", "read", "1"}));
  rig.Pass(milliseconds(1500));
  EXPECT_EQ(missing->body["exit"], 2);
  const auto present = rig.Run(rig.Order({"reg", "read", "1"}));
  rig.List({DeskRig::kCamera});
  EXPECT_EQ(rig.workers.back()->orders.back().words.back(), "1");
  EXPECT_EQ(present->status, 0);
}

TEST(WorkbenchDeskTest, CamerasAreLookedForWhilePagesListen) {
  DeskRig rig;
  rig.PlugIn();
  const std::size_t before = rig.workers.front()->orders.size();
  rig.Pass(milliseconds(2000));
  EXPECT_EQ(rig.workers.front()->orders.size(), before);
  rig.desk->SetPages({""});
  rig.Pass(milliseconds(500));
  EXPECT_EQ(rig.workers.front()->orders.size(), before + 1);
  rig.List({});
  const std::vector<Json> events = rig.EventsOf("cameras");
  EXPECT_EQ(events.front()["cameras"].size(), 1U);
  EXPECT_EQ(events.back()["cameras"].size(), 0U);
  EXPECT_FALSE(rig.workers.at(1)->alive);
}

TEST(WorkbenchDeskTest, ListThatFailsIsToldOnceAndTakesNoCameraAway) {
  DeskRig rig;
  rig.desk->SetPages({""});
  rig.PlugIn();
  for (int i = 0; i < 2; ++i) {
    rig.Pass(milliseconds(500));
    rig.workers.front()->End(R"({"error":{"code":8,"kind":"timeout","message":"hangs","hint":""}})",
                             8);
    rig.Settle();
  }
  EXPECT_EQ(rig.desk->CamerasJson().size(), 1U);
  EXPECT_EQ(rig.EventsOf("log").size(), 1U);
}

TEST(WorkbenchDeskTest, UnpluggedCameraKeepsItsWorkUntilItEnds) {
  DeskRig rig;
  rig.desk->SetPages({""});
  WorkerSide& worker = rig.PlugIn();
  const auto answer = rig.Run(rig.Order({"flash", "program", "a.bin"}));
  rig.Pass(milliseconds(500));
  rig.List({});
  EXPECT_TRUE(worker.alive);
  worker.End("{\"error\":{\"code\":7,\"kind\":\"device\",\"message\":\"gone\",\"hint\":\"\"}}", 7);
  rig.Settle();
  EXPECT_EQ(answer->body["exit"], 7);
  rig.Pass(milliseconds(500));
  rig.List({});
  EXPECT_FALSE(worker.alive);
}

TEST(WorkbenchDeskTest, WatchingSendsItsLines) {
  DeskRig rig;
  WorkerSide& worker = rig.PlugIn();
  rig.Run(rig.Order({"watch", "--reg", "1"}, "w"));
  worker.Report(Report::kOut, "{\"new\":1}\n{\"ne");
  worker.Report(Report::kOut, "w\":2}\n");
  rig.Settle();
  EXPECT_EQ(rig.EventsOf("output"),
            (std::vector<Json>{Json::parse(R"({"job":"w","line":{"new":1}})"),
                               Json::parse(R"({"job":"w","line":{"new":2}})")}));
}

TEST(WorkbenchDeskTest, AnswerIsKeptForAPageThatDoesNotWait) {
  DeskRig rig;
  WorkerSide& worker = rig.PlugIn();
  RunOrder order = rig.Order({"reg", "read", "1"}, "j");
  order.wait = false;
  EXPECT_EQ(rig.Run(order)->status, 202);
  EXPECT_TRUE(Json::parse(*rig.desk->JobText("j")).contains("running"));
  worker.End("{}");
  rig.Settle();
  EXPECT_EQ(Json::parse(*rig.desk->JobText("j"))["exit"], 0);
  EXPECT_FALSE(rig.desk->JobText("other"));
}

TEST(WorkbenchDeskTest, StateTellsCamerasAndWork) {
  DeskRig rig;
  rig.PlugIn();
  rig.Run(rig.Order({"reg", "read", "1"}, "j"));
  Json cameras;
  Json jobs;
  rig.desk->TellState([&](const Json& all, const Json& work) {
    cameras = all;
    jobs = work;
  });
  EXPECT_EQ(cameras.at(0)["job"], "j");
  EXPECT_TRUE(cameras.at(0)["profile"].is_null());
  EXPECT_EQ(jobs.at(0)["words"], (Words{"reg", "read", "1"}));
  EXPECT_EQ(rig.desk->Library(), "0.2.0");
}

// A page that saw the camera without a profile for a moment would forget what it compares with.
TEST(WorkbenchDeskTest, CameraThatReturnsHasItsProfileAtOnce) {
  DeskRig rig(true);
  rig.desk->SetPages({"page"});
  rig.List({DeskRig::kCamera});
  EXPECT_EQ(rig.workers.front()->orders.back().words,
            (Words{"--json", "--camera", DeskRig::kCamera, "profile", "show"}));
  EXPECT_TRUE(rig.EventsOf("cameras").back()["cameras"][0]["profile"].is_null());
  rig.workers.front()->End(R"({"file":"a.camera.json","name":"A"})");
  rig.Settle();
  EXPECT_EQ(rig.EventsOf("cameras").back()["cameras"][0]["profile"]["name"], "A");
  rig.workers.front()->End(R"({"system":{"library_version":"0.2.0"}})");
  rig.Pass(milliseconds(500));
  rig.List({});
  EXPECT_TRUE(rig.EventsOf("cameras").back()["cameras"].empty());
  rig.Pass(milliseconds(500));
  rig.List({DeskRig::kCamera});
  EXPECT_EQ(rig.EventsOf("cameras").back()["cameras"][0]["profile"]["name"], "A");
}

TEST(WorkbenchDeskTest, StopAllStopsWhatRunsAndWhatWaits) {
  DeskRig rig;
  WorkerSide& worker = rig.PlugIn();
  rig.Run(rig.Order({"flash", "erase", "0+4K"}));
  const auto waiting = rig.Run(rig.Order({"reg", "read", "1"}));
  rig.desk->StopAll();
  EXPECT_EQ(waiting->body["exit"], 9);
  EXPECT_TRUE(worker.Runs(Order::kStop));
  EXPECT_TRUE(rig.desk->HasWork());
  worker.End("{}", 9);
  rig.Settle();
  EXPECT_FALSE(rig.desk->HasWork());
}

}  // namespace
}  // namespace borvanusb::tool_test
