#include "flash/engine/journal.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "base/flash_memory.h"
#include "base/format.h"
#include "base/hex_bytes.h"
#include "base/sha256.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

// For changes without gaps; earlier versions of the tool can read it, too.
constexpr int kFormat = 2;
// For changes with gaps. An earlier version would treat the gaps as changed bytes, so it must
// reject this format.
constexpr int kFormatWithRanges = 3;
constexpr std::size_t kDigestDigits = 16;

std::vector<std::uint8_t> SectorBytes(const Json& text) {
  const auto bytes = ParseHexBytes(text.get<std::string>());
  if (!bytes || bytes->size() != kSectorSize) {
    throw std::invalid_argument("a sector has no 4096 bytes");
  }
  return *bytes;
}

std::uint32_t SectorAddress(const Json& number) {
  const auto address = number.get<std::uint32_t>();
  if (address % kSectorSize != 0) {
    throw std::invalid_argument("an address begins no sector");
  }
  return address;
}

void CheckPlace(std::uint32_t address, std::uint64_t size) {
  if (size == 0 || size > kAddressSpace - address) {
    throw std::invalid_argument("a size is out of range");
  }
}

Json ToJson(const SharedSector& sector) {
  Json planned = Json::array();
  for (const std::vector<std::uint8_t>& bytes : sector.planned) {
    planned.push_back(HexBytes(bytes));
  }
  return {{"address", sector.address},
          {"original", HexBytes(sector.original)},
          {"planned", planned},
          {"seen", sector.seen},
          {"since", sector.since}};
}

SharedSector SharedSectorFrom(const Json& json) {
  SharedSector sector{SectorAddress(json.at("address")),
                      SectorBytes(json.at("original")),
                      {},
                      json.at("seen").get<std::vector<std::string>>(),
                      json.at("since").get<std::vector<std::string>>()};
  for (const Json& bytes : json.at("planned")) {
    sector.planned.push_back(SectorBytes(bytes));
  }
  if (sector.planned.empty()) {
    throw std::invalid_argument("a sector has no planned bytes");
  }
  return sector;
}

Json RangesJson(const Ranges& ranges) {
  Json json = Json::array();
  for (const Range& range : ranges) {
    json.push_back({range.first, range.last});
  }
  return json;
}

// Reads sorted ranges with gaps between them. They must span exactly `size` bytes from `address`.
Ranges RangesFrom(const Json& json, std::uint32_t address, std::uint64_t size) {
  Ranges ranges;
  for (const Json& pair : json) {
    const Range range{pair.at(0).get<std::uint32_t>(), pair.at(1).get<std::uint32_t>()};
    const std::uint64_t least =
        ranges.empty() ? std::uint64_t{address} : std::uint64_t{ranges.back().last} + 2;
    if (range.last < range.first || range.first < least) {
      throw std::invalid_argument("ranges are out of order");
    }
    ranges.push_back(range);
  }
  if (ranges.empty() || ranges.front().first != address ||
      std::uint64_t{ranges.back().last} + 1 != address + size) {
    throw std::invalid_argument("ranges do not fit their size");
  }
  return ranges;
}

Json ToJson(const BackupRecord& backup) {
  Json json = {{"file", backup.file},
               {"address", backup.address},
               {"size", backup.size},
               {"sha256", backup.sha256}};
  if (!backup.ranges.empty()) {
    json["ranges"] = RangesJson(backup.ranges);
  }
  return json;
}

BackupRecord BackupFrom(const Json& json) {
  BackupRecord backup{json.at("file").get<std::string>(), json.at("address").get<std::uint32_t>(),
                      json.at("size").get<std::uint64_t>(), json.at("sha256").get<std::string>()};
  CheckPlace(backup.address, backup.size);
  if (const auto ranges = json.find("ranges"); ranges != json.end()) {
    backup.ranges = RangesFrom(*ranges, backup.address, backup.size);
  }
  return backup;
}

Journal FromJson(const Json& json) {
  const int format = json.at("borvanusb_journal").get<int>();
  if (format != kFormat && format != kFormatWithRanges) {
    throw std::invalid_argument("another version of borvanusb wrote it");
  }
  Journal journal{.command = json.at("command").get<std::string>(),
                  .begun = json.at("begun").get<std::string>(),
                  .vid = json.at("vid").get<std::string>(),
                  .pid = json.at("pid").get<std::string>(),
                  .camera = json.at("camera").get<std::string>(),
                  .image = json.at("image").get<std::string>(),
                  .sha256 = json.at("sha256").get<std::string>(),
                  .address = json.at("address").get<std::uint32_t>(),
                  .size = json.at("size").get<std::uint64_t>(),
                  .ranges = {},
                  .backup = std::nullopt,
                  .sectors = {},
                  .landmarks = {},
                  .open_sector = std::nullopt,
                  .replaces = json.at("replaces").get<std::vector<std::string>>()};
  CheckPlace(journal.address, journal.size);
  if (format == kFormatWithRanges) {
    journal.ranges = RangesFrom(json.at("ranges"), journal.address, journal.size);
  }
  if (const auto backup = json.find("backup"); backup != json.end()) {
    journal.backup = BackupFrom(*backup);
  }
  for (const Json& sector : json.at("sectors")) {
    journal.sectors.push_back({SectorAddress(sector.at(0)), sector.at(1).get<std::string>(),
                               sector.at(2).get<std::string>(),
                               sector.at(3).get<std::vector<std::string>>()});
  }
  for (const Json& landmark : json.at("landmarks")) {
    journal.landmarks.push_back(
        {landmark.at(0).get<std::uint32_t>(), landmark.at(1).get<std::vector<std::uint32_t>>()});
  }
  if (const auto sector = json.find("open_sector"); sector != json.end()) {
    journal.open_sector = SharedSectorFrom(*sector);
  }
  return journal;
}

}  // namespace

Ranges NamedBy(const Journal& journal) {
  if (!journal.ranges.empty()) {
    return journal.ranges;
  }
  return {{journal.address, static_cast<std::uint32_t>(journal.address + journal.size - 1)}};
}

Ranges PlacesOf(const BackupRecord& backup) {
  if (!backup.ranges.empty()) {
    return backup.ranges;
  }
  return {{backup.address, static_cast<std::uint32_t>(backup.address + backup.size - 1)}};
}

std::string SectorDigest(std::span<const std::uint8_t> bytes) {
  return Sha256(bytes).substr(0, kDigestDigits);
}

std::string JournalText(const Journal& journal) {
  const bool has_ranges = !journal.ranges.empty();
  Json json = {{"borvanusb_journal", has_ranges ? kFormatWithRanges : kFormat},
               {"command", journal.command},
               {"begun", journal.begun},
               {"vid", journal.vid},
               {"pid", journal.pid},
               {"camera", journal.camera},
               {"image", journal.image},
               {"sha256", journal.sha256},
               {"address", journal.address},
               {"size", journal.size}};
  if (has_ranges) {
    json["ranges"] = RangesJson(journal.ranges);
  }
  if (journal.backup) {
    json["backup"] = ToJson(*journal.backup);
  }
  if (journal.open_sector) {
    json["open_sector"] = ToJson(*journal.open_sector);
  }
  json["landmarks"] = Json::array();
  for (const Landmark& landmark : journal.landmarks) {
    json["landmarks"].push_back({landmark.address, landmark.words});
  }
  json["replaces"] = journal.replaces;
  json["sectors"] = Json::array();
  for (const SectorRecord& sector : journal.sectors) {
    json["sectors"].push_back({sector.address, sector.now, sector.after, sector.since});
  }
  return Format("{}\n", json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

Journal ParseJournal(const std::string& text) {
  try {
    return FromJson(Json::parse(text));
  } catch (const Json::exception&) {
    throw std::invalid_argument("it is not a valid journal");
  }
}

}  // namespace borvanusb
