#pragma once

#include <string>
#include <vector>

#include "camera/camera.h"
#include "flash/engine/journal.h"

namespace borvanusb {

// The user's folder of journals, with one file for each unfinished change. It does not depend on
// the current folder or on how the image's name was written.
class JournalStore {
 public:
  // Opens the journals of cameras with the same vendor and product ID. The folder need not exist.
  JournalStore(std::string folder, const CameraIdentity& camera);

  struct Entry {
    std::string file;  // full name
    Journal journal;
  };
  // Reads all journals, oldest first, and removes those that another journal has replaced. Throws
  // Failure kFile if one can't be read: continuing without it could lose the bytes in it.
  std::vector<Entry> Load() const;

  // A name that was never used before. It contains `time`.
  std::string NewName(const std::string& time) const;
  // Both return after the change is on the disk. They throw Failure kFile.
  void Save(const std::string& file, const Journal& journal) const;
  void Remove(const std::string& file) const;

 private:
  bool IsOfKind(const std::string& name) const;

  std::string folder_;  // with a slash at the end
  std::string start_;   // prefix of file names for this kind of camera
  std::string own_;     // prefix of file names for this camera
};

// The camera's part of a file name: "1234-0001-5e8a9c01". The last part is computed from its path,
// because cameras of one kind have the same IDs.
std::string CameraInFileName(const CameraIdentity& camera);

}  // namespace borvanusb
