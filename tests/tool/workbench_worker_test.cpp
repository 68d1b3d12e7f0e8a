// The main loop of a worker: orders, reports, stops, and a camera that stays open.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "support/command_desk.h"
#include "workbench/open_camera_host.h"
#include "workbench/worker_loop.h"

namespace borvanusb::tool_test {
namespace {

using Order = WorkerOrder::Kind;
using Report = WorkerReport::Kind;

TEST(WorkbenchWorkerTest, OrdersAndReportsSurviveTheirLines) {
  const WorkerOrder order{Order::kRepeat,
                          7,
                          {"reg", "read", "a\nb\"\xC3\xBC"},
                          {{{"reg", "read", "1"}, 12.5}},
                          "C:\\a"};
  const auto same = ReadOrder(LineOf(order));
  ASSERT_TRUE(same);
  EXPECT_EQ(same->kind, Order::kRepeat);
  EXPECT_EQ(same->number, 7U);
  EXPECT_EQ(same->words, order.words);
  ASSERT_EQ(same->repeated.size(), 1U);
  EXPECT_EQ(same->repeated[0].words, (std::vector<std::string>{"reg", "read", "1"}));
  EXPECT_EQ(same->repeated[0].rate, 12.5);
  EXPECT_EQ(same->text, "C:\\a");
  const auto report = ReadReport(LineOf(WorkerReport{Report::kError, 9, "x\n", -3, 2}));
  ASSERT_TRUE(report);
  EXPECT_EQ(report->kind, Report::kError);
  EXPECT_EQ(report->text, "x\n");
  EXPECT_EQ(report->code, -3);
  EXPECT_EQ(report->index, 2U);
}

TEST(WorkbenchWorkerTest, OtherLinesAreNone) {
  for (const char* const line :
       {"", "x", "{}", "[]", R"({"order":"other","number":1,"words":[],"repeated":[],"text":""})",
        R"({"order":5})"}) {
    EXPECT_FALSE(ReadOrder(line)) << line;
    EXPECT_FALSE(ReadReport(line)) << line;
  }
}

// A worker on a camera in memory.
struct WorkerRig {
  FakeHost host;
  std::vector<WorkerReport> reports;
  std::string folder;
  int forgotten = 0;
  std::function<void(const WorkerReport&)> on_report;
  WorkerLoop loop{
      host,
      {[this](const WorkerReport& report) {
         reports.push_back(report);
         if (on_report) {
           on_report(report);
         }
       },
       [this] {
         ++forgotten;
         host.stop_requested = false;
       },
       [this] { host.stop_requested = true; }, [this](const std::string& name) { folder = name; }}};

  // Runs these orders until they have ended.
  void Run(const std::vector<WorkerOrder>& orders) {
    const std::uint64_t last = orders.back().number;
    on_report = [this, last](const WorkerReport& report) {
      if (report.kind == Report::kEnd && report.number == last) {
        std::thread([this] { loop.Close(); }).join();
      }
    };
    for (const WorkerOrder& order : orders) {
      loop.Take(order);
    }
    EXPECT_EQ(loop.Run(), 0);
  }
};

TEST(WorkbenchWorkerTest, RunsOneAfterTheOtherAndTellsEachEnd) {
  WorkerRig rig;
  rig.host.Chip().registers[0x100] = 0x11;
  rig.Run({{Order::kEnter, 0, {}, {}, "here"},
           {Order::kRun, 1, {"--json", "reg", "read", "0x100"}, {}, ""},
           {Order::kRun, 2, {"--json", "reg", "read", "nonsense"}, {}, ""}});
  EXPECT_EQ(rig.folder, "here");
  ASSERT_EQ(rig.reports.size(), 5U);
  EXPECT_EQ(rig.reports[0].kind, Report::kOut);
  EXPECT_NE(rig.reports[0].text.find("\"value\":17"), std::string::npos);
  EXPECT_EQ(rig.reports[1].kind, Report::kEnd);
  EXPECT_EQ(rig.reports[1].code, 0);
  EXPECT_EQ(rig.reports[4].code, 1);
  EXPECT_EQ(rig.forgotten, 3);
}

TEST(WorkbenchWorkerTest, StopIsForTheRunThatItNames) {
  WorkerRig rig;
  int rounds = 0;
  rig.on_report = [&](const WorkerReport& report) {
    if (report.kind == Report::kRound && ++rounds == 3) {
      rig.loop.Take({Order::kStop, 4, {}, {}, ""});
      EXPECT_FALSE(rig.host.stop_requested);
      rig.loop.Take({Order::kStop, 5, {}, {}, ""});
    }
    if (report.kind == Report::kEnd) {
      rig.loop.Close();
    }
  };
  rig.loop.Take({Order::kRepeat, 5, {}, {{{"--json", "reg", "read", "0x100"}, 100}}, ""});
  rig.loop.Run();
  EXPECT_EQ(rounds, 3);
}

// The worker gets all three while its process starts. Without the stop it would read for ever.
TEST(WorkbenchWorkerTest, StopThatComesBeforeItsOrderBeginsCounts) {
  WorkerRig rig;
  rig.Run({{Order::kEnter, 0, {}, {}, "here"},
           {Order::kRepeat, 1, {}, {{{"--json", "reg", "read", "0x100"}, 100}}, ""},
           {Order::kStop, 1, {}, {}, ""}});
  EXPECT_EQ(rig.reports.back().kind, Report::kEnd);
  EXPECT_EQ(rig.reports.back().number, 1U);
}

TEST(WorkbenchWorkerTest, RepeatedReadingOpensTheCameraOnce) {
  WorkerRig rig;
  int openings = 0;
  rig.host.before_open = [&](const CameraIdentity&) { ++openings; };
  std::uint64_t rounds = 0;
  rig.on_report = [&](const WorkerReport& report) {
    if (report.kind == Report::kRound && ++rounds == 50) {
      rig.loop.Take({Order::kStop, 1, {}, {}, ""});
    }
    if (report.kind == Report::kEnd) {
      rig.loop.Close();
    }
  };
  rig.loop.Take({Order::kRepeat, 1, {}, {{{"--json", "reg", "read", "0x100-0x103"}, 100}}, ""});
  rig.loop.Run();
  EXPECT_EQ(openings, 1);
  // The transfers for reading four registers only.
  FakeHost once;
  const auto camera = once.OpenCamera(once.ListCameras().front());
  const std::uint64_t opened = once.Chip().transfers;
  for (std::uint32_t address = 0x100; address < 0x104; ++address) {
    camera->ReadRegister(address, RegisterWidth::kByte);
  }
  const std::uint64_t each = once.Chip().transfers - opened;
  EXPECT_EQ(rig.host.Chip().transfers, opened + rounds * each);
}

TEST(WorkbenchWorkerTest, RepeatingEndsWithAFailure) {
  WorkerRig rig;
  rig.Run({{Order::kRepeat, 1, {}, {{{"--json", "reg", "read", "nonsense"}, 100}}, ""}});
  EXPECT_EQ(rig.reports.back().code, 1);
  EXPECT_EQ(std::count_if(rig.reports.begin(), rig.reports.end(),
                          [](const WorkerReport& report) { return report.kind == Report::kRound; }),
            1);
}

// One of several readings can't be right: it ends, and the others continue.
TEST(WorkbenchWorkerTest, RepeatingContinuesWithoutTheCommandLineThatIsWrong) {
  WorkerRig rig;
  std::vector<std::size_t> wrong;
  std::size_t right = 0;
  rig.on_report = [&](const WorkerReport& report) {
    if (report.kind == Report::kRound && report.code != 0) {
      wrong.push_back(report.index);
    }
    if (report.kind == Report::kRound && report.code == 0) {
      EXPECT_NE(report.index, 1U);
      if (++right == 20) {
        rig.loop.Take({Order::kStop, 1, {}, {}, ""});
      }
    }
    if (report.kind == Report::kEnd) {
      rig.loop.Close();
    }
  };
  rig.loop.Take({Order::kRepeat,
                 1,
                 {},
                 {{{"--json", "reg", "read", "0x100"}, 100},
                  {{"--json", "reg", "read", "nonsense"}, 100},
                  {{"--json", "reg", "read", "0x104-0x107", "--wide"}, 100}},
                 ""});
  rig.loop.Run();
  EXPECT_EQ(right, 20U);
  EXPECT_EQ(wrong, (std::vector<std::size_t>{1}));
}

// Of three readings one is refused by the camera; it is tried again every two seconds.
TEST(WorkbenchWorkerTest, ReadingThatFailsDoesNotSlowTheOthers) {
  WorkerRig rig;
  std::size_t failed = 0;
  std::size_t read = 0;
  rig.on_report = [&](const WorkerReport& report) {
    if (report.kind == Report::kRound) {
      (report.code == 0 ? read : failed) += 1;
      if (read == 100) {
        rig.loop.Take({Order::kStop, 1, {}, {}, ""});
      }
    }
    if (report.kind == Report::kEnd) {
      rig.loop.Close();
    }
  };
  rig.loop.Take({Order::kRepeat,
                 1,
                 {},
                 {{{"--json", "reg", "read", "0x100"}, 20},
                  {{"--json", "reg", "read", "0x100", "--camera", "7"}, 20}},
                 ""});
  rig.loop.Run();
  EXPECT_EQ(read, 100U);
  EXPECT_GE(failed, 2U);
  EXPECT_LE(failed, 4U);
}

}  // namespace
}  // namespace borvanusb::tool_test
