#include "workbench/run_folder.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"

namespace borvanusb {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kRunPrefix = "run-";
constexpr std::string_view kHoldSuffix = ".in-use";
// Larger than the largest flash, and a limit for what a page can handle.
constexpr std::uint64_t kLargestDownload = 256U << 20U;
constexpr std::uint64_t kLargestFolder = std::uint64_t{2} << 30U;

fs::path PathOf(const std::string& name) {
  return {std::u8string(name.begin(), name.end())};
}

// Whether the journal of an unfinished change names a file of this folder. The folder's name has a
// random part, so its text can't occur in a journal by chance.
bool IsNamedByJournal(const std::string& folder, const std::string& journal_folder) {
  const fs::path leaf = PathOf(folder).filename();
  const std::u8string text = leaf.u8string();
  const std::string wanted(text.begin(), text.end());
  return std::ranges::any_of(FilesIn(journal_folder), [&](const std::string& file) {
    std::error_code error;
    if (fs::is_directory(PathOf(Format("{}/{}", journal_folder, file)), error)) {
      return false;
    }
    // A journal that can't be read may name it, so the folder is kept.
    try {
      return ReadWholeText(Format("{}/{}", journal_folder, file)).find(wanted) != std::string::npos;
    } catch (const Failure&) {
      return true;
    }
  });
}

void RemoveRun(const std::string& folder, const std::string& journal_folder) {
  std::error_code error;
  // On Windows this fails while another process holds the file.
  fs::remove(PathOf(folder + std::string(kHoldSuffix)), error);
  if (!error && !IsNamedByJournal(folder, journal_folder)) {
    fs::remove_all(PathOf(folder), error);
  }
}

void RemoveLeftovers(const std::string& base, const std::string& journal_folder) {
  for (const std::string& name : FilesIn(base)) {
    if (name.starts_with(kRunPrefix) && !name.ends_with(kHoldSuffix)) {
      RemoveRun(Format("{}/{}", base, name), journal_folder);
    }
  }
}

}  // namespace

RunFolder::Hold::Hold(const std::string& folder)
    : file_(PathOf(folder + std::string(kHoldSuffix)), std::ios::binary | std::ios::app) {}

RunFolder::RunFolder(std::string base, const std::string& id, std::string journal_folder)
    : base_(std::move(base)),
      journal_folder_(std::move(journal_folder)),
      name_(Format("{}/{}{}", base_, kRunPrefix, id)) {
  MakeFolder(base_);
  RemoveLeftovers(base_, journal_folder_);
  // The hold comes first, so that another run that starts now does not remove the folder as a
  // leftover.
  hold_.emplace(name_);
  MakeFolder(name_);
}

RunFolder::~RunFolder() {
  hold_.reset();
  try {
    RemoveRun(name_, journal_folder_);
    // Changes of earlier runs may have been completed since the start.
    RemoveLeftovers(base_, journal_folder_);
  } catch (...) {
    // The next run removes the folder.
    hold_.reset();
  }
}

void RunFolder::Save(const std::string& file, std::string_view bytes) const {
  std::uint64_t used = bytes.size();
  for (const StoredFile& stored : List()) {
    used += stored.size;
  }
  if (used > kLargestFolder) {
    throw Failure(ExitCode::kFile, "the workbench's folder is full: the limit is 2 GiB",
                  "Start the workbench again; its folder is then empty.");
  }
  WriteWholeText(Format("{}/{}", name_, file), bytes, Lasting::kThroughProcess);
}

std::vector<StoredFile> RunFolder::List() const {
  std::vector<StoredFile> files;
  for (const std::string& name : FilesIn(name_)) {
    std::error_code error;
    const fs::path path = PathOf(Format("{}/{}", name_, name));
    const bool regular = fs::is_regular_file(path, error) && !fs::is_symlink(path, error);
    const std::uintmax_t size = regular ? fs::file_size(path, error) : 0;
    if (regular && !error) {
      files.push_back({name, size});
    }
  }
  return files;
}

std::optional<std::string> RunFolder::Read(const std::string& file) const {
  const std::vector<StoredFile> files = List();
  const auto found = std::ranges::find(files, file, &StoredFile::name);
  if (found == files.end()) {
    return std::nullopt;
  }
  if (found->size > kLargestDownload) {
    throw Failure(ExitCode::kFile, Format("{} is too large to be downloaded", file),
                  Format("It lies in {}; copy it from there.", name_));
  }
  return ReadWholeText(Format("{}/{}", name_, file));
}

}  // namespace borvanusb
