#include "flash/engine/work_journal.h"

#include <utility>

#include "flash/engine/byte_ranges.h"

namespace borvanusb {

void WorkJournal::Save() {
  store_.Save(file_, journal_);
  begun_ = true;
}

void WorkJournal::Begin() {
  Save();
}

void WorkJournal::Wrote(std::uint32_t address, std::span<const std::uint8_t> bytes) {
  const Range range{address, static_cast<std::uint32_t>(address + bytes.size() - 1)};
  for (SectorRecord& record : journal_.sectors) {
    if (record.address >= range.first && record.address <= range.last) {
      record.now = SectorDigest(
          PartOf(bytes, address, Range{record.address, record.address + (kSectorSize - 1)}));
    }
  }
}

void WorkJournal::Open(std::uint32_t address, std::span<const std::uint8_t> original,
                       std::span<const std::uint8_t> planned,
                       const JournalStore::Entry* taken_over) {
  SharedSector sector{address, {original.begin(), original.end()}, {}, {}, {}};
  const auto keep = [&](const std::optional<SharedSector>& earlier) {
    if (earlier && earlier->address == address) {
      sector.planned.insert(sector.planned.end(), earlier->planned.begin(), earlier->planned.end());
      sector.seen.insert(sector.seen.end(), earlier->seen.begin(), earlier->seen.end());
      sector.since.insert(sector.since.end(), earlier->since.begin(), earlier->since.end());
    }
  };
  keep(journal_.open_sector);
  journal_.replaces.clear();
  if (taken_over != nullptr) {
    keep(taken_over->journal.open_sector);
    journal_.replaces.push_back(taken_over->file);
  }
  const std::vector<std::uint8_t> bytes(planned.begin(), planned.end());
  std::erase(sector.planned, bytes);
  sector.planned.push_back(bytes);
  journal_.open_sector = std::move(sector);
  Save();
  if (taken_over != nullptr) {
    store_.Remove(taken_over->file);
  }
}

void WorkJournal::Seen(const std::string& digest) {
  journal_.open_sector->seen.push_back(digest);
  Save();
}

void WorkJournal::Close(std::span<const std::uint8_t> found) {
  Wrote(journal_.open_sector->address, found);
  journal_.open_sector.reset();
  Save();
}

void WorkJournal::End() {
  if (begun_) {
    store_.Remove(file_);
    begun_ = false;
  }
}

}  // namespace borvanusb
