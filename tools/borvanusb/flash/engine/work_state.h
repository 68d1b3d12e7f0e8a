#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "flash/engine/byte_ranges.h"

namespace borvanusb {

// How far the flash is from what it shall hold. Any thread may ask at any time, since a process
// that is ended in the middle still tells it.
class WorkState {
 public:
  // The sectors that will change, and the command lines that continue and go back; the latter is
  // empty when nothing leads back.
  void Plan(const Ranges& changes, const std::string& forward, const std::string& back);

  // A block is about to be erased; it is written.
  void Begin(const Range& block);
  void End(const Range& block);
  // What was written and does not read back so.
  void SetWrong(const Ranges& wrong);
  // Bytes beside the change in these sectors are in `file`, and perhaps nowhere else; no sectors:
  // in the flash.
  void SetKept(const Ranges& sectors, const std::string& file);
  void SetDone();
  // The old bytes are being written back; they are back.
  void BeginRestoring();
  void SetRestored();

  // Sectors that were erased at least, whether written since or not.
  Ranges Touched() const;
  bool IsUntouched() const;

  // "unchanged", "partial", "written", "done", "restoring" or "restored".
  std::string Name() const;
  // The state in a sentence without its point: "nothing in the flash was changed".
  std::string Sentence() const;
  // What to do next: the command lines; empty when there is nothing to do.
  std::string Advice() const;
  // Both as lines.
  std::vector<std::string> Lines() const;

  struct Parts {
    Ranges written;     // hold the new bytes
    Ranges unfinished;  // erased or half written
    Ranges remaining;   // hold the old bytes still
    Ranges wrong;       // written, but read back otherwise
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
