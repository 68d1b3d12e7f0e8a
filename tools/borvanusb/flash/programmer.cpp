#include "flash/programmer.h"

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>

#include "base/files.h"
#include "camera/camera_choice.h"
#include "flash/engine/flash_end.h"
#include "flash/engine/image_format.h"
#include "flash/engine/safeguard.h"
#include "flash/engine/transfer_count.h"
#include "flash/program_text.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

namespace {

double SecondsBetween(std::chrono::steady_clock::time_point start,
                      std::chrono::steady_clock::time_point end) {
  return std::chrono::duration<double>(end - start).count();
}

}  // namespace

// Tells the state when the process has to end in the middle, as long as this lives.
class FlashProgrammer::LastWords {
 public:
  LastWords(Host& host, const std::shared_ptr<WorkState>& state) : host_(host) {
    host_.SetLastWords([state] { return state->Lines(); });
  }
  ~LastWords() { host_.SetLastWords({}); }
  LastWords(const LastWords&) = delete;
  LastWords& operator=(const LastWords&) = delete;

 private:
  Host& host_;
};

FlashProgrammer::FlashProgrammer(const FlashProgramCommand& command, Context& context)
    : command_(command), context_(context) {}

FlashProgrammer::~FlashProgrammer() = default;

ExitCode FlashProgrammer::Run() {
  CheckNames();
  outcome_.image_file = command_.image;
  outcome_.address = command_.address;
  outcome_.dry_run = command_.dry_run;
  outcome_.started = context_.host.Now();
  const auto start = context_.host.Clock();
  const auto finish = [&] {
    outcome_.finished = context_.host.Now();
    outcome_.total_seconds = SecondsBetween(start, context_.host.Clock());
  };
  try {
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
    // What was done with the camera is done, and told above.
    context_.output.Error("borvanusb: flash program: the report: " + failure.Message());
    return failure.Code();
  }
  return ExitCode::kDone;
}

void FlashProgrammer::CheckNames() const {
  for (const std::string& file : {command_.report, command_.backup_file}) {
    if (!file.empty() && SameFile(file, command_.image)) {
      throw Failure(ExitCode::kUsage, file + " is the image itself and would be overwritten",
                    "Give the backup and the report names of their own.");
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

void FlashProgrammer::Work() {
  image_ = LoadImage(command_.image, command_.address);
  outcome_.image_size = image_.bytes.size();
  outcome_.image_sha256 = image_.sha256;
  if (!command_.force) {
    RefuseBlankImage(image_);
    RefuseOtherFormat(image_);
  }
  identity_ = ChosenCamera(context_.host, context_.common.cameras);
  outcome_.camera = identity_;
  reservation_ = context_.host.ReserveCamera(identity_);
  camera_ = context_.host.OpenCamera(identity_);
  last_words_ = std::make_unique<LastWords>(context_.host, state_);
  store_.emplace(AbsoluteName(context_.host.JournalFolder()), identity_);
  CheckSize();
  Look();
  Expect();
  if (command_.dry_run) {
    ShowPlan(image_, outcome_, context_.output);
    return;
  }
  if (!outcome_.changes.empty()) {
    Safeguard();
    Program();
    if (command_.verify) {
      Verify();
    }
  }
  if (command_.verify || outcome_.changes.empty()) {
    outcome_.verified = true;
  }
  state_->SetDone();
  End();
}

void FlashProgrammer::CheckSize() {
  const FlashEnd end = FindFlashEnd(*camera_, image_.End(), command_.flash_size, context_.output);
  outcome_.flash_size = end.size;
  RefuseBeyondEnd(image_, end);
}

void FlashProgrammer::Look() {
  sectors_ = SectorsAround(image_.address, image_.bytes.size());
  outcome_.sectors = sectors_.size / kSectorSize;
  const auto start = context_.host.Clock();
  context_.progress.Begin("read", sectors_.size);
  now_ = camera_->ReadFlash(sectors_.address, sectors_.size,
                            [&](std::uint64_t done) { context_.progress.Advance(done); });
  context_.progress.Done();
  outcome_.read_seconds = SecondsBetween(start, context_.host.Clock());
  const Range named{image_.address, static_cast<std::uint32_t>(image_.End() - 1)};
  const RecoveryRequest request{identity_.path, named,        image_.sha256,   sectors_,
                                now_,           image_.bytes, command_.journal};
  recovery_ = Recover(request, JournalsInReach(*store_, context_.host, identity_),
                      [&](const Journal& journal) { return CompareLandmarks(*camera_, journal); });
  for (const std::string& note : recovery_.notes) {
    context_.output.Note(note);
  }
  after_ = LayOver(sectors_, recovery_.truth, image_);
  outcome_.changes = DifferingSectors(sectors_.address, now_, after_);
}

void FlashProgrammer::Expect() {
  for (const Range& block : CutIntoBlocks(outcome_.changes)) {
    outcome_.transfers += BlockTransfers(After().At(block));
  }
  if (command_.verify) {
    for (const Range& run : outcome_.changes) {
      outcome_.transfers += ReadTransfers(run.Size());
    }
  }
  const double transfer = outcome_.read_seconds / static_cast<double>(ReadTransfers(sectors_.size));
  outcome_.expected_seconds = transfer * static_cast<double>(outcome_.transfers);
}

SectorWriter FlashProgrammer::Writer() {
  return {*camera_, context_.host, context_.output, context_.progress, *state_, shared_};
}

void FlashProgrammer::Program() {
  const auto start = context_.host.Clock();
  vouched_ = Writer().Write(outcome_.changes, After());
  outcome_.program_seconds = SecondsBetween(start, context_.host.Clock());
}

void FlashProgrammer::Verify() {
  const auto start = context_.host.Clock();
  Mismatch mismatch = Writer().Compare(Without(outcome_.changes, vouched_), After());
  if (!mismatch.wrong.empty()) {
    const Ranges sectors = SectorsOf(mismatch.wrong);
    context_.output.Note(DifferenceText(mismatch.wrong) + ": " + RangesText(mismatch.wrong) +
                         "; writing " + RangesText(sectors) + " once more");
    state_->SetWrong(mismatch.wrong);
    Writer().Write(sectors, After());
    // All of it again: where addresses wrap, the second try has overwritten other sectors.
    mismatch = Writer().Compare(outcome_.changes, After());
  }
  state_->SetWrong(mismatch.wrong);
  outcome_.verify_seconds = SecondsBetween(start, context_.host.Clock());
  if (!mismatch.wrong.empty()) {
    FailVerify(mismatch);
  }
}

void FlashProgrammer::Fail(const Failure& failure) {
  context_.progress.Break();
  std::string message = failure.Message();
  if (failure.Code() == ExitCode::kVerify) {
    outcome_.verified = false;
  }
  if (command_.restore_on_failure && camera_ && !state_->IsUntouched()) {
    // A call that hangs may go on writing: nothing is written beside it.
    message += failure.Code() == ExitCode::kTimeout
                   ? "; the old bytes are not written back, since the camera may still be at work"
                   : RestoreOldBytes();
  }
  SettleOpenSector(failure.Code());
  std::string hint = failure.Hint();
  if (camera_ && !command_.dry_run) {
    message += "; " + state_->Sentence();
    const std::string advice = state_->Advice();
    hint += (hint.empty() || advice.empty() ? "" : "\n") + advice;
  }
  outcome_.code = failure.Code();
  outcome_.message = message;
  outcome_.hint = hint;
  try {
    WriteReport();
  } catch (const Failure& second) {
    context_.output.Note("the report: " + second.Message());
  }
  throw Failure(failure.Code(), message, hint);
}

void FlashProgrammer::WriteReport() {
  if (!command_.report.empty()) {
    WriteWholeText(
        command_.report,
        ToJson(outcome_, *state_).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) +
            "\n");
  }
}

}  // namespace borvanusb
