#include "flash/report.h"

#include <nlohmann/json.hpp>

#include "base/format.h"
#include "base/time_text.h"
#include "base/version.h"
#include "camera/camera_json.h"

namespace borvanusb {

using Json = nlohmann::ordered_json;

Json ToJson(const Ranges& ranges) {
  Json json = Json::array();
  for (const Range& range : ranges) {
    json.push_back({{"first", range.first}, {"last", range.last}});
  }
  return json;
}

Json ToJson(const std::vector<PlacedImage>& images) {
  Json json = Json::array();
  for (const PlacedImage& image : images) {
    json.push_back({{"file", image.file},
                    {"format", NameOf(image.form)},
                    {"region", image.region.empty() ? Json() : Json(image.region)},
                    {"size", image.size},
                    {"sha256", image.sha256},
                    {"places", ToJson(image.places)}});
  }
  return json;
}

Json ToJson(const ProgramOutcome& outcome, const WorkState& state) {
  Json json;
  json["camera"] = outcome.camera ? CameraJson(*outcome.camera) : Json();
  json["image"] = {
      {"file", outcome.image_file}, {"size", outcome.image_size}, {"sha256", outcome.image_sha256}};
  json["address"] = outcome.address;
  json["images"] = ToJson(outcome.images);
  json["flash_size"] = outcome.flash_size ? Json(*outcome.flash_size) : Json();
  json["dry_run"] = outcome.dry_run;
  json["sectors"] = outcome.sectors;
  json["changed"] = ToJson(outcome.changes);
  json["changed_bytes"] = TotalSize(outcome.changes);
  json["transfers"] = outcome.transfers;
  json["expected_seconds"] = outcome.expected_seconds;
  json["backup"] = outcome.backup.empty() ? Json() : Json(outcome.backup);
  json["verified"] = outcome.verified ? Json(*outcome.verified) : Json();
  json["state"] = state.Name();
  const WorkState::Parts parts = state.GetParts();
  json["written"] = ToJson(parts.written);
  json["unfinished"] = ToJson(parts.unfinished);
  json["remaining"] = ToJson(parts.remaining);
  json["wrong"] = ToJson(parts.wrong);
  json["started"] = TimeText(outcome.started);
  json["finished"] = TimeText(outcome.finished);
  json["seconds"] = {{"read", outcome.read_seconds},
                     {"program", outcome.program_seconds},
                     {"verify", outcome.verify_seconds},
                     {"total", outcome.total_seconds}};
  json["tags"] = Json::object();
  for (const auto& [name, value] : outcome.tags) {
    json["tags"][name] = value;
  }
  json["computer"] = outcome.computer.empty() ? Json() : Json(outcome.computer);
  json["tool_version"] = kToolVersion;
  json["library_version"] =
      outcome.library_version.empty() ? Json() : Json(outcome.library_version);
  json["profile"] = outcome.profile_file.empty()
                        ? Json()
                        : Json({{"file", outcome.profile_file}, {"name", outcome.profile_name}});
  json["result"] = KindOf(outcome.code);
  json["exit_code"] = static_cast<int>(outcome.code);
  json["message"] = outcome.message;
  json["hint"] = outcome.hint;
  return json;
}

std::string SecondsText(double seconds) {
  return Format("{:.{}f} s", seconds, seconds < 10 ? 2 : 1);
}

}  // namespace borvanusb
