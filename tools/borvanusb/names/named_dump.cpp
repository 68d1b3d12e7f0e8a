#include "names/named_dump.h"

#include <nlohmann/json.hpp>

#include "base/files.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "camera/host.h"
#include "command/camera_work.h"
#include "names/field_value.h"
#include "names/register_text.h"
#include "names/register_words.h"
#include "names/snapshot.h"
#include "output/output.h"

namespace borvanusb {

namespace {

bool IsCsvName(const std::string& file) {
  return file.ends_with(".csv") || file.ends_with(".CSV");
}

std::string SettingsText(const CameraIdentity& camera, const CameraProfile& profile,
                         std::span<const WordTarget> targets,
                         std::span<const std::uint64_t> values) {
  std::string text =
      Format("# {} {}:{}, profile {}\n", camera.name, camera.vid, camera.pid, profile.name);
  for (std::size_t i = 0; i < targets.size(); ++i) {
    text += Format("{}={}\n", NameOf(targets[i].target), ValueText(targets[i].target, values[i]));
  }
  return text;
}

std::string CsvText(std::span<const WordTarget> targets, std::span<const std::uint64_t> values) {
  std::string text = "name,field,address,value,meaning\n";
  for (std::size_t i = 0; i < targets.size(); ++i) {
    const NamedRegister& named = *targets[i].target.of;
    const std::string address = AddressText(targets[i].access);
    text += Format("{},,{},{},\n", named.name, address, ValueText(targets[i].target, values[i]));
    for (const MapField& field : named.in_map->form->fields) {
      const NamedTarget part{&named, &field};
      const std::uint64_t value = PartOf(part, values[i]);
      text += Format("{},{},{},{},{}\n", named.name, field.name, address, ValueText(part, value),
                     MeaningOf(field, value));
    }
  }
  return text;
}

}  // namespace

ExitCode DumpNamed(const std::string& file, Context& context) {
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const auto names = NamesNeeded(identity, context);
  if (!file.empty()) {
    CheckWritable(file);
  }
  const std::vector<WordTarget> targets = ReadableRegisters(*names);
  const auto reservation = context.host.ReserveCamera(identity);
  const auto camera = context.host.OpenCamera(identity);
  const RegisterReading reading = ReadAll(AccessesOf(targets), *camera, context);
  if (!reading.checked) {
    context.output.Note(kReadInBlocksNote);
  }
  const bool csv = IsCsvName(file);
  WriteDump(context, file,
            csv ? CsvText(targets, reading.values)
                : SettingsText(identity, names->Profile(), targets, reading.values));
  if (!file.empty()) {
    context.output.Line(Format("{} in {}", Count(targets.size(), "register"), file));
  }
  context.result = {
      {"profile", names->Profile().file},
      {"checked", reading.checked},
      {"file", file.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(file)},
      {"form", csv ? "csv" : "settings"}};
  auto list = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < targets.size(); ++i) {
    list.push_back(ValueJson(targets[i], reading.values[i]));
  }
  context.result["registers"] = std::move(list);
  return ExitCode::kDone;
}

}  // namespace borvanusb
