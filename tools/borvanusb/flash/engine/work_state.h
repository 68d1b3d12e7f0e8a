#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "flash/engine/byte_ranges.h"

namespace borvanusb {

// How far a change has progressed. Any thread may query it at any time, because the state is also
// printed if the process is interrupted.
class WorkState {
 public:
  // Sets the sectors to change, and the command lines to continue and to restore. `back` is empty
  // if the old bytes can't be restored.
  void Plan(const Ranges& changes, const std::string& forward, const std::string& back);

  // Called before a block is erased, and after it was written.
  void Begin(const Range& block);
  void End(const Range& block);
  // Sets bytes that were written but read back differently.
  void SetWrong(const Ranges& wrong);
  // The bytes beside the change in these sectors are in `file`, and perhaps nowhere else. Without
  // sectors, they are in the flash.
  void SetKept(const Ranges& sectors, const std::string& file);
  void SetDone();
  // Called before the old bytes are written back, and afterwards.
  void BeginRestoring();
  void SetRestored();

  // Sectors that were erased, written again or not.
  Ranges Touched() const;
  bool IsUntouched() const;

  // "unchanged", "partial", "written", "done", "restoring" or "restored".
  std::string Name() const;
  // The state as a sentence without a full stop: "nothing in the flash was changed".
  std::string Sentence() const;
  // The command lines to run next. Empty if there is nothing to do.
  std::string Advice() const;
  // The sentence and the advice as lines.
  std::vector<std::string> Lines() const;

  struct Parts {
    Ranges written;     // contain the new bytes
    Ranges unfinished;  // erased or partly written
    Ranges remaining;   // still contain the old bytes
    Ranges wrong;       // written, but read back differently
  };
  Parts GetParts() const;

 private:
  enum class Phase { kWorking, kDone, kRestoring, kRestored };

  Parts PartsLocked() const;
  std::string SentenceLocked() const;
  std::string AdviceLocked() const;
  std::string KeptLocked() const;

  mutable std::mutex mutex_;
  Phase phase_ = Phase::kWorking;
  Ranges changes_;
  Ranges written_;
  Ranges unfinished_;
  Ranges wrong_;
  Ranges kept_;
  std::string kept_file_;
  std::string forward_;
  std::string back_;
};

}  // namespace borvanusb
