#pragma once

// How the sequences drawn by chance are judged: by what every byte of every flash may be.
//
// A byte that no command names never changes while a command ends well. After a failure it is in
// the flash or in a journal. A backup never changes.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "flash_sequences_model.h"
#include "images/segments.h"

namespace borvanusb::tool_test {

// What a command names.
struct NamedBytes {
  Segments segments;

  // The byte for a place; null when none is named there.
  const std::uint8_t* Find(std::size_t place) const {
    for (const Segment& segment : segments) {
      if (place >= segment.address && place < segment.End()) {
        return &segment.bytes[place - segment.address];
      }
    }
    return nullptr;
  }
};

class SequenceJudge : public FlashTest {
 protected:
  // To be called before a command runs: sectors of this camera in which nothing tells it from the
  // one that a journal is of.
  void NoteAlike(const Module& module);
  // To be called after it: backups stay as they were when they came; journals belong to who was
  // worked with.
  void NoteFiles(const Module& module);
  // The journals there are, a line each.
  std::string JournalsInWords() const;
  // Compares all flashes with what they may hold after a command that named these bytes; `before`
  // is what the module's flash held.
  void Judge(Module& module, const NamedBytes& named, const Outcome& outcome, const Bytes& before);
  // Whether the flash lacks bytes that this journal holds.
  bool IsNeeded(const Module& module, const std::string& journal);

  Statistics* statistics_ = nullptr;
  std::vector<Module> modules_;
  std::map<std::string, Bytes> backups_;
  std::map<std::string, std::uint32_t> backup_places_;
  std::string problem_;  // what went wrong

 private:
  bool IsAlike(std::size_t place) const;

  std::map<std::string, std::string> owners_;  // of journals
  std::map<std::string, Bytes> last_flash_;
  std::vector<std::uint32_t> alike_;
};

}  // namespace borvanusb::tool_test
