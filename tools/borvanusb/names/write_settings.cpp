#include "names/write_settings.h"

#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "command/camera_work.h"
#include "names/field_value.h"
#include "names/register_text.h"
#include "output/output.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

std::string ValueOf(const RegisterSetting& setting, std::uint64_t value) {
  return setting.named != nullptr ? ValueText({setting.named, nullptr}, value)
                                  : Hex(value, ValueDigits(setting.access));
}

void PrintWritten(const RegisterSetting& setting, const WrittenSetting& written, Output& output) {
  const std::string name = setting.named != nullptr ? Format("{}  ", setting.named->name) : "";
  const std::string before =
      written.before ? Format("{} -> ", ValueOf(setting, *written.before)) : "";
  output.Line(Format("{}{}  {}{}{}", name, AddressText(setting.access), before,
                     ValueOf(setting, written.value), written.verified ? "  verified" : ""));
  for (const NamedTarget& target : setting.targets) {
    if (target.field == nullptr) {
      continue;
    }
    const std::uint64_t now = PartOf(target, written.value);
    const std::string old =
        written.before ? Format("{} -> ", ValueText(target, PartOf(target, *written.before))) : "";
    const std::string meaning = MeaningOf(*target.field, now);
    output.Line(Format("  {}  {}{}{}", target.field->name, old, ValueText(target, now),
                       meaning.empty() ? "" : Format("  {}", meaning)));
  }
}

Json WrittenJson(const RegisterSetting& setting, const WrittenSetting& written) {
  return {{"name", setting.named != nullptr ? Json(setting.named->name) : Json()},
          {"address", setting.access.address},
          {"device", DeviceJson(setting.access)},
          {"before", written.before ? Json(*written.before) : Json()},
          {"value", written.value},
          {"verified", written.verified}};
}

}  // namespace

void WriteSettings(std::span<const RegisterSetting> settings, bool verify, Camera& camera,
                   Context& context) {
  for (const RegisterSetting& setting : settings) {
    CheckSetting(setting);
  }
  Json& writes = context.result["writes"] = Json::array();
  for (const RegisterSetting& setting : settings) {
    try {
      const WrittenSetting written = WriteSetting(setting, verify, camera, context);
      PrintWritten(setting, written, context.output);
      if (verify && !written.verified) {
        context.output.Note(Format("note: {} can't be read back: what was written is not confirmed",
                                   setting.Name()));
      }
      writes.push_back(WrittenJson(setting, written));
    } catch (const Failure& failure) {
      if (settings.size() == 1) {
        throw;
      }
      throw Failure(failure.Code(),
                    Format("{} (registers written before: {} of {})", failure.Message(),
                           writes.size(), settings.size()),
                    failure.Hint());
    }
  }
}

}  // namespace borvanusb
