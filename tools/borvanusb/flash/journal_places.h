#pragma once

#include <optional>
#include <string>
#include <vector>

#include "camera.h"
#include "flash/journal.h"

// The places where one camera's journal may lie: beside the image, or beside the backup when the
// image's folder can't be written to. It lies in one of them at a time.
class JournalPlaces {
 public:
  // `backup_file` is empty when no name was given for it.
  JournalPlaces(const std::string& image_file, const std::string& backup_file,
                const CameraIdentity& camera);

  // What earlier runs left. Throws Failure kFile as LoadJournal does.
  std::vector<UnfinishedWork> Load();
  // The file that was found, else the place that is wanted first.
  const std::string& Name() const { return name_; }

  // Makes sure that a journal can be written. Throws Failure kFile when it can in no place.
  void Choose();
  bool IsChosen() const { return chosen_; }
  // Writes the works to the chosen place, or where they were found; no works: no file is left.
  void Write(const std::vector<UnfinishedWork>& works);
  // Whether there is anything to write at the end: a chosen place or works that were found.
  bool IsInUse() const { return chosen_ || found_; }

 private:
  std::vector<std::string> files_;
  CameraIdentity camera_;
  std::string name_;
  bool chosen_ = false;
  bool found_ = false;
};
