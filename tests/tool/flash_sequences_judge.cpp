#include "flash_sequences_judge.h"

#include <algorithm>

#include "base/files.h"
#include "base/numbers.h"
#include "flash/engine/journal.h"
#include "flash/engine/sector_plan.h"

namespace borvanusb::tool_test {
namespace {

bool SectorChanged(const Bytes& now, const Bytes& before, std::size_t place) {
  const auto first = static_cast<std::ptrdiff_t>(place / kSectorSize * kSectorSize);
  return !std::equal(now.begin() + first, now.begin() + first + kSectorSize,
                     before.begin() + first);
}

}  // namespace

void SequenceJudge::NoteAlike(const Module& module) {
  alike_.clear();
  for (const std::string& file : Journals()) {
    const Journal journal = ParseJournal(ReadWholeText(file));
    if (journal.open_sector && owners_[AbsoluteName(file)] != module.name &&
        LooksAlike(module.chip->flash, journal)) {
      alike_.push_back(journal.open_sector->address);
    }
  }
}

bool SequenceJudge::IsAlike(std::size_t place) const {
  return std::ranges::any_of(alike_, [&](std::uint32_t address) {
    return place >= address && place < address + std::size_t{kSectorSize};
  });
}

void SequenceJudge::NoteFiles(const Module& module) {
  for (const std::string& name : FilesIn(host.journal_folder)) {
    owners_.try_emplace(AbsoluteName(host.journal_folder + "/" + name), module.name);
  }
  for (const char* folder : {"a", "b"}) {
    for (const std::string& name : FilesIn(File(folder))) {
      if (name.starts_with("image") && name.find("backup") == std::string::npos) {
        continue;
      }
      const std::string file = AbsoluteName(File(std::string(folder) + "/" + name));
      const Bytes bytes = ReadWholeFile(file);
      const auto [known, is_new] = backups_.try_emplace(file, bytes);
      if (!is_new && known->second != bytes) {
        problem_ = file + " changed";
      }
    }
  }
  for (const std::string& journal : Journals()) {
    const auto backup = ParseJournal(ReadWholeText(journal)).backup;
    if (backup) {
      backup_places_[backup->file] = backup->address;
    }
  }
}

std::string SequenceJudge::JournalsInWords() const {
  std::string words;
  for (const std::string& file : Journals()) {
    const Journal journal = ParseJournal(ReadWholeText(file));
    words += "\n      " + file.substr(file.size() - 30) +
             (journal.camera.empty() ? " nowhere"
                                     : " at " + journal.camera.substr(journal.camera.size() - 1)) +
             (journal.open_sector ? ", open " + Hex(journal.open_sector->address) : "");
  }
  return words;
}

bool SequenceJudge::IsNeeded(const Module& module, const std::string& journal) {
  if (owners_[journal] != module.name) {
    return false;
  }
  const SharedSector open = *ParseJournal(ReadWholeText(journal)).open_sector;
  bool lacks = false;
  for (std::size_t i = 0; i < kSectorSize; ++i) {
    const std::size_t place = open.address + i;
    if (!module.limbo[place] && module.chip->flash[place] != module.truth[place]) {
      lacks = lacks || open.original[i] == module.truth[place];
    }
  }
  return lacks;
}

void SequenceJudge::Judge(Module& module, const NamedBytes& named, const Outcome& outcome,
                          const Bytes& before) {
  const bool done = outcome.code == ExitCode::kDone;
  const bool restored = outcome.message.find("is restored to its old bytes") != std::string::npos;
  const Bytes& flash = module.chip->flash;
  const SectorSet sectors = SectorsAround(PlacesOf(named.segments));
  const std::vector<SharedSector> kept = OpenSectors(Journals());
  for (std::size_t place = 0; place < kFlash; ++place) {
    const std::uint8_t* const named_byte = named.Find(place);
    const bool is_named = named_byte != nullptr;
    if (is_named && done) {
      module.truth[place] = *named_byte;
      module.limbo[place] = false;
    } else if (is_named && !restored) {
      const bool written = SectorChanged(flash, before, place);
      const bool would_change =
          flash[place] != module.truth[place] || *named_byte != module.truth[place];
      module.limbo[place] = module.limbo[place] || (written && would_change);
    }
    if (module.limbo[place] || flash[place] == module.truth[place]) {
      continue;
    }
    const auto address = static_cast<std::uint32_t>(place);
    const bool may_be_missing = !(done && sectors.Holds({address, address})) && !(is_named && done);
    if (may_be_missing && IsKept(kept, place, module.truth[place])) {
      continue;
    }
    if (IsAlike(place)) {
      ++statistics_->alike;
      module.truth[place] = flash[place];
    } else {
      problem_ = "byte " + Hex(place) + " is " + Hex(flash[place], 2) + ", must be " +
                 Hex(module.truth[place], 2) + (done ? ", exit code 0" : ", and no journal has it");
      return;
    }
  }
  for (const Module& other : modules_) {
    if (&other != &module && last_flash_[other.name] != other.chip->flash &&
        !last_flash_[other.name].empty()) {
      problem_ = "the flash of " + other.name + " changed";
    }
    last_flash_[other.name] = other.chip->flash;
  }
  last_flash_[module.name] = flash;
}

}  // namespace borvanusb::tool_test
