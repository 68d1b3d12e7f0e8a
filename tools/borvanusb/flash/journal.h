#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "camera.h"

// What must outlast a process that is cut off in the middle of programming: the bytes beside an
// image, in the sectors that the image fills in part. While such a sector is erased and written
// they are nowhere in the flash.

// A sector that an image fills in part.
struct SectorRecord {
  std::uint32_t address = 0;
  std::vector<std::uint8_t> original;  // 4096 bytes, as before the first erase
  std::vector<std::uint8_t> planned;   // 4096 bytes, as they shall become
};

// A sector that was last seen with other bytes than were written.
struct SeenSector {
  std::uint32_t address = 0;
  std::string sha256;
};

struct BackupRecord {
  std::string file;
  std::uint32_t address = 0;
  std::uint64_t size = 0;
  std::string sha256;
};

// Programming that was begun and has not come to its end.
struct UnfinishedWork {
  std::string image;  // the file's name, for people
  std::string sha256;
  std::uint32_t address = 0;
  std::uint64_t size = 0;
  std::optional<BackupRecord> backup;
  std::vector<SectorRecord> half_used;
  std::vector<SeenSector> seen;
};

struct Journal {
  std::string camera;  // device path
  std::vector<UnfinishedWork> works;
};

// Where a camera's journal lies: beside `neighbour`, under a name that the camera alone decides.
std::string JournalName(const std::string& neighbour, const CameraIdentity& camera);

// The camera in a file name: "1234-0001-5e8a9c01", the last part made from its path, since cameras
// of one kind share the others.
std::string CameraInFileName(const CameraIdentity& camera);

// Reads a journal; one without works when there is no such file. Throws Failure kFile when it can't
// be read or is another camera's: what it holds must not be lost by going on without it.
Journal LoadJournal(const std::string& file, const CameraIdentity& camera);

// Writes a journal, or removes it when it holds no works. Throws Failure kFile.
void SaveJournal(const std::string& file, const Journal& journal);
