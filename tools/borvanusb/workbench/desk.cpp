#include "workbench/desk.h"

#include <algorithm>

#include "base/failure.h"
#include "base/format.h"
#include "base/time_text.h"

namespace borvanusb {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kBetweenLooks{500};
constexpr milliseconds kFresh{1000};
constexpr milliseconds kLongestLook{30000};
constexpr std::size_t kKeptAnswers = 64;
constexpr std::size_t kMostKeptBytes = 1U << 20U;
constexpr int kOk = 200, kAccepted = 202, kBadRequest = 400, kConflict = 409;

bool HasCommand(const ToolDescription& tool, const std::vector<std::string>& words) {
  return std::ranges::any_of(
      tool.commands, [&](const CommandDescription& command) { return command.words == words; });
}

}  // namespace

Desk::Desk(DeskTools tools) : tools_(std::move(tools)) {
  looker_ = std::make_shared<Lane>("", tools_);
  Look();
}

Desk::~Desk() = default;

// ---- Jobs ----

std::vector<std::string> Desk::LineFor(const std::vector<std::string>& words,
                                       const AcceptedWords& accepted,
                                       const std::string& camera) const {
  std::vector<std::string> line = accepted.added;
  if (accepted.takes_camera && !camera.empty()) {
    line.insert(line.end(), {"--camera", camera});
  }
  if (accepted.takes_profile) {
    line.insert(line.end(), tools_.profile_words.begin(), tools_.profile_words.end());
  }
  line.insert(line.end(), words.begin(), words.end());
  return line;
}

std::unique_ptr<WorkbenchJob> Desk::MakeJob(const RunOrder& order) {
  auto job = std::make_unique<WorkbenchJob>();
  job->id = order.job.empty() ? Format("job-{}", next_id_++) : order.job;
  job->camera = order.accepted.takes_camera ? order.camera.value_or("") : "";
  job->words = order.words;
  job->accepted = order.accepted;
  job->line = LineFor(order.words, order.accepted, job->camera);
  std::vector<std::string> shown = order.words;
  const auto found = FindCamera(job->camera);
  if (!job->camera.empty()) {
    const std::string which =
        found != cameras_.end() ? std::to_string(found->identity.value("index", 0)) : job->camera;
    shown.insert(std::ranges::find(shown, "--"), {"--camera", which});
  }
  job->shown = CommandLineText(shown);
  return job;
}

std::vector<Desk::CameraEntry>::iterator Desk::FindCamera(const std::string& camera) {
  return std::ranges::find_if(cameras_, [&](const CameraEntry& entry) {
    return entry.identity.value("path", std::string()) == camera;
  });
}

bool Desk::IsListed(const std::string& camera) {
  return FindCamera(camera) != cameras_.end();
}

void Desk::Run(const RunOrder& order, Respond respond) {
  if (!order.camera || order.camera->empty() || IsListed(*order.camera)) {
    RunNow(order, respond);
    return;
  }
  // It may have been plugged in right now.
  TellState([this, order, respond](const Json& /*cameras*/, const Json& /*jobs*/) {
    if (IsListed(*order.camera)) {
      RunNow(order, respond);
      return;
    }
    const auto job = MakeJob(order);
    respond(kOk,
            AnswerOf(*job, Failure(ExitCode::kNoCamera, "the camera is not there: " + *order.camera,
                                   "Plug it in, or choose another one.")));
  });
}

void Desk::RunNow(const RunOrder& order, const Respond& respond) {
  if (!order.job.empty() && FindJob(order.job) != nullptr) {
    respond(kBadRequest, {{"error", "refused"},
                          {"message", Format("job: {} is at work already", order.job)},
                          {"hint", "Give each run a name of its own."}});
    return;
  }
  auto job = MakeJob(order);
  const std::string id = job->id;
  const bool wait = order.wait;
  job->on_end = [this, id, wait, respond](int /*code*/, const Json& answer) {
    Keep(id, answer);
    if (wait) {
      respond(kOk, answer);
    }
  };
  job->on_busy = [this, id, wait, respond](const Json& busy) {
    const Json body = {{"error", "busy"},
                       {"message", "the camera is at work: " + busy.value("line", std::string())},
                       {"hint", "Wait until it has ended, or stop it."},
                       {"job", busy}};
    if (wait) {
      respond(kConflict, body);
    } else {
      Keep(id, body);
    }
  };
  if (!wait) {
    respond(kAccepted, {{"job", id}, {"line", job->shown}});
  }
  LaneOf(job->camera)->Submit(std::move(job));
}

std::shared_ptr<Lane> Desk::LaneOf(const std::string& camera) {
  auto& lane = lanes_[camera];
  if (!lane) {
    lane = std::make_shared<Lane>(camera, tools_);
  }
  return lane;
}

const WorkbenchJob* Desk::FindJob(const std::string& job) const {
  for (const auto& [path, lane] : lanes_) {
    if (lane->Current() != nullptr && lane->Current()->id == job) {
      return lane->Current();
    }
  }
  return nullptr;
}

void Desk::Keep(const std::string& job, const Json& answer) {
  std::string text = answer.dump(-1, ' ', false, Json::error_handler_t::replace);
  if (text.size() <= kMostKeptBytes) {
    answers_.emplace_back(job, std::move(text));
  }
  if (answers_.size() > kKeptAnswers) {
    answers_.pop_front();
  }
}

std::optional<std::string> Desk::JobText(const std::string& job) const {
  if (const WorkbenchJob* const running = FindJob(job)) {
    return Json({{"running", JobJson(*running)}}).dump();
  }
  const auto found = std::find_if(answers_.rbegin(), answers_.rend(),
                                  [&](const auto& answer) { return answer.first == job; });
  return found != answers_.rend() ? std::optional(found->second) : std::nullopt;
}

bool Desk::StopJob(const std::string& job) {
  const auto lanes = lanes_;
  return !job.empty() &&
         std::ranges::any_of(lanes, [&](const auto& entry) { return entry.second->Stop(job); });
}

bool Desk::HasWork() const {
  return std::ranges::any_of(lanes_, [](const auto& entry) { return !entry.second->IsIdle(); });
}

void Desk::StopAll() {
  const auto lanes = lanes_;
  for (const auto& [path, lane] : lanes) {
    lane->StopAll();
  }
}

Desk::Json Desk::SetLive(const LiveOrder& order) {
  LiveSet live;
  live.id = Format("live-{}", next_id_++);
  live.rate = order.rate;
  if (!order.words.empty() && pages_ > 0) {
    AcceptedWords accepted;
    accepted.added = {"--json", "--progress", "none"};
    accepted.takes_camera = true;
    accepted.takes_profile = true;
    std::vector<std::string> words = {"reg", "read"};
    words.insert(words.end(), order.words.begin(), order.words.end());
    live.line = LineFor(words, accepted, order.camera);
    lives_[order.camera] = live;
  } else {
    lives_.erase(order.camera);
  }
  if (const auto lane = lanes_.find(order.camera); lane != lanes_.end()) {
    lane->second->SetLive(live);
  } else if (!live.line.empty()) {
    LaneOf(order.camera)->SetLive(live);
  }
  return {{"live", live.line.empty() ? Json() : Json(live.id)}};
}

// ---- Cameras ----

void Desk::SetPages(std::size_t pages) {
  pages_ = pages;
  if (pages_ == 0) {
    for (const auto& [camera, live] : lives_) {
      if (const auto lane = lanes_.find(camera); lane != lanes_.end()) {
        lane->second->SetLive({});
      }
    }
    lives_.clear();
  }
  ScheduleLook();
}

void Desk::ScheduleLook() {
  if (pages_ == 0 || look_scheduled_ || looking_) {
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
    // A process that does not even end by its own time limit is ended; the next look has a new one.
    if (!alive.expired() && looking_ && looks_ == look) {
      looker_->Stop("");
      looker_->Stop("");
    }
  });
}

// A list that can't be had says nothing of the cameras: what was known stays.
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
    entries.push_back({camera, known != cameras_.end() ? known->profile : Json()});
  }
  const bool changed =
      entries.size() != cameras_.size() ||
      !std::ranges::equal(entries, cameras_, {}, &CameraEntry::identity, &CameraEntry::identity);
  cameras_ = std::move(entries);
  EndUnusedLanes();
  for (const std::string& path : arrived) {
    const auto lane = LaneOf(path);
    try {
      lane->Prepare();
    } catch (const Failure&) {
      // The first command says why.
    }
    if (const auto live = lives_.find(path); live != lives_.end()) {
      lane->SetLive(live->second);
    }
    AskForProfile(path);
  }
  if (changed) {
    tools_.publish("cameras", {{"cameras", CamerasJson()}});
  }
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
      tools_.publish("cameras", {{"cameras", CamerasJson()}});
    }
  };
  LaneOf(camera)->Submit(std::move(job));
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
  waiting_for_state_.push_back(std::move(tell_now));
  Look();
}

}  // namespace borvanusb
