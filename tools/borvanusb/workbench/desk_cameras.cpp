// The desk's cameras: the list, and what is known about each camera.
#include <algorithm>
#include <utility>

#include "base/failure.h"
#include "base/time_text.h"
#include "workbench/desk.h"

namespace borvanusb {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kBetweenLooks{500};
constexpr milliseconds kFresh{1000};
constexpr milliseconds kLongestLook{30000};
// Starting the workers of all cameras at once would take the processors from the page that opens.
constexpr milliseconds kUntilPrepared{800};

bool HasCommand(const ToolDescription& tool, const std::vector<std::string>& words) {
  return std::ranges::any_of(
      tool.commands, [&](const CommandDescription& command) { return command.words == words; });
}

}  // namespace

void Desk::SetPages(std::vector<std::string> pages) {
  pages_ = std::move(pages);
  const auto lives = lives_;
  for (const auto& [camera, wishes] : lives) {
    lives_[camera] = WishesOfOpen(wishes, pages_);
    ApplyLive(camera);
  }
  ScheduleLook();
}

void Desk::ScheduleLook() {
  if (pages_.empty() || look_scheduled_ || looking_) {
    return;
  }
  look_scheduled_ = true;
  tools_.after(kBetweenLooks, [this, alive = std::weak_ptr(alive_)] {
    if (!alive.expired()) {
      look_scheduled_ = false;
      Look();
    }
  });
}

void Desk::Look() {
  if (looking_) {
    return;
  }
  looking_ = true;
  auto job = std::make_unique<WorkbenchJob>();
  job->internal = true;
  job->line = {"--json", "list"};
  job->on_busy = [](const Json&) {};
  job->on_end = [this](int code, const Json& answer) {
    looking_ = false;
    looked_ = tools_.clock();
    if (code == 0 && answer["result"].is_object()) {
      TakeCameras(answer["result"].value("cameras", Json::array()));
    }
    TellLookProblem(answer);
    for (const auto& tell : std::exchange(waiting_for_state_, {})) {
      tell();
    }
    AskForLibrary();
    ScheduleLook();
  };
  looker_->Submit(std::move(job));
  tools_.after(kLongestLook, [this, alive = std::weak_ptr(alive_), look = ++looks_] {
    // The process did not obey its own time limit, so it is killed. The next listing starts a new
    // one.
    if (!alive.expired() && looking_ && looks_ == look) {
      looker_->Stop("");
      looker_->Stop("");
    }
  });
}

// Reports that listing the cameras failed. The last known cameras remain.
void Desk::TellLookProblem(const Json& answer) {
  const std::string problem =
      answer["error"].is_object() ? answer["error"].value("message", std::string()) : "";
  if (problem != look_problem_ && !problem.empty()) {
    tools_.publish("log", {{"time", TimeText(tools_.now())},
                           {"camera", nullptr},
                           {"text", problem},
                           {"line", "borvanusb list"}});
  }
  look_problem_ = problem;
}

void Desk::AskForLibrary() {
  if (std::exchange(asked_for_library_, true)) {
    return;
  }
  auto job = std::make_unique<WorkbenchJob>();
  job->internal = true;
  job->line = {"--json", "doctor"};
  job->on_busy = [](const Json&) {};
  job->on_end = [this](int /*code*/, const Json& answer) {
    if (answer["result"].is_object()) {
      library_ = answer["result"].value("/system/library_version"_json_pointer, Json());
    }
  };
  looker_->Submit(std::move(job));
}

void Desk::TakeCameras(const Json& cameras) {
  std::vector<CameraEntry> entries;
  std::vector<std::string> arrived;
  for (const Json& camera : cameras) {
    const std::string path = camera.value("path", std::string());
    const auto known = FindCamera(path);
    if (known == cameras_.end()) {
      arrived.push_back(path);
    }
    // A camera that returns probably has the profile that it had; a page must not start over.
    entries.push_back({camera, known != cameras_.end() ? known->profile : profiles_[path]});
  }
  const bool changed =
      entries.size() != cameras_.size() ||
      !std::ranges::equal(entries, cameras_, {}, &CameraEntry::identity, &CameraEntry::identity);
  cameras_ = std::move(entries);
  EndUnusedLanes();
  for (const std::string& path : arrived) {
    PrepareSoon(path);
    if (lives_.contains(path)) {
      ApplyLive(path);
    }
    AskForProfile(path);
  }
  if (changed) {
    tools_.publish("cameras", {{"cameras", CamerasJson()}});
  }
}

void Desk::PrepareSoon(const std::string& camera) {
  tools_.after(kUntilPrepared, [this, camera, alive = std::weak_ptr(alive_)] {
    if (alive.expired() || !IsListed(camera)) {
      return;
    }
    try {
      LaneOf(camera)->Prepare();
    } catch (const Failure&) {
      // The first command will report why the worker can't be started.
    }
  });
}

void Desk::EndUnusedLanes() {
  for (auto entry = lanes_.begin(); entry != lanes_.end();) {
    const bool there = entry->first.empty() || IsListed(entry->first);
    if (!there && entry->second->IsIdle()) {
      entry = lanes_.erase(entry);
      continue;
    }
    if (!there) {
      entry->second->Renew();
    }
    ++entry;
  }
}

void Desk::AskForProfile(const std::string& camera) {
  if (!HasCommand(tools_.tool, {"profile", "show"})) {
    return;
  }
  auto job = std::make_unique<WorkbenchJob>();
  job->internal = true;
  job->camera = camera;
  AcceptedWords accepted;
  accepted.added = {"--json"};
  accepted.takes_camera = true;
  accepted.takes_profile = true;
  job->line = LineFor({"profile", "show"}, accepted, camera);
  job->on_busy = [](const Json&) {};
  job->on_end = [this, camera](int code, const Json& answer) {
    const Json& result = answer["result"];
    const auto entry = FindCamera(camera);
    if (code == 0 && result.is_object() && entry != cameras_.end()) {
      entry->profile = {{"file", result.value("file", Json())},
                        {"name", result.value("name", Json())}};
      profiles_[camera] = entry->profile;
      tools_.publish("cameras", {{"cameras", CamerasJson()}});
    }
  };
  // Any process can answer: the camera itself is not opened.
  looker_->Submit(std::move(job));
}

Desk::Json Desk::CamerasJson() const {
  Json cameras = Json::array();
  for (const CameraEntry& entry : cameras_) {
    Json camera = entry.identity;
    camera["profile"] = entry.profile;
    const auto lane = lanes_.find(camera.value("path", std::string()));
    const WorkbenchJob* const job = lane != lanes_.end() ? lane->second->Current() : nullptr;
    camera["job"] = job != nullptr && !job->internal ? Json(job->id) : Json();
    cameras.push_back(std::move(camera));
  }
  return cameras;
}

void Desk::TellState(std::function<void(const Json& cameras, const Json& jobs)> tell) {
  auto tell_now = [this, tell = std::move(tell)] {
    Json jobs = Json::array();
    for (const auto& [path, lane] : lanes_) {
      if (lane->Current() != nullptr && !lane->Current()->internal) {
        jobs.push_back(JobJson(*lane->Current()));
      }
    }
    tell(CamerasJson(), jobs);
  };
  if (looked_ && tools_.clock() - *looked_ < kFresh) {
    tell_now();
    return;
  }
  waiting_for_state_.emplace_back(std::move(tell_now));
  Look();
}

}  // namespace borvanusb
