#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "flash/engine/journal.h"
#include "flash/engine/journal_store.h"

namespace borvanusb {

// This process's own journal, while it changes flash. Each function returns when the disk holds it.
class WorkJournal {
 public:
  // `store` must outlive it.
  WorkJournal(const JournalStore& store, std::string file, Journal journal)
      : store_(store), file_(std::move(file)), journal_(std::move(journal)) {}

  const std::string& File() const { return file_; }
  bool IsBegun() const { return begun_; }
  const std::optional<SharedSector>& OpenSector() const { return journal_.open_sector; }

  void Begin();
  // Whole sectors that were written; what is told becomes part of the next writing of the journal.
  // `bytes` begin at `address`.
  void Wrote(std::uint32_t address, std::span<const std::uint8_t> bytes);
  // Before a shared sector is erased. A sector that is open already, or was left open by the change
  // of another journal, `taken_over`, keeps what it may still be on its way to; that journal is
  // removed.
  void Open(std::uint32_t address, std::span<const std::uint8_t> original,
            std::span<const std::uint8_t> planned, const JournalStore::Entry* taken_over);
  // The open sector came out otherwise.
  void Seen(const std::string& digest);
  // The bytes beside the change are safe again: the open sector was read back, and holds `found`.
  void Close(std::span<const std::uint8_t> found);
  void End();

 private:
  void Save();

  const JournalStore& store_;
  std::string file_;
  Journal journal_;
  bool begun_ = false;
};

}  // namespace borvanusb
