#include <map>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/failure.h"
#include "base/format.h"
#include "base/width_modes.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "i2c/i2c_options.h"
#include "i2c/scan.h"
#include "output/output.h"
#include "output/progress.h"
#include "registers/register_options.h"

namespace borvanusb {

namespace {

constexpr std::uint32_t kRow = 16;
constexpr std::uint32_t kHighestSlave = 0xFF;

using Answers = std::map<std::uint32_t, std::uint32_t>;  // value by slave

// An empty bus looks like this to many chips.
const char* Doubt(std::uint32_t value, const WidthMode& mode) {
  if (value == 0) {
    return "zeros";
  }
  return value == mode.highest_value ? "ones" : "";
}

// Whether the camera itself is still there, when slaves stop to answer.
void RequireCamera(Camera& camera) {
  try {
    camera.ReadRegister(kFeatureRegister, RegisterWidth::kByte);
  } catch (const Failure& failure) {
    throw Failure(
        failure.Code(),
        Format("while scanning, the camera itself stopped answering: {}", failure.Message()),
        failure.Hint());
  }
}

// What a slave answers; nothing when it does not answer twice, as one transfer can go wrong.
std::optional<std::uint32_t> AnswerOf(Camera& camera, const I2cTarget& target,
                                      std::uint32_t address, Context& context) {
  for (int i = 0; i < 2; ++i) {
    try {
      return camera.ReadI2c(target, address);
    } catch (const Failure& failure) {
      if (failure.Code() != ExitCode::kDevice) {
        throw;
      }
      context.output.Detail(Format("slave {}: {}", Hex(target.slave, 2), failure.Message()));
    }
  }
  return std::nullopt;
}

Answers Scan(const I2cScanCommand& command, Camera& camera, Context& context) {
  Answers answers;
  I2cTarget target{0, command.i2c.mode, command.i2c.option};
  context.progress.Begin("scan", command.slaves.Size(), ProgressUnit::kSlaves);
  for (std::uint32_t slave = command.slaves.first; slave <= command.slaves.last; ++slave) {
    target.slave = slave;
    const auto answer = AnswerOf(camera, target, command.address, context);
    if (answer) {
      answers[slave] = *answer;
    }
    // A camera that is gone fails as an empty bus does.
    if (!answer && (slave % kRow == kRow - 1 || slave == command.slaves.last)) {
      RequireCamera(camera);
    }
    context.progress.Advance(slave - command.slaves.first + 1);
  }
  context.progress.Done();
  return answers;
}

std::string Cell(std::uint32_t slave, const I2cScanCommand& command, const Answers& answers) {
  if (slave < command.slaves.first || slave > command.slaves.last) {
    return "   ";
  }
  const auto answer = answers.find(slave);
  if (answer == answers.end()) {
    return " --";
  }
  const bool doubtful = *Doubt(answer->second, WidthModeOf(command.i2c.mode)) != '\0';
  return doubtful ? " ??" : Format(" {}", Hex(slave, 2).substr(2));
}

void PrintGrid(const I2cScanCommand& command, const Answers& answers, Output& output) {
  std::string head = "    ";
  for (std::uint32_t column = 0; column < kRow; ++column) {
    head += Format("  {}", Hex(column).substr(2));
  }
  output.Line(head);
  for (std::uint32_t row = 0; row <= kHighestSlave; row += kRow) {
    std::string line = Hex(row, 2);
    for (std::uint32_t column = 0; column < kRow; ++column) {
      line += Cell(row + column, command, answers);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    output.Line(line);
  }
  output.Line("-- no answer   ?? only zeros or only ones");
}

void PrintList(const I2cScanCommand& command, const Answers& answers, Output& output) {
  const WidthMode& mode = WidthModeOf(command.i2c.mode);
  output.Line("");
  for (const auto& [slave, value] : answers) {
    const std::string doubt = Doubt(value, mode);
    output.Line(Format(
        "{}  {}{}", Hex(slave, 2), Hex(value, mode.value_digits),
        doubt.empty() ? "" : Format("  answers, but only {}: maybe nothing is there", doubt)));
  }
  if (answers.empty()) {
    output.Line("no slave answers");
  }
}

}  // namespace

ExitCode Run(const I2cScanCommand& command, Context& context) {
  if (command.slaves.last > kHighestSlave) {
    throw Failure(ExitCode::kUsage, Format("--slaves: {} goes beyond 0xff", Text(command.slaves)),
                  "Slave addresses are 0 to 0xff, as the chip takes them.");
  }
  const ReservedCamera camera = ReserveChosenCamera(context);
  const std::string question = Format(
      "This reads register {} of {}. Reading can disturb a device, such as one that clears a "
      "register when it is read. Continue?",
      Hex(command.address), Count(command.slaves.Size(), "slave"));
  if (!command.yes && !context.host.Ask(question)) {
    throw Failure(ExitCode::kStopped, "nothing was read",
                  "Answer y to continue, or use --yes if no user can answer.");
  }
  const Answers answers = Scan(command, *camera.camera, context);
  PrintGrid(command, answers, context.output);
  PrintList(command, answers, context.output);
  const WidthMode& mode = WidthModeOf(command.i2c.mode);
  auto list = nlohmann::ordered_json::array();
  for (const auto& [slave, value] : answers) {
    const std::string doubt = Doubt(value, mode);
    list.push_back(
        {{"slave", slave},
         {"value", value},
         {"doubt", doubt.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(doubt)}});
  }
  context.result = {
      {"first", command.slaves.first}, {"last", command.slaves.last}, {"mode", mode.name},
      {"option", command.i2c.option},  {"address", command.address},  {"answers", std::move(list)}};
  return ExitCode::kDone;
}

CommandRule I2cScanRule() {
  RuleOf<I2cScanCommand> rule({"i2c", "scan"}, "Finds the devices that answer on the I2C bus.");
  rule.Add(Option("--slaves", "RANGE", "which addresses to ask, default 0-255"),
           [](I2cScanCommand& command, const std::string& text) {
             const Range slaves = RangeValue(text);
             if (slaves.last > HighestOf(kByteBits)) {
               throw WrongValue("is not allowed: device addresses go from 0 to 255");
             }
             command.slaves = slaves;
           });
  rule.Add(Option("--address", "A", "register that is read from each, default 0"),
           [](I2cScanCommand& command, const std::string& text) {
             command.address = AddressValue(text);
           });
  AddMode(rule);
  AddOption(rule);
  rule.AddFlag("--yes", "don't ask first; reading can upset some devices", &I2cScanCommand::yes);
  rule.Check([](const I2cScanCommand& command, const GivenOptions&) {
    CheckI2cAddress("--address", command.address, command.i2c);
  });
  rule.Example("borvanusb i2c scan --slaves 0x20-0x7f --yes");
  return rule.Take();
}

}  // namespace borvanusb
