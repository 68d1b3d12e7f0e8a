#pragma once

// Checks the results of the random sequences, based on the allowed values of every byte of every
// flash.
//
// A byte that no command names never changes while commands succeed. After a failure, it is in the
// flash or in a journal. A backup never changes.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "flash_sequences_model.h"
#include "images/segments.h"

namespace borvanusb::tool_test {

// The bytes that a command names.
struct NamedBytes {
  Segments segments;

  // The byte for an address; null if none is named there.
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
  // Call it before a command: notes the sectors of this camera that can't be distinguished from
  // those of a journal's camera.
  void NoteAlike(const Module& module);
  // Call it after a command: backups must be unchanged, and new journals belong to this camera.
  void NoteFiles(const Module& module);
  // The existing journals, one line for each.
  std::string JournalsInWords() const;
  // Compares all flashes with their allowed content after a command that named these bytes.
  // `before` is the previous content of the module's flash.
  void Judge(Module& module, const NamedBytes& named, const Outcome& outcome, const Bytes& before);
  // Whether bytes in this journal are missing in the flash.
  bool IsNeeded(const Module& module, const std::string& journal);

  Statistics* statistics_ = nullptr;
  std::vector<Module> modules_;
  std::map<std::string, Bytes> backups_;
  std::map<std::string, std::uint32_t> backup_places_;
  std::string problem_;  // the problem found

 private:
  bool IsAlike(std::size_t place) const;

  std::map<std::string, std::string> owners_;  // by journal
  std::map<std::string, Bytes> last_flash_;
  std::vector<std::uint32_t> alike_;
};

}  // namespace borvanusb::tool_test
