#include "flash/engine/journal_store.h"

#include <algorithm>
#include <random>
#include <set>
#include <stdexcept>
#include <utility>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/numbers.h"
#include "base/sha256.h"

namespace borvanusb {

namespace {

constexpr std::size_t kPathDigits = 8;
const std::string kNameStart = "borvanusb-";
const std::string kNameEnd = ".journal";

std::string Lower(std::string text) {
  for (char& character : text) {
    character =
        character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
  }
  return text;
}

Journal Read(const std::string& file) {
  try {
    return ParseJournal(ReadWholeText(file));
  } catch (const std::invalid_argument& error) {
    throw Failure(
        ExitCode::kFile,
        Format("can't use the journal {}: {}; it may hold bytes of a flash that exist nowhere else",
               file, error.what()),
        "Keep a copy of it elsewhere, remove it from this folder and run again.");
  }
}

}  // namespace

JournalStore::JournalStore(std::string folder, const CameraIdentity& camera)
    : folder_(std::move(folder)),
      start_(Format("{}{}-", kNameStart, Lower(Format("{}-{}", camera.vid, camera.pid)))),
      own_(kNameStart + Lower(CameraInFileName(camera))) {
  if (!folder_.empty() && folder_.back() != '/' && folder_.back() != '\\') {
    folder_ += '/';
  }
}

bool JournalStore::IsOfKind(const std::string& name) const {
  return name.starts_with(start_) && name.ends_with(kNameEnd);
}

std::vector<JournalStore::Entry> JournalStore::Load() const {
  std::vector<Entry> entries;
  std::set<std::string> replaced;
  for (const std::string& name : FilesIn(folder_)) {
    const std::string file = folder_ + name;
    if (!IsOfKind(name)) {
      continue;
    }
    try {
      entries.push_back({file, Read(file)});
    } catch (const Failure&) {
      // Ignores the error if another process has finished and removed its journal in the meantime.
      if (FileExists(file)) {
        throw;
      }
      continue;
    }
    const std::vector<std::string>& names = entries.back().journal.replaces;
    replaced.insert(names.begin(), names.end());
  }
  for (const std::string& file : replaced) {
    if (std::erase_if(entries, [&](const Entry& entry) { return entry.file == file; }) > 0) {
      Remove(file);
    }
  }
  std::ranges::stable_sort(
      entries, {}, [](const Entry& entry) -> const std::string& { return entry.journal.begun; });
  return entries;
}

std::string JournalStore::NewName(const std::string& time) const {
  // Names must never be reused, because an interrupted journal may still list the journals that it
  // replaces.
  std::random_device random;
  constexpr int kDigits = 8;
  return Format("{}{}-{}-{}{}", folder_, own_, time, Hex(random(), kDigits).substr(2), kNameEnd);
}

void JournalStore::Save(const std::string& file, const Journal& journal) const {
  MakeFolder(folder_);
  WriteWholeText(file, JournalText(journal));
}

void JournalStore::Remove(const std::string& file) const {
  RemoveFile(file);
}

std::string CameraInFileName(const CameraIdentity& camera) {
  const std::vector<std::uint8_t> path(camera.path.begin(), camera.path.end());
  return Format("{}-{}-{}", camera.vid, camera.pid, Sha256(path).substr(0, kPathDigits));
}

}  // namespace borvanusb
