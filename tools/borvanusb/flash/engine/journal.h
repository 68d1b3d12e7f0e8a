#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "camera/camera.h"
#include "flash/engine/byte_ranges.h"

namespace borvanusb {

// A journal describes one unfinished change of the flash: where it is, with which camera, and where
// the old bytes are. It must survive if the process is killed during the change.

// A sector in which a change only affects some bytes. It is recorded from just before its erase
// until it has been read back, because during this time the other bytes may not exist in the flash.
// There is at most one at a time.
struct SharedSector {
  std::uint32_t address = 0;
  std::vector<std::uint8_t> original;  // 4096 bytes, before the erase
  // Contents that were to be written, 4096 bytes each. There may be several attempts; the last one
  // counts.
  std::vector<std::vector<std::uint8_t>> planned;
  std::vector<std::string> seen;  // digests of wrong contents that were read back
  // Digests of contents that later changes wrote, on this camera or another one with the same path.
  std::vector<std::string> since;
};

// The state of a sector between the first and the last change. Contents are identified by
// SectorDigest().
struct SectorRecord {
  std::uint32_t address = 0;
  std::string now;                 // when the journal was last written
  std::string after;               // when the change is finished
  std::vector<std::string> since;  // possible contents from later changes, or kAnyContent
};

// A later change started in this sector and may have been interrupted, so its content is no
// evidence.
inline constexpr std::string_view kAnyContent = "any";

// A word of the flash outside the change, used to recognise the camera. It has several values if a
// later change may have written it; 0xffffffff is then one of them, because the word was erased in
// between.
struct Landmark {
  std::uint32_t address = 0;
  std::vector<std::uint32_t> words;
};

struct BackupRecord {
  std::string file;  // full name
  std::uint32_t address = 0;
  std::uint64_t size = 0;
  std::string sha256;  // of the file
  // Empty: the file contains the raw bytes. Otherwise it is an Intel HEX file of these sectors,
  // which lie between `address` and the end.
  Ranges ranges = {};
};

struct Journal {
  std::string command;  // "flash program", "flash erase", "flash word"
  std::string begun;    // start time in UTC
  std::string vid;
  std::string pid;
  // The camera's device path. Empty if another camera was seen at this path since, or this one
  // without damage; then only the flash content can identify the camera.
  std::string camera;
  std::string image;   // full name of its file; empty if there is no image
  std::string sha256;  // of the image, or of the bytes that are written
  // The first address of the bytes to change, and the size up to the last one.
  std::uint32_t address = 0;
  std::uint64_t size = 0;
  Ranges ranges = {};                  // bytes to change, if they have gaps; else empty
  std::optional<BackupRecord> backup;  // made before the first byte changed
  std::vector<SectorRecord> sectors;   // from the first to the last that changes
  std::vector<Landmark> landmarks;
  std::optional<SharedSector> open_sector;
  // Journals whose shared sector is now in this journal.
  std::vector<std::string> replaces;
};

// The bytes to change.
Ranges NamedBy(const Journal& journal);

// The bytes in a backup.
Ranges PlacesOf(const BackupRecord& backup);

// A digest of a sector's content. It is short, because a journal may contain thousands.
std::string SectorDigest(std::span<const std::uint8_t> bytes);

// Convert a journal to the text of its file, and back. Parsing throws std::invalid_argument with
// the reason.
std::string JournalText(const Journal& journal);
Journal ParseJournal(const std::string& text);

}  // namespace borvanusb
