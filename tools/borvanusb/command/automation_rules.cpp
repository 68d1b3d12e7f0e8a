// Commands that go on for a while, and those that serve scripts and shells.
#include "command/command_rules.h"
#include "command/values.h"
#include "i2c/i2c_options.h"

namespace borvanusb {

namespace {

void CheckWatch(const WatchCommand& command, const GivenOptions& given) {
  if (command.registers.empty() && command.i2c_registers.empty()) {
    throw WrongUse("watch: what to watch is missing: --reg RANGE, --i2c RANGE or both");
  }
  if (command.registers.empty() && command.wide) {
    throw WrongUse("--wide: is for the chip's registers; --reg must say which");
  }
  if (!command.i2c_registers.empty() && !command.i2c.slave) {
    throw WrongUse("--i2c: needs --slave N, the device's address on the bus, 0 to 255");
  }
  for (const char* const option : {"--slave", "--mode", "--option"}) {
    if (command.i2c_registers.empty() && given.Has(option)) {
      throw WrongUse(std::string(option) + ": is for registers over I2C; --i2c must say which");
    }
  }
  for (const Range& range : command.i2c_registers) {
    CheckI2cAddress("--i2c", range.last, command.i2c);
  }
}

CommandRule WatchRule() {
  RuleOf<WatchCommand> rule({"watch"}, "Polls registers and shows what changes.");
  rule.Add(Repeated(Option("--reg", "RANGE", "registers of the chip; may be given several times")),
           [](WatchCommand& command, const std::string& text) {
             command.registers.push_back(RangeValue(text));
           });
  rule.AddFlag("--wide", "--reg means registers of 32 bits", &WatchCommand::wide);
  rule.Add(Repeated(Option("--i2c", "RANGE", "registers of an I2C device; likewise")),
           [](WatchCommand& command, const std::string& text) {
             command.i2c_registers.push_back(RangeValue(text));
           });
  AddSlave(rule, false);
  AddMode(rule);
  AddOption(rule);
  rule.Add(Option("--rate", "N", "polls a second, 0.1 to 1000, default 2"),
           [](WatchCommand& command, const std::string& text) {
             command.rate = DecimalValue(text, 0.1, 1000);
           });
  rule.Add(Option("--count", "N", "stop after so many polls"),
           [](WatchCommand& command, const std::string& text) {
             command.count = NumberValue(text, 1, kHighestNumber);
           });
  rule.Add(
      File(Option("--csv", "FILE", "write what is shown to a file, too: first values and changes")),
      [](WatchCommand& command, const std::string& text) { command.csv = FileValue(text); });
  rule.Check(CheckWatch);
  rule.Refuse("--progress", kNoProgress);
  rule.Details("Goes on until Ctrl-C, or for --count polls.");
  rule.Example("borvanusb watch --reg 0x1a3 --i2c 0x3500-0x3502 --slave 0x6c --rate 10");
  return rule.Take();
}

CommandRule BenchRule() {
  RuleOf<BenchCommand> rule({"bench"}, "Measures how fast the camera answers.");
  rule.Add(Option("--rounds", "N", "transfers of each kind, 1 to 1000000, default 200"),
           [](BenchCommand& command, const std::string& text) {
             command.rounds = NumberValue(text, 1, 1000000);
           });
  AddSlave(rule, false);
  AddMode(rule);
  rule.Check([](const BenchCommand& command, const GivenOptions& given) {
    if (given.Has("--mode") && !command.i2c.slave) {
      throw WrongUse("--mode: says how to speak to a sensor; --slave must say to which");
    }
  });
  rule.Details("Gives transfers a second, and how long programming 1 MiB would take.");
  rule.Example("borvanusb bench --rounds 1000 --slave 0x6c");
  return rule.Take();
}

CommandRule RunRule() {
  RuleOf<RunCommand> rule({"run"}, "Runs a script: commands as written here, one a line.");
  rule.Add(File(Argument("FILE", "the script; # opens a remark, \"quotes\" hold blanks")),
           [](RunCommand& command, const std::string& text) { command.file = FileValue(text); });
  rule.AddFlag("--keep-going", "run the other lines too when one fails", &RunCommand::keep_going);
  rule.Details(
      "Words stand between blanks, and neither borvanusb nor a shell is part of a line. All lines "
      "are checked before the first one runs.");
  rule.Example("borvanusb run settings.txt");
  return rule.Take();
}

// Commands that print a text which the tool has in itself.
template <typename C>
void RefuseAllOfCameras(RuleOf<C>& rule) {
  constexpr std::string_view kNoCamera = "which uses no camera";
  rule.Refuse("--camera", kNoCamera);
  rule.Refuse("--timeout", kNoCamera);
  rule.Refuse("--trace", kNoCamera);
  rule.Refuse("--progress", kNoProgress);
  rule.Refuse("--verbose", kNoCamera);
}

CommandRule CompletionRule() {
  RuleOf<CompletionCommand> rule({"completion"}, "Prints a script that completes command lines.");
  rule.Add(Choices(Argument("SHELL", "bash or powershell"), {"bash", "powershell"}),
           [](CompletionCommand& command, const std::string& text) {
             command.shell = static_cast<Shell>(ChoiceValue(text, {"bash", "powershell"}));
           });
  rule.Details(
      "For bash: eval \"$(borvanusb completion bash)\" in ~/.bashrc. For PowerShell: borvanusb "
      "completion powershell | Out-String | Invoke-Expression in $PROFILE.");
  RefuseAllOfCameras(rule);
  rule.Example("borvanusb completion bash > ~/.borvanusb-completion");
  return rule.Take();
}

CommandRule ManualRule() {
  RuleOf<ManualCommand> rule({"manual"}, "Prints the manual page, for man.");
  RefuseAllOfCameras(rule);
  rule.Example("borvanusb manual > borvanusb.1");
  return rule.Take();
}

}  // namespace

CommandRules MeasuringRules() {
  return Grouped({WatchRule(), BenchRule()}, "Watching and measuring");
}

CommandRules AutomationRules() {
  return Grouped({RunRule(), CompletionRule(), ManualRule()}, "Scripts and shells");
}

}  // namespace borvanusb
