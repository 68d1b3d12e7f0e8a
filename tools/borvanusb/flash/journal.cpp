#include "flash/journal.h"

#include <nlohmann/json.hpp>

#include "failure.h"
#include "files.h"
#include "flash/hex_bytes.h"
#include "flash/sha256.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormat = 1;
constexpr std::size_t kPathDigits = 8;

Json ToJson(const UnfinishedWork& work) {
  Json json = {{"image", work.image},
               {"sha256", work.sha256},
               {"address", work.address},
               {"size", work.size}};
  if (work.backup) {
    json["backup"] = {{"file", work.backup->file},
                      {"address", work.backup->address},
                      {"size", work.backup->size},
                      {"sha256", work.backup->sha256}};
  }
  json["half_used"] = Json::array();
  for (const SectorRecord& record : work.half_used) {
    json["half_used"].push_back({{"address", record.address},
                                 {"original", HexBytes(record.original)},
                                 {"planned", HexBytes(record.planned)}});
  }
  json["seen"] = Json::array();
  for (const SeenSector& seen : work.seen) {
    json["seen"].push_back({{"address", seen.address}, {"sha256", seen.sha256}});
  }
  return json;
}

std::vector<std::uint8_t> SectorBytes(const Json& text) {
  const auto bytes = ParseHexBytes(text.get<std::string>());
  if (!bytes || bytes->size() != kSectorSize) {
    throw std::invalid_argument("a sector has no 4096 bytes");
  }
  return *bytes;
}

UnfinishedWork WorkFromJson(const Json& json) {
  UnfinishedWork work{.image = json.at("image").get<std::string>(),
                      .sha256 = json.at("sha256").get<std::string>(),
                      .address = json.at("address").get<std::uint32_t>(),
                      .size = json.at("size").get<std::uint64_t>(),
                      .backup = std::nullopt,
                      .half_used = {},
                      .seen = {}};
  if (const auto backup = json.find("backup"); backup != json.end()) {
    work.backup = BackupRecord{
        backup->at("file").get<std::string>(), backup->at("address").get<std::uint32_t>(),
        backup->at("size").get<std::uint64_t>(), backup->at("sha256").get<std::string>()};
  }
  for (const Json& record : json.at("half_used")) {
    if (record.at("address").get<std::uint32_t>() % kSectorSize != 0) {
      throw std::invalid_argument("an address begins no sector");
    }
    work.half_used.push_back({record.at("address").get<std::uint32_t>(),
                              SectorBytes(record.at("original")),
                              SectorBytes(record.at("planned"))});
  }
  for (const Json& seen : json.at("seen")) {
    work.seen.push_back(
        {seen.at("address").get<std::uint32_t>(), seen.at("sha256").get<std::string>()});
  }
  return work;
}

[[noreturn]] void Unusable(const std::string& file, const std::string& why) {
  throw Failure(
      ExitCode::kFile,
      "can't use " + file + ": " + why + "; it may hold bytes of the flash that are nowhere else",
      "If no programming of this camera was cut off, remove the file.");
}

}  // namespace

std::string CameraInFileName(const CameraIdentity& camera) {
  const std::vector<std::uint8_t> path(camera.path.begin(), camera.path.end());
  return camera.vid + "-" + camera.pid + "-" + Sha256(path).substr(0, kPathDigits);
}

std::string JournalName(const std::string& neighbour, const CameraIdentity& camera) {
  const std::size_t slash = neighbour.find_last_of("/\\");
  const std::string folder = slash == std::string::npos ? "" : neighbour.substr(0, slash + 1);
  return folder + "borvanusb-" + CameraInFileName(camera) + ".journal";
}

Journal LoadJournal(const std::string& file, const CameraIdentity& camera) {
  Journal journal{camera.path, {}};
  if (!FileExists(file)) {
    return journal;
  }
  const std::string text = ReadWholeText(file);
  try {
    const Json json = Json::parse(text);
    if (json.at("borvanusb_journal").get<int>() != kFormat) {
      Unusable(file, "another version of borvanusb wrote it");
    }
    if (json.at("camera").get<std::string>() != camera.path) {
      Unusable(file, "it is of another camera");
    }
    for (const Json& work : json.at("works")) {
      journal.works.push_back(WorkFromJson(work));
    }
  } catch (const std::invalid_argument& error) {
    Unusable(file, error.what());
  } catch (const Json::exception&) {
    Unusable(file, "it is no journal");
  }
  return journal;
}

void SaveJournal(const std::string& file, const Journal& journal) {
  if (journal.works.empty()) {
    RemoveFile(file);
    return;
  }
  Json json = {{"borvanusb_journal", kFormat}, {"camera", journal.camera}};
  json["works"] = Json::array();
  for (const UnfinishedWork& work : journal.works) {
    json["works"].push_back(ToJson(work));
  }
  WriteWholeText(file, json.dump(1, ' ', false, Json::error_handler_t::replace));
}
