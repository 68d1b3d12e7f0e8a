#include "names/diff_sources.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "camera/host.h"
#include "command/camera_work.h"
#include "names/field_value.h"
#include "names/presets.h"
#include "names/register_text.h"
#include "names/register_words.h"
#include "output/columns.h"
#include "output/output.h"
#include "profile/profile_choice.h"
#include "profile/profile_folder.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view kCamera = "camera";
constexpr std::string_view kCameraColon = "camera:";
constexpr std::string_view kPresetColon = "preset:";

// Reads both sides of a comparison. Opens a camera only if a side needs one.
class Sides {
 public:
  Sides(const DiffSide& left, const DiffSide& right, const DiffFileReader& read_file,
        Context& context)
      : left_(left), right_(right), read_file_(read_file), context_(context) {}

  const RegisterNames* Names() const { return names_.get(); }

  // Reads both sides. From a camera, only the registers of the other side are read.
  std::pair<Snapshot, Snapshot> Read() {
    FindNames();
    const bool left_is_camera = left_.source == DiffSource::kCamera;
    const bool right_is_camera = right_.source == DiffSource::kCamera;
    if (left_is_camera && right_is_camera) {
      const auto all = ReadableRegisters(NeededNames());
      Snapshot left = ReadCamera(left_, all);
      return {std::move(left), ReadCamera(right_, all)};
    }
    Snapshot left = left_is_camera ? Snapshot() : ReadOther(left_);
    Snapshot right = right_is_camera ? Snapshot() : ReadOther(right_);
    if (left_is_camera) {
      left = ReadCamera(left_, Readable(right));
    } else if (right_is_camera) {
      right = ReadCamera(right_, Readable(left));
    }
    return {std::move(left), std::move(right)};
  }

 private:
  CameraIdentity IdentityOf(const DiffSide& side) const {
    return side.name.empty() ? ChosenCamera(context_.host, context_.common.cameras)
                             : ChooseCamera(context_.host.ListCameras(), side.name);
  }

  // Uses the names of the first camera that takes part. Without a camera, those of a given profile.
  void FindNames() {
    for (const DiffSide* const side : {&left_, &right_}) {
      if (side->source == DiffSource::kCamera) {
        names_ = NamesFor(IdentityOf(*side), context_);
        return;
      }
    }
    const std::string given = GivenProfile(context_.common, context_.host);
    if (!given.empty()) {
      names_ = std::make_shared<const RegisterNames>(LoadProfile(given));
    }
  }

  const RegisterNames& NeededNames() {
    if (names_ == nullptr) {
      names_ = NamesNeeded(ChosenCamera(context_.host, context_.common.cameras), context_);
    }
    return *names_;
  }

  Snapshot ReadOther(const DiffSide& side) {
    switch (side.source) {
      case DiffSource::kReset:
        return ResetSnapshot(NeededNames());
      case DiffSource::kPreset: {
        const RegisterNames& names = NeededNames();
        const ProfilePreset& preset = FindPreset(names.Profile(), side.name);
        return preset.file.empty() ? SnapshotOf(SettingsOf(preset, names))
                                   : read_file_(preset.file, &names);
      }
      case DiffSource::kFile: {
        const std::string text = ReadWholeText(side.name);
        if (IsSettingsText(text)) {
          return SnapshotOf(ComparableSettings(side.name, text, NeededNames()));
        }
        return read_file_(side.name, names_.get());
      }
      case DiffSource::kCamera:
        break;
    }
    return {};
  }

  // The registers of the other side that can be read without changing them.
  std::vector<WordTarget> Readable(const Snapshot& other) const {
    std::vector<WordTarget> registers = RegistersOf(other, names_.get());
    std::erase_if(registers, [](const WordTarget& target) {
      return target.target.of != nullptr &&
             (target.access.read_once || !CanRead(target.target.of->in_map->form->access));
    });
    return registers;
  }

  Snapshot ReadCamera(const DiffSide& side, const std::vector<WordTarget>& registers) const {
    const auto camera = context_.host.OpenCamera(IdentityOf(side));
    return ReadSnapshot(registers, *camera, context_);
  }

  const DiffSide& left_;
  const DiffSide& right_;
  const DiffFileReader& read_file_;
  Context& context_;
  std::shared_ptr<const RegisterNames> names_;
};

std::string SideText(const SnapshotDifference& difference, std::optional<std::uint64_t> value) {
  const RegisterAccess& access = difference.at.access;
  const int digits = ValueDigits(access);
  return value ? Hex(*value, digits) : std::string(static_cast<std::size_t>(digits) + 2, '-');
}

// The fields that are known on both sides and differ.
std::vector<NamedTarget> DifferingFields(const SnapshotDifference& difference) {
  std::vector<NamedTarget> fields;
  if (difference.at.target.of == nullptr || !difference.left || !difference.right) {
    return fields;
  }
  const std::uint64_t changed = (*difference.left ^ *difference.right) & difference.bits;
  for (const MapField& field : difference.at.target.of->in_map->form->fields) {
    if ((BitsOf(field) & changed) != 0) {
      fields.push_back({difference.at.target.of, &field});
    }
  }
  return fields;
}

std::string FieldText(const NamedTarget& field, std::uint64_t value) {
  const std::string meaning = MeaningOf(*field.field, PartOf(field, value));
  return Format("{}{}", ValueText(field, PartOf(field, value)),
                meaning.empty() ? "" : Format(" ({})", meaning));
}

std::string NameOfDifference(const SnapshotDifference& difference) {
  return difference.at.target.of != nullptr ? difference.at.target.of->name : "";
}

void PrintDifferences(const std::vector<SnapshotDifference>& differences, Output& output) {
  std::size_t names = 0;
  std::size_t addresses = 0;
  for (const SnapshotDifference& difference : differences) {
    names = std::max(names, ColumnsOf(NameOfDifference(difference)));
    addresses = std::max(addresses, AddressText(difference.at.access).size());
  }
  for (const SnapshotDifference& difference : differences) {
    output.Line(Format("{}{}{}  {}  {}", Padded(NameOfDifference(difference), names),
                       names == 0 ? "" : "  ", Padded(AddressText(difference.at.access), addresses),
                       SideText(difference, difference.left),
                       SideText(difference, difference.right)));
    for (const NamedTarget& field : DifferingFields(difference)) {
      output.Line(Format("  {}  {}  {}", field.field->name, FieldText(field, *difference.left),
                         FieldText(field, *difference.right)));
    }
  }
}

Json OptionalJson(std::optional<std::uint64_t> value) {
  return value ? Json(*value) : Json();
}

Json MeaningJson(const NamedTarget& field, std::uint64_t value) {
  const std::string meaning = MeaningOf(*field.field, PartOf(field, value));
  return meaning.empty() ? Json() : Json(meaning);
}

Json DifferenceJson(const SnapshotDifference& difference) {
  Json json = {{"address", difference.at.access.address},
               {"left", OptionalJson(difference.left)},
               {"right", OptionalJson(difference.right)}};
  if (difference.at.target.of != nullptr || difference.at.access.on_i2c) {
    json["device"] = DeviceJson(difference.at.access);
  }
  if (difference.at.target.of == nullptr) {
    return json;
  }
  json["name"] = difference.at.target.of->name;
  auto fields = Json::array();
  for (const NamedTarget& field : DifferingFields(difference)) {
    fields.push_back({{"name", field.field->name},
                      {"left", PartOf(field, *difference.left)},
                      {"right", PartOf(field, *difference.right)},
                      {"left_meaning", MeaningJson(field, *difference.left)},
                      {"right_meaning", MeaningJson(field, *difference.right)}});
  }
  json["fields"] = std::move(fields);
  return json;
}

std::string CsvText(const std::vector<SnapshotDifference>& differences) {
  std::string text = "name,field,address,left,right\n";
  for (const SnapshotDifference& difference : differences) {
    text +=
        Format("{},,{},{},{}\n", NameOfDifference(difference), AddressText(difference.at.access),
               difference.left ? SideText(difference, difference.left) : "",
               difference.right ? SideText(difference, difference.right) : "");
    for (const NamedTarget& field : DifferingFields(difference)) {
      text += Format("{},{},{},{},{}\n", NameOfDifference(difference), field.field->name,
                     AddressText(difference.at.access),
                     ValueText(field, PartOf(field, *difference.left)),
                     ValueText(field, PartOf(field, *difference.right)));
    }
  }
  return text;
}

}  // namespace

DiffSide DiffSideOf(const std::string& text) {
  if (text == kCamera) {
    return {DiffSource::kCamera, text, ""};
  }
  if (text.starts_with(kCameraColon) && text.size() > kCameraColon.size()) {
    return {DiffSource::kCamera, text, text.substr(kCameraColon.size())};
  }
  if (text.starts_with(kPresetColon) && text.size() > kPresetColon.size()) {
    return {DiffSource::kPreset, text, text.substr(kPresetColon.size())};
  }
  if (text == "reset") {
    return {DiffSource::kReset, text, ""};
  }
  return {DiffSource::kFile, text, text};
}

ExitCode CompareSides(const std::string& command, const DiffSide& left, const DiffSide& right,
                      const std::string& csv, const DiffFileReader& read_file, Context& context) {
  if (!csv.empty()) {
    CheckWritable(csv);
  }
  Sides sides(left, right, read_file, context);
  const auto [left_values, right_values] = sides.Read();
  const std::vector<SnapshotDifference> differences =
      CompareSnapshots(left_values, right_values, sides.Names());
  PrintDifferences(differences, context.output);
  auto list = Json::array();
  for (const SnapshotDifference& difference : differences) {
    list.push_back(DifferenceJson(difference));
  }
  if (!csv.empty()) {
    WriteWholeText(csv, CsvText(differences));
  }
  if (differences.empty()) {
    context.output.Line(Format("no difference in {}",
                               Count(RegistersOf(left_values, sides.Names()).size(), "register")));
  } else {
    TellOutcome(context, command,
                Format("{} and {} differ in {}", left.text, right.text,
                       Count(differences.size(), "register")));
  }
  context.result = {{"left", left.text},
                    {"right", right.text},
                    {"equal", differences.empty()},
                    {"differences", std::move(list)}};
  return differences.empty() ? ExitCode::kDone : ExitCode::kVerify;
}

}  // namespace borvanusb
