// reg read

#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "output/output.h"
#include "registers/masked_write.h"
#include "registers/read.h"
#include "registers/register_options.h"
#include "registers/register_read.h"

namespace borvanusb {

namespace {

constexpr int kAddressDigits = 4;

int ValueDigits(bool wide) {
  return wide ? 8 : 2;
}

}  // namespace

ExitCode Run(const RegReadCommand& command, Context& context) {
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
  RuleOf<RegReadCommand> rule({"reg", "read"}, "Reads registers of the camera's chip.");
  AddRange(rule, "ADDR[-END]");
  rule.AddFlag("--wide", "registers of 32 bits instead of 8", &RegReadCommand::wide);
  rule.Example("borvanusb reg read 0x1a3");
  return rule.Take();
}

}  // namespace borvanusb
