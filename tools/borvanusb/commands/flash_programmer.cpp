#include "commands/flash_programmer.h"

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>

#include "camera_choice.h"
#include "commands/flash_program_text.h"
#include "files.h"
#include "flash/flash_size.h"
#include "flash/transfer_count.h"
#include "output/output.h"
#include "output/progress.h"

namespace {

double SecondsBetween(std::chrono::steady_clock::time_point start,
                      std::chrono::steady_clock::time_point end) {
  return std::chrono::duration<double>(end - start).count();
}

std::string DifferenceText(const Ranges& wrong) {
  const std::uint64_t count = TotalSize(wrong);
  return SizeText(count) + (count == 1 ? " differs" : " differ") + " from what was written";
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
  WriteReport();
  return ExitCode::kDone;
}

void FlashProgrammer::CheckNames() const {
  for (const std::string& file : {command_.report, command_.backup_file}) {
    if (!file.empty() && file == command_.image) {
      throw Failure(ExitCode::kUsage, file + " is the image itself and would be overwritten",
                    "Give the backup and the report names of their own.");
    }
  }
  if (!command_.report.empty()) {
    if (command_.report == command_.backup_file) {
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
  }
  identity_ = ChosenCamera(context_.host, context_.common.cameras);
  outcome_.camera = identity_;
  reservation_ = context_.host.ReserveCamera(identity_);
  camera_ = context_.host.OpenCamera(identity_);
  last_words_ = std::make_unique<LastWords>(context_.host, state_);
  journal_.emplace(command_.image, command_.backup_file, identity_);
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
  outcome_.verified = command_.verify || outcome_.changes.empty();
  state_->SetDone();
  EndJournal();
}

void FlashProgrammer::CheckSize() {
  if (command_.flash_size) {
    outcome_.flash_size = command_.flash_size;
    RefuseBeyondEnd(image_, *command_.flash_size, "as --flash-size says");
    return;
  }
  const FlashSizeFinding finding = FindFlashEndBefore(*camera_, image_.End());
  if (finding.size) {
    outcome_.flash_size = finding.size;
    RefuseBeyondEnd(image_, *finding.size, "it " + finding.text);
  } else if (!finding.text.empty()) {
    context_.output.Note("the flash's size " + finding.text +
                         "; --flash-size lets it be checked before");
  }
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
  const std::vector<UnfinishedWork> earlier = journal_->Load();
  const RecoveryRequest request{image_, sectors_, now_, command_.backup_file, journal_->Name()};
  recovery_ = Recover(request, earlier);
  NoteMovedCamera(request);
  for (const std::string& note : recovery_.notes) {
    context_.output.Note(note);
  }
  after_ = LayOver(sectors_, recovery_.before, image_);
  outcome_.changes = DifferingSectors(sectors_.address, now_, after_);
}

// A journal knows its camera by the path, and a camera without a serial number has another path at
// another port.
void FlashProgrammer::NoteMovedCamera(const RecoveryRequest& request) {
  for (const JournalPlaces::Other& other : journal_->OfOtherPlaces()) {
    const auto attached = context_.host.ListCameras();
    const bool is_attached = std::ranges::any_of(attached, [&](const CameraIdentity& camera) {
      return camera.path == other.journal.camera;
    });
    if (!is_attached && MayBeCutOff(request, other.journal.works)) {
      context_.output.Note(
          other.file + " tells of a cut-off programming of a camera that is not attached now, " +
          other.journal.camera +
          "; if it is this one, plug it in where it was and run again there: the "
          "bytes beside the image are in that file alone");
    }
  }
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
  return {*camera_, context_.host, context_.progress, *state_};
}

void FlashProgrammer::Program() {
  const auto start = context_.host.Clock();
  Writer().Write(outcome_.changes, After());
  outcome_.program_seconds = SecondsBetween(start, context_.host.Clock());
}

void FlashProgrammer::Verify() {
  const auto start = context_.host.Clock();
  last_read_ = after_;
  const auto keep = [&](const Range& run, std::span<const std::uint8_t> bytes) {
    std::ranges::copy(bytes, last_read_.begin() + (run.first - sectors_.address));
  };
  Ranges wrong = Writer().Compare(outcome_.changes, After(), keep);
  if (!wrong.empty()) {
    const Ranges sectors = SectorsOf(wrong);
    context_.output.Note(DifferenceText(wrong) + ": " + RangesText(wrong) + "; writing " +
                         RangesText(sectors) + " once more");
    state_->SetWrong(wrong);
    RememberSeen(wrong);
    Writer().Write(sectors, After());
    // All of it again: where addresses wrap, the second try has overwritten other sectors.
    wrong = Writer().Compare(outcome_.changes, After(), keep);
  }
  state_->SetWrong(wrong);
  outcome_.verify_seconds = SecondsBetween(start, context_.host.Clock());
  if (!wrong.empty()) {
    RememberSeen(wrong);
    const std::uint32_t first = wrong.front().first;
    throw Failure(ExitCode::kVerify,
                  DifferenceText(wrong) + ", at the second try too: " + RangesText(wrong) +
                      "; first at " + Hex(first) + ": " +
                      Hex(last_read_[first - sectors_.address], 2) + " in place of " +
                      Hex(after_[first - sectors_.address], 2),
                  "The flash may be protected, worn out, or smaller than the image's addresses.");
  }
}

void FlashProgrammer::Fail(const Failure& failure) {
  context_.progress.Break();
  std::string message = failure.Message();
  if (command_.restore_on_failure && camera_ && !state_->IsUntouched()) {
    message += RestoreOldBytes();
  }
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
