#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/failure.h"
#include "base/format.h"
#include "base/width_modes.h"
#include "camera/i2c_failure.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/standard_streams.h"
#include "i2c/i2c_list.h"
#include "i2c/i2c_options.h"
#include "i2c/load.h"
#include "output/output.h"
#include "output/progress.h"
#include "registers/list_problems.h"
#include "registers/list_verify.h"
#include "registers/load_several.h"
#include "registers/register_options.h"

namespace borvanusb {

namespace {

// Whether the width mode can't be expressed in a list.
bool IsBeyondLists(const I2cOptions& options) {
  return !WidthModeOf(options.mode).list_code;
}

// Checks that the list or the options name the device. Throws kUsage if they contradict each other.
void CheckDevice(const I2cLoadCommand& command, const CheckedI2cList& checked, Context& context) {
  if (!checked.opens_itself && !command.i2c.slave) {
    throw Failure(
        ExitCode::kUsage,
        Format("--slave: {} does not begin with 0xfff8 and 0xfffe, so it does not name its device",
               ShownName(command.file, kStandardInput)),
        "Give --slave and --mode, or put the two lines at the beginning of the list.");
  }
  if (!checked.opens_itself) {
    return;
  }
  if (IsBeyondLists(command.i2c)) {
    throw Failure(
        ExitCode::kUsage,
        Format("--mode: {} begins with 0xfff8, which sets a width other than {}",
               ShownName(command.file, kStandardInput), WidthModeOf(command.i2c.mode).name),
        "Remove the lines 0xfff8 and 0xfffe, or omit --mode.");
  }
  if (command.i2c.slave && checked.slave && *command.i2c.slave != *checked.slave) {
    context.output.Note(Format("note: {} names its device itself, slave {}; --slave is ignored",
                               ShownName(command.file, kStandardInput), Hex(*checked.slave, 2)));
  }
}

// Removes options that come only from a profile, because the list may name another device.
I2cLoadCommand WithoutDefaults(I2cLoadCommand command, const Context& context) {
  for (const std::string& option : context.common.defaulted) {
    if (option == "--slave") {
      command.i2c.slave.reset();
    } else if (option == "--mode") {
      command.i2c.mode = I2cOptions().mode;
    }
  }
  return command;
}

// The slave of the whole list. Returns nothing if there are several.
std::optional<std::uint32_t> OnlySlave(const CheckedI2cList& checked) {
  const bool one = std::ranges::all_of(checked.list.entries, [&](const ListEntry& entry) {
    return entry.address != kSlaveMarker || entry.value == checked.slave;
  });
  return one ? checked.slave : std::nullopt;
}

// Writes registers of 32 bits, which the library's lists can't contain.
void WriteEntries(const std::vector<ListEntry>& entries, const I2cTarget& target, Camera& camera,
                  Context& context) {
  context.progress.Begin("write", entries.size(), ProgressUnit::kEntries);
  std::uint64_t done = 0;
  for (const ListEntry& entry : entries) {
    if (entry.address == kPauseMarker) {
      context.host.Sleep(std::chrono::milliseconds(entry.value));
    } else if (!IsPassedOver(entry.address)) {
      try {
        ExplainingI2c(camera, target, [&] { camera.WriteI2c(target, entry.address, entry.value); });
      } catch (const Failure& failure) {
        throw Failure(failure.Code(),
                      Format("line {}, register {}: {}; the lines before it are written",
                             entry.line, Hex(entry.address), failure.Message()),
                      failure.Hint());
      }
    }
    context.progress.Advance(++done);
  }
  context.progress.Done();
}

}  // namespace

ExitCode Run(const I2cLoadCommand& command, Context& context) {
  const std::string name = ShownName(command.file, kStandardInput);
  const std::optional<I2cTarget> given =
      command.i2c.slave ? std::optional(TargetOf(command.i2c)) : std::nullopt;
  const CheckedI2cList checked = CheckI2cList(ReadTextOrInput(command.file, context.host), given);
  CheckDevice(checked.opens_itself ? WithoutDefaults(command, context) : command, checked, context);
  if (command.check_only) {
    const ExitCode code = ReportCheck("i2c load", name, checked.list, checked.registers, context);
    context.result["file"] = command.file;
    return code;
  }
  RequireGoodList(name, checked.list, "nothing was sent", context);
  NoteRemarks(name, checked.list, context);
  if (IsForSeveral(command.all, context)) {
    return LoadForSeveral(command.all, context);
  }
  const ReservedCamera camera = ReserveChosenCamera(context);
  const std::vector<ListEntry>& entries = checked.list.entries;
  const std::optional<I2cTarget> opening = checked.opens_itself ? std::nullopt : given;
  if (opening && IsBeyondLists(command.i2c)) {
    WriteEntries(entries, *opening, *camera.camera, context);
  } else {
    const auto write = [&] {
      camera->WriteI2cList(I2cListText(entries, opening), command.i2c.option);
    };
    if (const std::optional<std::uint32_t> slave = OnlySlave(checked)) {
      ExplainingI2c(*camera.camera, {*slave, 0, 0}, write);
    } else {
      write();
    }
  }
  context.result = LoadJson(command.file, checked.list, checked.registers, true);
  const std::string written =
      Format("{} written from {}", Count(checked.registers, "register"), name);
  if (!command.verify) {
    context.output.Line(written);
    return ExitCode::kDone;
  }
  const ReadBack read_back =
      ReadBackI2c(WrittenByI2cList(entries, opening), command.i2c.option, *camera.camera, context);
  context.output.Line(written + ReadBackText(read_back));
  return ReportReadBack("i2c load", name, read_back, context);
}

CommandRule I2cLoadRule() {
  RuleOf<I2cLoadCommand> rule({"i2c", "load"}, "Writes the registers of an I2C list.");
  AddList(rule);
  AddAll(rule);
  AddSlave(rule, false);
  AddMode(rule);
  AddOption(rule);
  rule.Check([](const I2cLoadCommand& command, const GivenOptions& given) {
    CheckCheckOnly(command, given);
    CheckVerify(command);
    CheckLoadForSeveral(command, given);
  });
  rule.Details("--slave and --mode are for a list that does not begin with its own.");
  rule.Example("borvanusb i2c load sensor.txt --check-only");
  return rule.Take();
}

}  // namespace borvanusb
