// Commands on the chip's registers and on those behind its I2C bus.
#include "command/command_rules.h"
#include "command/values.h"
#include "i2c/i2c_options.h"
#include "i2c/width_modes.h"

namespace borvanusb {

namespace {

constexpr int kByteBits = 8;
constexpr const char* kRangeText = "0x1a3, or several: 0x1000-0x10ff, 0x1000+256";
constexpr const char* kMaskText = "change only the bits that are 1 in M; reads first";
constexpr const char* kVerifyText = "read back and compare";
constexpr const char* kDumpFileText = "file to write, as a list; else standard output";
constexpr const char* kVerifyListText = "read every register back and compare";
constexpr const char* kCheckText = "check the list and write nothing";

template <typename C>
void AddRange(RuleOf<C>& rule, std::string name) {
  rule.Add(Argument(std::move(name), kRangeText),
           [](C& command, const std::string& text) { command.range = RangeValue(text); });
}

template <typename C>
void AddDumpFile(RuleOf<C>& rule) {
  rule.Add(File(Optional(Argument("FILE", kDumpFileText))),
           [](C& command, const std::string& text) { command.file = FileValue(text); });
}

template <typename C>
void AddList(RuleOf<C>& rule) {
  rule.Add(File(Argument("FILE", "the list; it is checked as a whole first")),
           [](C& command, const std::string& text) { command.file = FileValue(text); });
  rule.AddFlag("--check-only", kCheckText, &C::check_only);
  rule.AddFlag("--verify", kVerifyListText, &C::verify);
}

template <typename C>
void CheckVerify(const C& command) {
  if (command.verify && command.check_only) {
    throw WrongUse("--verify: reads back what was written, and --check-only writes nothing");
  }
}

ListMarkers MarkersValue(const std::string& text) {
  return ChoiceValue(text, {"delays", "page"}) == 0 ? ListMarkers::kDelays : ListMarkers::kPage;
}

// Options that name a camera or its transfers, where a command line needs no camera.
void RefuseCamera(const GivenOptions& given, const std::string& why) {
  for (const char* const option : {"--camera", "--trace"}) {
    if (given.Has(option)) {
      throw WrongUse(std::string(option) + ": does not apply to " + why);
    }
  }
}

template <typename C>
void CheckCheckOnly(const C& command, const GivenOptions& given) {
  if (command.check_only) {
    RefuseCamera(given, "--check-only, which uses no camera");
  }
}

template <typename C>
void AddAddressAndValue(RuleOf<C>& rule) {
  rule.Add(Argument("ADDR", "the register's address"),
           [](C& command, const std::string& text) { command.address = AddressValue(text); });
  rule.Add(Argument("VALUE", "what to write"),
           [](C& command, const std::string& text) { command.value = WordValue(text); });
}

template <typename C>
void AddMaskAndVerify(RuleOf<C>& rule) {
  rule.Add(Option("--mask", "M", kMaskText),
           [](C& command, const std::string& text) { command.mask = WordValue(text); });
  rule.AddFlag("--verify", kVerifyText, &C::verify);
}

CommandRule RegReadRule() {
  RuleOf<RegReadCommand> rule({"reg", "read"}, "Reads registers of the camera's chip.");
  AddRange(rule, "ADDR[-END]");
  rule.AddFlag("--wide", "registers of 32 bits instead of 8", &RegReadCommand::wide);
  rule.Example("borvanusb reg read 0x1a3");
  return rule.Take();
}

CommandRule RegWriteRule() {
  RuleOf<RegWriteCommand> rule({"reg", "write"}, "Writes a register of the camera's chip.");
  AddAddressAndValue(rule);
  rule.AddFlag("--wide", "a register of 32 bits instead of 8", &RegWriteCommand::wide);
  AddMaskAndVerify(rule);
  rule.Check([](const RegWriteCommand& command, const GivenOptions&) {
    if (!command.wide) {
      const std::string where = "a register of 8 bits without --wide";
      CheckFits("VALUE", command.value, kByteBits, where);
      CheckFits("--mask", command.mask.value_or(0), kByteBits, where);
    }
  });
  rule.Refuse("--progress", kNoProgress);
  rule.Example("borvanusb reg write 0x1a3 0x20 --mask 0x20 --verify");
  return rule.Take();
}

CommandRule RegDumpRule() {
  RuleOf<RegDumpCommand> rule({"reg", "dump"}, "Writes registers as a list that loads again.");
  AddRange(rule, "RANGE");
  AddDumpFile(rule);
  rule.AddFlag("--wide", "registers of 32 bits instead of 8", &RegDumpCommand::wide);
  rule.Example("borvanusb reg dump 0x1000-0x10ff registers.txt");
  return rule.Take();
}

CommandRule RegLoadRule() {
  RuleOf<RegLoadCommand> rule({"reg", "load"}, "Writes the registers of a list.");
  AddList(rule);
  rule.Add(Choices(Option("--markers", "WHAT",
                          "what the chip takes 0xfffd and 0xfffe for: delays or page, the upper "
                          "half of the addresses; for --verify"),
                   {"delays", "page"}),
           [](RegLoadCommand& command, const std::string& text) {
             command.markers = MarkersValue(text);
           });
  rule.Check([](const RegLoadCommand& command, const GivenOptions& given) {
    CheckCheckOnly(command, given);
    CheckVerify(command);
    if (command.markers && !command.verify) {
      throw WrongUse("--markers: says what --verify reads back, which is not given");
    }
  });
  rule.Example("borvanusb reg load registers.txt --verify");
  return rule.Take();
}

CommandRule RegDiffRule() {
  RuleOf<RegDiffCommand> rule({"reg", "diff"}, "Shows where two register lists differ.");
  rule.Add(
      File(Argument("A", "a list, or the word camera for what the camera holds now")),
      [](RegDiffCommand& command, const std::string& text) { command.left = FileValue(text); });
  rule.Add(
      File(Argument("B", "the other one, likewise")),
      [](RegDiffCommand& command, const std::string& text) { command.right = FileValue(text); });
  rule.Check([](const RegDiffCommand& command, const GivenOptions& given) {
    if (command.left == "camera" && command.right == "camera") {
      throw WrongUse("B: camera is given twice; one of the two must be a list");
    }
    if (command.left != "camera" && command.right != "camera") {
      RefuseCamera(given, "two lists, which are compared without a camera");
    }
  });
  rule.Example("borvanusb reg diff registers.txt camera");
  return rule.Take();
}

CommandRule I2cReadRule() {
  RuleOf<I2cReadCommand> rule({"i2c", "read"}, "Reads registers of a device on the I2C bus.");
  AddRange(rule, "ADDR[-END]");
  AddSlave(rule, true);
  AddMode(rule);
  AddOption(rule);
  rule.Check([](const I2cReadCommand& command, const GivenOptions&) {
    CheckI2cAddress("ADDR[-END]", command.range.last, command.i2c);
  });
  rule.Example("borvanusb i2c read 0x300a-0x300b --slave 0x6c");
  return rule.Take();
}

CommandRule I2cWriteRule() {
  RuleOf<I2cWriteCommand> rule({"i2c", "write"}, "Writes a register of a device on the I2C bus.");
  AddAddressAndValue(rule);
  AddSlave(rule, true);
  AddMode(rule);
  AddOption(rule);
  AddMaskAndVerify(rule);
  rule.Check([](const I2cWriteCommand& command, const GivenOptions&) {
    const WidthMode& mode = WidthModeOf(command.i2c.mode);
    const std::string where = "the data of width mode " + std::string(mode.name);
    CheckI2cAddress("ADDR", command.address, command.i2c);
    CheckFits("VALUE", command.value, mode.data_bits, where);
    CheckFits("--mask", command.mask.value_or(0), mode.data_bits, where);
  });
  rule.Refuse("--progress", kNoProgress);
  rule.Example("borvanusb i2c write 0x3500 0x12 --slave 0x6c --mode 16/8 --verify");
  return rule.Take();
}

CommandRule I2cDumpRule() {
  RuleOf<I2cDumpCommand> rule({"i2c", "dump"}, "Writes I2C registers as a list that loads again.");
  AddRange(rule, "RANGE");
  AddDumpFile(rule);
  AddSlave(rule, true);
  AddMode(rule);
  AddOption(rule);
  rule.Check([](const I2cDumpCommand& command, const GivenOptions&) {
    CheckI2cAddress("RANGE", command.range.last, command.i2c);
  });
  rule.Example("borvanusb i2c dump 0x3000-0x30ff sensor.txt --slave 0x6c");
  return rule.Take();
}

CommandRule I2cLoadRule() {
  RuleOf<I2cLoadCommand> rule({"i2c", "load"}, "Writes the registers of an I2C list.");
  AddList(rule);
  AddSlave(rule, false);
  AddMode(rule);
  AddOption(rule);
  rule.Check([](const I2cLoadCommand& command, const GivenOptions& given) {
    CheckCheckOnly(command, given);
    CheckVerify(command);
  });
  rule.Details("--slave and --mode serve a list that does not open with its own.");
  rule.Example("borvanusb i2c load sensor.txt --check-only");
  return rule.Take();
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

}  // namespace

CommandRules RegisterRules() {
  return Grouped({RegReadRule(), RegWriteRule(), RegDumpRule(), RegLoadRule(), RegDiffRule()},
                 "Registers of the chip");
}

CommandRules I2cRules() {
  return Grouped({I2cReadRule(), I2cWriteRule(), I2cDumpRule(), I2cLoadRule(), I2cScanRule()},
                 "Registers of the sensor, over I2C");
}

}  // namespace borvanusb
