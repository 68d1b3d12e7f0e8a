#pragma once

#include <string>
#include <vector>

#include "camera/camera.h"
#include "flash/engine/journal.h"

namespace borvanusb {

// The user's folder of journals: one file for each change that was begun, wherever the command
// stood and however it was told the image's name.
class JournalStore {
 public:
  // The journals of cameras with this one's vendor and product ID, in a folder that need not exist.
  JournalStore(std::string folder, const CameraIdentity& camera);

  struct Entry {
    std::string file;  // full name
    Journal journal;
  };
  // All of them, the oldest first; those that another one has replaced are removed. Throws Failure
  // kFile for one that can't be read: what it holds must not be lost by going on without it.
  std::vector<Entry> Load() const;

  // A name that no journal has or had; `time` is part of it.
  std::string NewName(const std::string& time) const;
  // Both wait until the change is on the disk. Throw Failure kFile.
  void Save(const std::string& file, const Journal& journal) const;
  void Remove(const std::string& file) const;

 private:
  bool IsOfKind(const std::string& name) const;

  std::string folder_;  // with the slash at its end
  std::string start_;   // of the names of this kind of camera
  std::string own_;     // of the names of this camera
};

// The camera in a file name: "1234-0001-5e8a9c01", the last part made from its path, since cameras
// of one kind share the others.
std::string CameraInFileName(const CameraIdentity& camera);

}  // namespace borvanusb
