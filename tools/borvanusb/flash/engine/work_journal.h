#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "flash/engine/journal.h"
#include "flash/engine/journal_store.h"

namespace borvanusb {

// The journal of this process while it changes the flash. Each function returns when the data is on
// the disk.
class WorkJournal {
 public:
  // `store` must outlive it.
  WorkJournal(const JournalStore& store, std::string file, Journal journal)
      : store_(store), file_(std::move(file)), journal_(std::move(journal)) {}

  const std::string& File() const { return file_; }
  bool IsBegun() const { return begun_; }
  const std::optional<SharedSector>& OpenSector() const { return journal_.open_sector; }

  void Begin();
  // Records whole sectors that were written. They are saved with the next write of the journal.
  // `bytes` begin at `address`.
  void Wrote(std::uint32_t address, std::span<const std::uint8_t> bytes);
  // Records a shared sector before its erase. If the sector is already open, or another journal
  // (`taken_over`) left it open, the contents planned there are kept as well, and the other journal
  // is removed.
  void Open(std::uint32_t address, std::span<const std::uint8_t> original,
            std::span<const std::uint8_t> planned, const JournalStore::Entry* taken_over);
  // Records a wrong content of the open sector.
  void Seen(const std::string& digest);
  // The bytes beside the change are safe again: the open sector was read back and contains `found`.
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
