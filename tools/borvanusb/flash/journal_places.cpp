#include "flash/journal_places.h"

#include "failure.h"
#include "files.h"

JournalPlaces::JournalPlaces(const std::string& image_file, const std::string& backup_file,
                             const CameraIdentity& camera)
    : files_{JournalName(image_file, camera)}, camera_(camera), name_(files_.front()) {
  const std::string beside_backup = backup_file.empty() ? name_ : JournalName(backup_file, camera);
  if (beside_backup != name_) {
    files_.push_back(beside_backup);
  }
}

std::vector<UnfinishedWork> JournalPlaces::Load() {
  std::vector<UnfinishedWork> works;
  for (const std::string& file : files_) {
    const Journal journal = LoadJournal(file, camera_);
    if (!journal.works.empty() && !found_) {
      found_ = true;
      name_ = file;
    }
    works.insert(works.end(), journal.works.begin(), journal.works.end());
  }
  return works;
}

void JournalPlaces::Choose() {
  for (const std::string& file : files_) {
    try {
      CheckWritable(file);
      name_ = file;
      chosen_ = true;
      return;
    } catch (const Failure& failure) {
      if (file == files_.back()) {
        throw Failure(
            ExitCode::kFile, "the bytes beside the image can't be kept safe: " + failure.Message(),
            "Copy the image into a folder that you may write to, or give a name elsewhere "
            "with --backup.");
      }
    }
  }
}

void JournalPlaces::Write(const std::vector<UnfinishedWork>& works) {
  SaveJournal(name_, {camera_.path, works});
  for (const std::string& file : files_) {
    if (file != name_) {
      RemoveFile(file);
    }
  }
}
