// The command `reg read`.

#include "registers/read.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/chip_register.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "camera/host.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "names/register_text.h"
#include "names/register_words.h"
#include "output/output.h"
#include "registers/register_options.h"
#include "registers/register_read.h"

namespace borvanusb {

namespace {

void TellBlocks(const RegisterReading& reading, Context& context) {
  if (!reading.checked) {
    context.output.Note(kReadInBlocksNote);
  }
}

ExitCode ReadWords(const RegReadCommand& command, Context& context) {
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  std::shared_ptr<const RegisterNames> names;
  if (HasNames(command.words)) {
    names = NamesNeededFor(FirstName(command.words), identity, context);
  }
  const std::vector<WordTarget> targets =
      TargetsOf(command.words, names.get(), {command.wide, std::nullopt});
  const auto camera = context.host.OpenCamera(identity);
  const RegisterReading reading = ReadAll(AccessesOf(targets), *camera, context);
  TellBlocks(reading, context);
  PrintValues(targets, reading.values, true, context.output);
  auto list = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < targets.size(); ++i) {
    list.push_back(ValueJson(targets[i], reading.values[i]));
  }
  context.result = {
      {"wide", command.wide}, {"checked", reading.checked}, {"registers", std::move(list)}};
  return ExitCode::kDone;
}

}  // namespace

ExitCode Run(const RegReadCommand& command, Context& context) {
  if (command.words.size() > 1 || HasNames(command.words)) {
    return ReadWords(command, context);
  }
  const auto camera = OpenChosenCamera(context);
  const RegisterRead read = ReadRegisters(context, *camera, command.range, command.wide);
  for (std::size_t i = 0; i < read.values.size(); ++i) {
    context.output.Line(Format("{}  {}", Hex(command.range.first + i, kAddressDigits),
                               Hex(read.values[i], ValueDigits(command.wide))));
  }
  context.result = {{"wide", command.wide},
                    {"checked", read.checked},
                    {"registers", ValuesJson(command.range, read.values)}};
  return ExitCode::kDone;
}

CommandRule RegReadRule() {
  RuleOf<RegReadCommand> rule({"reg", "read"}, "Reads registers of the camera's chip or by name.");
  rule.Add(NamesOf("registers", Repeated(Required(Argument("WHAT", kWhatText)))),
           [](RegReadCommand& command, const std::string& text) {
             command.words.push_back(RegisterWord(text));
             if (command.words.size() == 1 && IsNumberWord(text)) {
               command.range = RangeValue(text);
             }
           });
  rule.AddFlag("--wide", "numbers mean registers of 32 bits instead of 8", &RegReadCommand::wide);
  rule.Details(kNamesText);
  rule.Example("borvanusb reg read 0x1a3");
  rule.Example("borvanusb reg read SENSOR.EXPOSURE \"SENSOR.GAIN*\"");
  return rule.Take();
}

}  // namespace borvanusb
