// The command `reg write`.

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/chip_register.h"
#include "base/failure.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "camera/host.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "names/register_words.h"
#include "names/write_settings.h"
#include "output/output.h"
#include "registers/masked_write.h"
#include "registers/register_options.h"
#include "registers/register_read.h"
#include "registers/write.h"

namespace borvanusb {

namespace {

bool IsSetting(const std::string& word) {
  return word.find('=') != std::string::npos;
}

// Parses "ADDR VALUE" with a name instead of the address, or settings.
std::vector<RegisterSetting> SettingsOf(const RegWriteCommand& command,
                                        const RegisterNames* names) {
  const NumberMeaning numbers{command.wide, std::nullopt};
  if (!IsSetting(command.words.front())) {
    return {MakeSetting(command.words[0], command.words[1], names, numbers)};
  }
  std::vector<RegisterSetting> settings;
  for (const std::string& word : command.words) {
    settings.push_back(ParseSetting(word, names, numbers));
  }
  return MergeSettings(std::move(settings), true);
}

ExitCode WriteWords(const RegWriteCommand& command, Context& context) {
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  std::vector<std::string> places;
  for (const std::string& word : command.words) {
    places.push_back(word.substr(0, word.find('=')));
  }
  if (!IsSetting(command.words.front())) {
    places.resize(1);
  }
  std::shared_ptr<const RegisterNames> names;
  if (HasNames(places)) {
    names = NamesNeededFor(FirstName(places), identity, context);
  }
  const std::vector<RegisterSetting> settings = SettingsOf(command, names.get());
  const auto reservation = context.host.ReserveCamera(identity);
  const auto camera = context.host.OpenCamera(identity);
  context.result = {{"wide", command.wide}};
  WriteSettings(settings, command.verify, *camera, context);
  return ExitCode::kDone;
}

void StoreWord(RegWriteCommand& command, const std::string& text) {
  const std::string place = text.substr(0, text.find('='));
  command.words.push_back(text);
  if (IsSetting(text)) {
    RegisterWord(place);
  } else if (command.words.size() == 1) {
    command.address = MayBeName(text) ? 0 : AddressValue(text);
  } else if (command.words.size() == 2 && IsNumberWord(command.words.front())) {
    command.value = WordValue(text);
  }
}

void CheckWords(const RegWriteCommand& command) {
  const std::vector<std::string>& words = command.words;
  const auto settings = std::ranges::count_if(words, IsSetting);
  if (settings == 0 && words.size() == 1) {
    throw WrongUse("reg write: VALUE is missing: what to write");
  }
  if (settings == 0 && words.size() > 2) {
    throw WrongUse(
        Format("reg write: {} is one argument too many; several registers are written as "
               "NAME=VALUE NAME=VALUE",
               Quoted(words[2])));
  }
  if (settings > 0 && static_cast<std::size_t>(settings) != words.size()) {
    throw WrongUse(Format("reg write: {} has no value: all words must be settings, NAME=VALUE",
                          Quoted(*std::ranges::find_if_not(words, IsSetting))));
  }
  if (command.mask && (settings > 0 || HasNames({words.front()}))) {
    throw WrongUse(
        "--mask: is for one register that is given by its number; a field of a "
        "register is written by its name");
  }
}

}  // namespace

ExitCode Run(const RegWriteCommand& command, Context& context) {
  if (!command.words.empty() &&
      (IsSetting(command.words.front()) || HasNames({command.words[0]}))) {
    return WriteWords(command, context);
  }
  const RegisterWidth width = command.wide ? RegisterWidth::kWide : RegisterWidth::kByte;
  const RegisterWrite write{command.address,
                            command.value,
                            command.mask,
                            command.verify,
                            Format("register {}", Hex(command.address, kAddressDigits)),
                            kAddressDigits,
                            ValueDigits(command.wide)};
  CheckMask(write);
  const ReservedCamera camera = ReserveChosenCamera(context);
  context.result = {{"wide", command.wide}};
  WriteMasked(
      write, [&] { return camera->ReadRegister(command.address, width); },
      [&](std::uint32_t value) { camera->WriteRegister(command.address, value, width); }, context);
  return ExitCode::kDone;
}

CommandRule RegWriteRule() {
  RuleOf<RegWriteCommand> rule({"reg", "write"},
                               "Writes registers of the camera's chip or by name.");
  rule.Add(NamesOf("settings",
                   Repeated(Argument("WHAT",
                                     "a register and what to write: 0x1a3 0x20, or settings: "
                                     "0x1a3=0x20 SENSOR.GAIN=3 SENSOR.CTRL.MODE=hdr"))),
           StoreWord);
  rule.AddFlag("--wide", "numbers mean registers of 32 bits instead of 8", &RegWriteCommand::wide);
  AddMaskAndVerify(rule);
  rule.Check([](const RegWriteCommand& command, const GivenOptions&) {
    CheckWords(command);
    if (!command.wide) {
      const std::string where = "a register of 8 bits without --wide";
      CheckFits("VALUE", command.value, kByteBits, where);
      CheckFits("--mask", command.mask.value_or(0), kByteBits, where);
    }
  });
  rule.Refuse("--progress", kNoProgress);
  rule.Details(
      "Of a register's fields only those that are named change; it is read first and written once. "
      "Values are numbers or the names that the profile gives to a field's values.");
  rule.Example("borvanusb reg write 0x1a3 0x20 --mask 0x20 --verify");
  rule.Example("borvanusb reg write SENSOR.CTRL.GAIN=0x10 SENSOR.CTRL.MODE=hdr --verify");
  return rule.Take();
}

}  // namespace borvanusb
