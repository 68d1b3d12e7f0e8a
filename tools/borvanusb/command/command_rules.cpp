#include "command/command_rules.h"

#include "base/format.h"
#include "command/values.h"

namespace borvanusb {

OptionDescription Argument(std::string_view name, std::string_view text) {
  OptionDescription option = Flag(name, text);
  option.positional = true;
  option.required = true;
  return option;
}

OptionDescription Flag(std::string_view name, std::string_view text) {
  OptionDescription option;
  option.names.emplace_back(name);
  option.text = text;
  return option;
}

OptionDescription Option(std::string_view name, std::string_view value, std::string_view text) {
  OptionDescription option = Flag(name, text);
  option.value = value;
  return option;
}

OptionDescription Optional(OptionDescription option) {
  option.required = false;
  return option;
}

OptionDescription Required(OptionDescription option) {
  option.required = true;
  return option;
}

OptionDescription Repeated(OptionDescription option) {
  option.repeated = true;
  return option;
}

OptionDescription File(OptionDescription option) {
  option.takes_file = true;
  return option;
}

OptionDescription NamesOf(std::string_view kind, OptionDescription option) {
  option.completes = kind;
  return option;
}

OptionDescription Choices(OptionDescription option, std::vector<std::string> choices) {
  option.choices = std::move(choices);
  return option;
}

const CommonRules& AllCommonRules() {
  static const CommonRules kRules = MakeCommonRules();
  return kRules;
}

void CheckFits(const std::string& name, std::uint32_t number, int bits, const std::string& where) {
  if (number > HighestOf(bits)) {
    throw WrongUse(Format("{}: {} is too big for {}: 0 to {}", name, Hex(number), where,
                          Hex(HighestOf(bits))));
  }
}

}  // namespace borvanusb
