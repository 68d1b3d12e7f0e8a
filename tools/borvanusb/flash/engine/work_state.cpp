#include "flash/engine/work_state.h"

#include "base/format.h"

namespace borvanusb {

namespace {

using Lock = std::lock_guard<std::mutex>;

void AddPart(std::string& text, const Ranges& ranges, const std::string& what) {
  if (!ranges.empty()) {
    text += Format("{}{} {}", text.empty() ? "" : "; ", RangesText(ranges), what);
  }
}

}  // namespace

void WorkState::Plan(const Ranges& changes, const std::string& forward, const std::string& back) {
  const Lock lock(mutex_);
  changes_ = changes;
  forward_ = forward;
  back_ = back;
}

void WorkState::Begin(const Range& block) {
  const Lock lock(mutex_);
  written_ = Without(written_, {block});
  unfinished_ = Union(unfinished_, {block});
}

void WorkState::End(const Range& block) {
  const Lock lock(mutex_);
  unfinished_ = Without(unfinished_, {block});
  written_ = Union(written_, {block});
}

void WorkState::SetWrong(const Ranges& wrong) {
  const Lock lock(mutex_);
  wrong_ = wrong;
}

void WorkState::SetKept(const Ranges& sectors, const std::string& file) {
  const Lock lock(mutex_);
  kept_ = sectors;
  kept_file_ = file;
}

void WorkState::SetDone() {
  const Lock lock(mutex_);
  phase_ = Phase::kDone;
}

void WorkState::BeginRestoring() {
  const Lock lock(mutex_);
  phase_ = Phase::kRestoring;
}

void WorkState::SetRestored() {
  const Lock lock(mutex_);
  phase_ = Phase::kRestored;
}

Ranges WorkState::Touched() const {
  const Lock lock(mutex_);
  return Union(written_, unfinished_);
}

bool WorkState::IsUntouched() const {
  return Touched().empty();
}

WorkState::Parts WorkState::PartsLocked() const {
  return {written_, unfinished_, Without(Without(changes_, written_), unfinished_), wrong_};
}

WorkState::Parts WorkState::GetParts() const {
  const Lock lock(mutex_);
  return PartsLocked();
}

std::string WorkState::Name() const {
  const Lock lock(mutex_);
  switch (phase_) {
    case Phase::kDone:
      return "done";
    case Phase::kRestoring:
      return "restoring";
    case Phase::kRestored:
      return "restored";
    case Phase::kWorking:
      break;
  }
  const Parts parts = PartsLocked();
  if (parts.written.empty() && parts.unfinished.empty()) {
    return "unchanged";
  }
  return parts.unfinished.empty() && parts.remaining.empty() && parts.wrong.empty() ? "written"
                                                                                    : "partial";
}

std::string WorkState::SentenceLocked() const {
  if (phase_ == Phase::kDone) {
    return "the flash holds the image";
  }
  if (phase_ == Phase::kRestored) {
    return "the flash is restored to its old bytes";
  }
  const Parts parts = PartsLocked();
  if (parts.written.empty() && parts.unfinished.empty()) {
    return "nothing in the flash was changed";
  }
  if (phase_ == Phase::kRestoring) {
    return Format(
        "the old bytes were being written back; {} may contain old bytes, new bytes or be erased{}",
        RangesText(Union(parts.written, parts.unfinished)), KeptLocked());
  }
  std::string text;
  AddPart(text, parts.wrong, "differs from what was written");
  AddPart(text, Without(parts.written, parts.wrong), "is written");
  AddPart(text, parts.unfinished, "is erased or half written");
  AddPart(text, parts.remaining, "is as before");
  return Format("the flash is changed in part: {}{}", text, KeptLocked());
}

std::string WorkState::KeptLocked() const {
  return kept_.empty() ? std::string()
                       : Format("; the bytes beside the image in {} are in {}", RangesText(kept_),
                                kept_file_);
}

std::string WorkState::AdviceLocked() const {
  const bool untouched = written_.empty() && unfinished_.empty();
  if (phase_ == Phase::kDone || phase_ == Phase::kRestored || untouched) {
    return {};
  }
  std::string text = Format("To continue: {}", forward_);
  if (!back_.empty()) {
    text += Format("\nTo go back: {}", back_);
  }
  return text;
}

std::string WorkState::Sentence() const {
  const Lock lock(mutex_);
  return SentenceLocked();
}

std::string WorkState::Advice() const {
  const Lock lock(mutex_);
  return AdviceLocked();
}

std::vector<std::string> WorkState::Lines() const {
  const Lock lock(mutex_);
  std::vector<std::string> lines = {SentenceLocked()};
  if (const std::string advice = AdviceLocked(); !advice.empty()) {
    lines.push_back(advice);
  }
  return lines;
}

}  // namespace borvanusb
