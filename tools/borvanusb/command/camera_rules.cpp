// Commands about cameras as a whole, and the options of every command.
#include <cmath>

#include "command/command_rules.h"
#include "command/values.h"
#include "i2c/i2c_options.h"

namespace borvanusb {

namespace {

CommandRule ListRule() {
  RuleOf<ListCommand> rule({"list"}, "Lists the cameras with index, name, vid:pid and path.");
  rule.AddFlag("--watch", "go on and report cameras that come and go, until Ctrl-C",
               &ListCommand::watch);
  rule.Refuse("--camera", "which lists all cameras");
  rule.Refuse("--progress", kNoProgress);
  rule.Refuse("--trace", "which makes no transfers");
  rule.Example("borvanusb list");
  return rule.Take();
}

CommandRule InfoRule() {
  RuleOf<InfoCommand> rule({"info"}, "Tells identity, vendor unit and flash size of a camera.");
  rule.Add(Option("--flash-size", "SIZE", "size of the flash where it can't be told, such as 1M"),
           [](InfoCommand& command, const std::string& text) {
             command.flash_size = FlashSizeValue(text);
           });
  rule.Refuse("--progress", kNoProgress);
  rule.Example("borvanusb info --camera 1234:0001");
  return rule.Take();
}

CommandRule DoctorRule() {
  RuleOf<DoctorCommand> rule({"doctor"}, "Tells why a camera is not found, for a bug report.");
  rule.Refuse("--camera", "which examines all cameras");
  rule.Refuse("--progress", kNoProgress);
  rule.Example("borvanusb doctor > report.txt");
  return rule.Take();
}

CommandRule SelftestRule() {
  RuleOf<SelftestCommand> rule({"selftest"}, "Tries all that can be tried and changes nothing.");
  AddSlave(rule, false);
  AddMode(rule);
  rule.Check([](const SelftestCommand& command, const GivenOptions& given) {
    if (given.Has("--mode") && !command.i2c.slave) {
      throw WrongUse("--mode: says how to speak to a sensor; --slave must say to which");
    }
  });
  rule.Details(
      "Prints a table of what passed, failed and was skipped. The exit status is that of the worst "
      "failure. With --slave the sensor is tried too.");
  rule.Example("borvanusb selftest --slave 0x6c --mode 16/8");
  return rule.Take();
}

}  // namespace

CommandRules CameraRules() {
  return Grouped({ListRule(), InfoRule(), SelftestRule(), DoctorRule()}, "Cameras");
}

CommonRules MakeCommonRules() {
  CommonRules rules;
  const auto add = [&](OptionDescription option,
                       std::function<void(CommonArguments&, const std::string&)> store) {
    rules.options.push_back(std::move(option));
    rules.store.push_back(std::move(store));
  };
  add(Repeated(Option("--camera", "WHICH",
                      "a camera by index, path, vid:pid, name, or 3 or more characters of "
                      "path or name; needed when there are several")),
      [](CommonArguments& common, const std::string& text) {
        common.cameras.push_back(CameraValue(text));
      });
  add(Option("--timeout", "SECONDS", "give up when nothing moves for so long, default 10"),
      [](CommonArguments& common, const std::string& text) {
        constexpr double kMilliseconds = 1000;
        common.timeout =
            std::chrono::milliseconds(std::llround(DecimalValue(text, 0.1, 3600) * kMilliseconds));
      });
  add(Choices(Option("--progress", "HOW",
                     "auto (a bar on a terminal, else lines), bar, lines, json or none"),
              {"auto", "bar", "lines", "json", "none"}),
      [](CommonArguments& common, const std::string& text) {
        common.progress =
            static_cast<ProgressMode>(ChoiceValue(text, {"auto", "bar", "lines", "json", "none"}));
      });
  add(File(Option("--trace", "FILE", "write the transfers of virtual cameras to a file")),
      [](CommonArguments& common, const std::string& text) { common.trace = FileValue(text); });
  add(Flag("--json", "print the result as one JSON object"),
      [](CommonArguments& common, const std::string&) { common.json = true; });
  add(Flag("--quiet", "no progress and no remarks, only results and errors"),
      [](CommonArguments& common, const std::string&) { common.quiet = true; });
  add(Flag("--verbose", "report at the end which library, cameras and calls were used"),
      [](CommonArguments& common, const std::string&) { common.verbose = true; });
  OptionDescription help = Flag("-h", "tell about the tool or a command");
  help.names.emplace_back("--help");
  add(help, [](CommonArguments&, const std::string&) {});
  add(Flag("--version", "print the version"), [](CommonArguments&, const std::string&) {});
  return rules;
}

}  // namespace borvanusb
