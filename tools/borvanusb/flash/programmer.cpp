#include "flash/programmer.h"

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <span>
#include <utility>

#include "base/files.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "command/command_line.h"
#include "flash/flash_options.h"
#include "flash/place_images.h"
#include "flash/program_names.h"
#include "flash/program_text.h"
#include "flash/regions.h"
#include "output/output.h"
#include "output/progress.h"
#include "profile/profile_choice.h"

namespace borvanusb {

namespace {

using Time = std::chrono::steady_clock::time_point;

double SecondsBetween(Time start, Time end) {
  return std::chrono::duration<double>(end - start).count();
}

bool IsBlank(std::span<const std::uint8_t> bytes) {
  return std::ranges::all_of(bytes, [&](std::uint8_t byte) { return byte == bytes.front(); }) &&
         (bytes.front() == 0 || bytes.front() == 0xFF);
}

// Whether the camera may still answer after this failure.
bool MayAnswer(ExitCode code) {
  return code == ExitCode::kDevice || code == ExitCode::kVerify;
}

}  // namespace

// The chosen camera, reserved and open. If the process is killed during the work, it prints the
// state of the flash.
class FlashProgrammer::Site {
 public:
  Site(Context& context, const CameraIdentity& identity, const std::shared_ptr<WorkState>& state)
      : host_(context.host),
        reservation_(context.host.ReserveCamera(identity)),
        camera_(context.host.OpenCamera(identity)),
        store_(AbsoluteName(context.host.JournalFolder()), identity),
        steps_{*camera_, host_, context.output, context.progress, store_, *state} {
    host_.SetLastWords([state] { return state->Lines(); });
  }
  ~Site() { host_.SetLastWords({}); }
  Site(const Site&) = delete;
  Site& operator=(const Site&) = delete;

  WorkSite& Steps() { return steps_; }

 private:
  Host& host_;
  std::unique_ptr<Host::Reservation> reservation_;
  std::unique_ptr<Camera> camera_;
  JournalStore store_;
  WorkSite steps_;
};

FlashProgrammer::FlashProgrammer(const FlashProgramCommand& command, Context& context)
    : command_(command), context_(context) {}

FlashProgrammer::~FlashProgrammer() = default;

ExitCode FlashProgrammer::Run() {
  CheckNames();
  outcome_.image_file = command_.image;
  outcome_.address = command_.address.value_or(0);
  outcome_.dry_run = command_.dry_run;
  outcome_.tags = command_.tags;
  outcome_.computer = context_.host.Environment("COMPUTERNAME");
  outcome_.started = context_.host.Now();
  const Time start = context_.host.Clock();
  const auto finish = [&] {
    outcome_.finished = context_.host.Now();
    outcome_.total_seconds = SecondsBetween(start, context_.host.Clock());
  };
  try {
    LoadWanted();
    Work();
  } catch (const Failure& failure) {
    finish();
    Fail(failure);
  } catch (const std::exception& error) {
    finish();
    Fail(Failure(ExitCode::kInternal, error.what()));
  }
  finish();
  context_.result = ToJson(outcome_, *state_);
  if (!command_.dry_run) {
    ShowResult(image_, outcome_, context_.output);
  }
  try {
    WriteReport();
  } catch (const Failure& failure) {
    // The report failed, but programming itself succeeded and has been reported above.
    context_.output.Error(Format("borvanusb: flash program: the report: {}", failure.Message()));
    return failure.Code();
  }
  return ExitCode::kDone;
}

void FlashProgrammer::CheckNames() const {
  for (const std::string& file : {command_.report, command_.backup_file}) {
    for (const ImageWish& image : WishesOf(command_)) {
      if (!file.empty() && SameFile(file, image.file)) {
        throw Failure(ExitCode::kUsage,
                      Format("{} is the image itself and would be overwritten", file),
                      "Give the backup and the report names of their own.");
      }
    }
  }
  if (!command_.report.empty()) {
    if (!command_.backup_file.empty() && SameFile(command_.report, command_.backup_file)) {
      throw Failure(ExitCode::kUsage, "--report and --backup name the same file",
                    "Give them names of their own.");
    }
    CheckWritable(command_.report);
  }
}

void FlashProgrammer::LoadWanted() {
  files_ = LoadForProgramming(command_, context_.output);
  if (files_.size() == 1) {
    outcome_.image_size = TotalSize(files_.front().segments);
    outcome_.image_sha256 = Digest(files_.front().segments);
  }
}

// Rejects a wrong position before the camera is opened.
void FlashProgrammer::PlaceWanted(const CameraIdentity& camera) {
  const auto profile = ProfileFor(camera, context_);
  const FlashLayout layout = profile != nullptr ? profile->flash : FlashLayout();
  if (profile != nullptr) {
    outcome_.profile_file = profile->file;
    outcome_.profile_name = profile->name;
  }
  told_size_ = SizeFor(command_.flash_size, layout);
  Placement placement = PlaceImages(std::move(files_), layout, command_.force, context_.output);
  image_ = std::move(placement.image);
  outcome_.images = std::move(placement.files);
  outcome_.image_file = image_.file;
  outcome_.image_size = image_.Size();
  outcome_.image_sha256 = image_.sha256;
  outcome_.address = image_.First();
  const Ranges sectors = SectorsAround(image_.Places()).Runs();
  touches_read_only_ = TouchesReadOnly(layout, sectors);
  if (!command_.force) {
    RefuseReadOnly(layout, sectors, image_.file, ExitCode::kFile);
  }
}

void FlashProgrammer::Work() {
  const CameraIdentity identity = ChosenCamera(context_.host, context_.common.cameras);
  outcome_.camera = identity;
  outcome_.library_version = context_.host.LibraryVersion();
  PlaceWanted(identity);
  site_ = std::make_unique<Site>(context_, identity, state_);
  seen_ = Examine(image_, told_size_, command_.journal, site_->Steps());
  const ProgramPlan plan = Plan(image_, seen_, command_.verify);
  outcome_.flash_size = seen_.flash_size;
  outcome_.read_seconds = seen_.seconds;
  outcome_.sectors = plan.sectors.Size() / kSectorSize;
  outcome_.changes = plan.changes;
  outcome_.transfers = plan.transfers;
  outcome_.expected_seconds = plan.expected_seconds;
  if (command_.dry_run) {
    ShowPlan(outcome_, context_.output);
    return;
  }
  if (!plan.changes.empty()) {
    Change(plan);
  }
  if (command_.verify || plan.changes.empty()) {
    outcome_.verified = true;
  }
  state_->SetDone();
  FinishJournals(seen_, security_, site_->Steps());
}

void FlashProgrammer::Change(const ProgramPlan& plan) {
  WorkSite& site = site_->Steps();
  state_->Plan(plan.changes, {}, {});
  security_ = Secure(image_, seen_, plan, {command_.backup, command_.backup_file}, site);
  PlanWaysOn(plan);
  const Time start = context_.host.Clock();
  const Ranges vouched = Write(plan, security_, site);
  const Time written = context_.host.Clock();
  outcome_.program_seconds = SecondsBetween(start, written);
  if (command_.verify) {
    const auto measure = [&] {
      outcome_.verify_seconds = SecondsBetween(written, context_.host.Clock());
    };
    try {
      Verify(plan, security_, vouched, site);
    } catch (...) {
      measure();
      throw;
    }
    measure();
  }
}

void FlashProgrammer::PlanWaysOn(const ProgramPlan& plan) {
  std::vector<std::string> words = ProgramWords(Placed(command_, outcome_.images));
  words.insert(words.end(), {"--camera", outcome_.camera->path});
  std::string back;
  if (const std::optional<BackupRecord>& backup = security_.backup) {
    const Ranges places = PlacesOf(*backup);
    const bool is_blank = std::ranges::all_of(
        places, [&](const Range& place) { return IsBlank(seen_.Before().At(place)); });
    back = GoBackText(*backup, seen_.Before().At(places.front()), *outcome_.camera,
                      is_blank || touches_read_only_);
    outcome_.backup = backup->file;
  }
  state_->Plan(plan.changes, CommandLineText(words), back);
}

void FlashProgrammer::Fail(const Failure& failure) {
  context_.progress.Break();
  std::string message = failure.Message();
  if (failure.Code() == ExitCode::kVerify) {
    outcome_.verified = false;
  }
  if (command_.restore_on_failure && site_ && !state_->IsUntouched()) {
    // After a timeout, the hanging call may still write, so nothing else is written.
    message += failure.Code() == ExitCode::kTimeout
                   ? "; the old bytes are not written back, since the camera may still be at work"
                   : RestoreOldBytes(seen_, security_, site_->Steps());
  }
  if (site_ && MayAnswer(failure.Code())) {
    SettleOpenSector(image_, security_, site_->Steps());
  }
  std::string hint = failure.Hint();
  if (site_ && !command_.dry_run) {
    message += Format("; {}", state_->Sentence());
    const std::string advice = state_->Advice();
    hint += Format("{}{}", hint.empty() || advice.empty() ? "" : "\n", advice);
  }
  outcome_.code = failure.Code();
  outcome_.message = message;
  outcome_.hint = hint;
  try {
    WriteReport();
  } catch (const Failure& second) {
    context_.output.Note(Format("the report: {}", second.Message()));
  }
  throw Failure(failure.Code(), message, hint);
}

void FlashProgrammer::WriteReport() const {
  if (!command_.report.empty()) {
    WriteWholeText(
        command_.report,
        Format("{}\n", ToJson(outcome_, *state_)
                           .dump(2, ' ', false, nlohmann::json::error_handler_t::replace)));
  }
}

}  // namespace borvanusb
