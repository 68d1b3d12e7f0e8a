#include "workbench/desk.h"

#include <algorithm>

#include "base/failure.h"
#include "base/format.h"

namespace borvanusb {

namespace {

constexpr std::size_t kKeptAnswers = 64;
constexpr std::size_t kMostKeptBytes = 1U << 20U;
constexpr int kOk = 200;
constexpr int kAccepted = 202;
constexpr int kConflict = 409;
constexpr int kBadRequest = 400;

}  // namespace

Desk::Desk(DeskTools tools) : tools_(std::move(tools)) {
  looker_ = std::make_shared<Lane>("", tools_);
  Look();
}

Desk::~Desk() = default;

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
  job->shown = ShownLine(order.words, job->camera);
  return job;
}

std::string Desk::ShownLine(std::vector<std::string> words, const std::string& camera) {
  if (!camera.empty()) {
    const auto found = FindCamera(camera);
    const std::string which =
        found != cameras_.end() ? std::to_string(found->identity.value("index", 0)) : camera;
    words.insert(std::ranges::find(words, "--"), {"--camera", which});
  }
  return CommandLineText(words);
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
  // The camera may have been plugged in just now, so the list is read again.
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
                          {"hint", "Use a unique job id."}});
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
  const auto lane = LaneOf(job->camera);
  lane->Submit(std::move(job));
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
  const LiveWishes wishes = WishesOfOpen({{order.page, order.wishes}}, pages_);
  const bool reads = !wishes.empty() && !order.wishes.empty();
  if (reads) {
    lives_[order.camera][order.page] = order.wishes;
  } else {
    lives_[order.camera].erase(order.page);
  }
  ApplyLive(order.camera);
  return {{"live", reads ? Json(Format("live-{}", next_id_++)) : Json()}};
}

// What the pages want of a camera now.
void Desk::ApplyLive(const std::string& camera) {
  AcceptedWords accepted;
  accepted.added = {"--json", "--progress", "none"};
  accepted.takes_camera = true;
  accepted.takes_profile = true;
  std::vector<LiveLine> lines;
  for (LiveRead& read : ReadsFor(lives_[camera])) {
    std::vector<std::string> line = LineFor(read.words, accepted, camera);
    std::string shown = ShownLine(read.words, camera);
    lines.push_back({std::move(read), std::move(line), std::move(shown)});
  }
  if (lines.empty()) {
    lives_.erase(camera);
  }
  if (const auto lane = lanes_.find(camera); lane != lanes_.end()) {
    lane->second->SetLive(std::move(lines));
  } else if (!lines.empty()) {
    LaneOf(camera)->SetLive(std::move(lines));
  }
}

}  // namespace borvanusb
