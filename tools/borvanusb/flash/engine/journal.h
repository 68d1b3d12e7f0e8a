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

// What must outlast a process that is cut off while it changes flash. A journal describes one
// change that was begun and has not come to its end: where, with which camera, where the old bytes
// are.

// A sector that a change fills in part, from right before its erase until it was read back: for
// that time the bytes beside the change may be nowhere in the flash. At most one at a time.
struct SharedSector {
  std::uint32_t address = 0;
  std::vector<std::uint8_t> original;  // 4096 bytes, as before its erase
  // Each 4096 bytes: what they were on their way to, once or several times; the last one counts.
  std::vector<std::vector<std::uint8_t>> planned;
  std::vector<std::string> seen;  // digests of what was read back when it came out otherwise
  // Digests of what later changes put there, with this camera or another one at its place.
  std::vector<std::string> since;
};

// A sector from the first to the last that changes. Contents are named by SectorDigest().
struct SectorRecord {
  std::uint32_t address = 0;
  std::string now;                 // when the journal was last written
  std::string after;               // when the change is done
  std::vector<std::string> since;  // that later changes may have put there, or kAnyContent
};

// A later change began in the sector and may have been cut off in it: what it holds says nothing.
inline constexpr std::string_view kAnyContent = "any";

// A word of the flash that the change leaves alone: tells the camera by its content. More than one
// where a later change may have written it, 0xffffffff among them: it was erased in between.
struct Landmark {
  std::uint32_t address = 0;
  std::vector<std::uint32_t> words;
};

struct BackupRecord {
  std::string file;  // full name
  std::uint32_t address = 0;
  std::uint64_t size = 0;
  std::string sha256;  // of the file
  // Empty: the file holds the raw bytes. Otherwise it is an Intel HEX file of these sectors, which
  // lie between `address` and its end.
  Ranges ranges = {};
};

struct Journal {
  std::string command;  // "flash program", "flash erase", "flash word"
  std::string begun;    // when, UTC
  std::string vid;
  std::string pid;
  // The camera's device path; empty when another camera was seen there since, or the same one
  // without harm: then only the flash's content can tell the camera.
  std::string camera;
  std::string image;   // full name of its file; empty for a command without one
  std::string sha256;  // of the image, or of the bytes that the command writes
  // Of the bytes that the change names: the first address, and the size up to the last.
  std::uint32_t address = 0;
  std::uint64_t size = 0;
  Ranges ranges = {};                  // the bytes that are named, where there are gaps; else empty
  std::optional<BackupRecord> backup;  // made before the first byte changed
  std::vector<SectorRecord> sectors;   // from the first to the last that changes
  std::vector<Landmark> landmarks;
  std::optional<SharedSector> open_sector;
  // Journals whose shared sector this one has taken over.
  std::vector<std::string> replaces;
};

// The bytes that the change names.
Ranges NamedBy(const Journal& journal);

// The bytes that a backup holds.
Ranges PlacesOf(const BackupRecord& backup);

// Names a sector's content. Short: a journal may hold thousands.
std::string SectorDigest(std::span<const std::uint8_t> bytes);

// A journal as the text of its file, and back. Reading throws std::invalid_argument that says what
// is wrong.
std::string JournalText(const Journal& journal);
Journal ParseJournal(const std::string& text);

}  // namespace borvanusb
