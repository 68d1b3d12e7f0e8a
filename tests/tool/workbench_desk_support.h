#pragma once

#include <algorithm>
#include <chrono>
#include <deque>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "workbench/desk.h"

namespace borvanusb::tool_test {

using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;

// A worker as the test sees it: it records orders and can send reports.
struct WorkerSide {
  WorkerEvents events;
  std::vector<WorkerOrder> orders;
  bool alive = true;
  bool killed = false;

  void Report(WorkerReport::Kind kind, const std::string& text, int code = 0,
              std::size_t index = 0) {
    events.on_report({kind, orders.back().number, text, code, index});
  }
  // Ends the last run that was ordered.
  void End(const std::string& out, int code = 0) {
    const auto run = std::find_if(orders.rbegin(), orders.rend(), [](const WorkerOrder& order) {
      return order.kind != WorkerOrder::Kind::kStop;
    });
    events.on_report({WorkerReport::Kind::kOut, run->number, out, 0, 0});
    events.on_report({WorkerReport::Kind::kEnd, run->number, "", code, 0});
  }
  bool Runs(WorkerOrder::Kind kind) const { return orders.back().kind == kind; }
};

class FakeWorker : public Worker {
 public:
  explicit FakeWorker(std::shared_ptr<WorkerSide> side) : side_(std::move(side)) {}
  ~FakeWorker() override { side_->alive = false; }
  void Send(const WorkerOrder& order) override { side_->orders.push_back(order); }
  void Kill() override {
    side_->killed = true;
    side_->events.on_end(1);
  }

 private:
  std::shared_ptr<WorkerSide> side_;
};

// A desk whose clock only advances on request.
class DeskRig {
 public:
  static constexpr const char* kCamera = R"(\\?\usb#1)";

  // Without profiles, no worker is asked for them.
  explicit DeskRig(bool with_profiles = false) {
    DeskTools tools;
    tools.post = [this](std::function<void()> work) { posted_.push_back(std::move(work)); };
    tools.after = [this](std::chrono::milliseconds time, std::function<void()> work) {
      timers_.emplace_back(time_ + time, std::move(work));
    };
    tools.clock = [this] { return time_; };
    tools.now = [] { return std::chrono::system_clock::time_point(); };
    tools.start_worker = [this](WorkerEvents hooks) {
      if (start_failure) {
        throw Failure(ExitCode::kInternal, "no process");
      }
      workers.push_back(std::make_shared<WorkerSide>());
      workers.back()->events = std::move(hooks);
      return std::make_unique<FakeWorker>(workers.back());
    };
    tools.publish = [this](std::string_view name, const Json& data) {
      events.emplace_back(name, data);
    };
    tools.folder = "folder";
    tools.tool = DescribeTool();
    std::erase_if(tools.tool.commands, [&](const CommandDescription& command) {
      return !with_profiles && command.words == Words{"profile", "show"};
    });
    desk = std::make_unique<Desk>(std::move(tools));
  }

  // Runs everything that is due.
  void Settle() {
    while (!posted_.empty()) {
      const auto work = std::move(posted_.front());
      posted_.pop_front();
      work();
    }
  }
  void Pass(std::chrono::milliseconds time) {
    time_ += time;
    Settle();
    for (std::size_t i = 0; i < timers_.size(); ++i) {
      if (timers_[i].second && timers_[i].first <= time_) {
        std::exchange(timers_[i].second, nullptr)();
        Settle();
      }
    }
  }

  // The first worker lists the cameras.
  void List(const Words& paths) {
    Settle();
    Json cameras = Json::array();
    for (const std::string& path : paths) {
      cameras.push_back({{"index", cameras.size()},
                         {"path", path},
                         {"name", "n"},
                         {"vid", "1234"},
                         {"pid", "0001"}});
    }
    workers.front()->End(Json({{"cameras", cameras}}).dump() + "\n");
    Settle();
    // Answers the query for the library's version, which is made once.
    if (workers.front()->orders.back().words == Words{"--json", "doctor"}) {
      workers.front()->End(R"({"system":{"library_version":"0.2.0"}})");
      Settle();
    }
  }

  // Connects one camera and returns its worker, which starts a moment later.
  WorkerSide& PlugIn() {
    List({kCamera});
    Pass(std::chrono::milliseconds(800));
    return *workers.back();
  }

  RunOrder Order(const Words& words, const std::string& job = "") {
    RunOrder order;
    order.words = words;
    order.camera = kCamera;
    order.job = job;
    order.accepted = AcceptWords(tool_, words, {});
    return order;
  }
  // Sets what a page reads live; no registers: nothing.
  Json ReadLive(const std::string& page, const Words& registers, double rate) {
    LiveOrder order{kCamera, page, {}};
    if (!registers.empty()) {
      order.wishes.push_back({{"reg", "read"}, rate});
      std::copy(registers.begin(), registers.end(), std::back_inserter(order.wishes[0].words));
    }
    return desk->SetLive(order);
  }
  // Receives the answer; status is 0 until then.
  struct Answer {
    int status = 0;
    Json body;
  };
  std::shared_ptr<Answer> Run(const RunOrder& order) {
    auto answer = std::make_shared<Answer>();
    desk->Run(order, [answer](int status, const Json& body) {
      answer->status = status;
      answer->body = body;
    });
    Settle();
    return answer;
  }
  std::vector<Json> EventsOf(const std::string& name) const {
    std::vector<Json> found;
    for (const auto& [event, data] : events) {
      if (event == name) {
        found.push_back(data);
      }
    }
    return found;
  }

  bool start_failure = false;
  std::vector<std::shared_ptr<WorkerSide>> workers;
  std::vector<std::pair<std::string, Json>> events;
  std::unique_ptr<Desk> desk;

 private:
  ToolDescription tool_ = DescribeTool();
  std::chrono::steady_clock::time_point time_;
  std::deque<std::function<void()>> posted_;
  std::deque<std::pair<std::chrono::steady_clock::time_point, std::function<void()>>> timers_;
};

}  // namespace borvanusb::tool_test
