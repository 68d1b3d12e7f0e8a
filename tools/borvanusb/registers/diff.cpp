#include "registers/diff.h"
#include "base/chip_register.h"
#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "names/diff_options.h"
#include "names/diff_sources.h"
#include "output/output.h"
#include "registers/list_problems.h"
#include "registers/register_diff.h"
#include "registers/register_list.h"
#include "registers/register_options.h"

namespace borvanusb {

namespace {

// Throws if the list can't be loaded, because then its values are meaningless. For example, an I2C
// list contains registers of another chip.
std::vector<ListEntry> ReadEntries(const std::string& file, Context& context) {
  CheckedRegisterList checked = CheckRegisterList(ReadWholeText(file));
  RequireGoodList(file, checked.list, "nothing was compared", context);
  return std::move(checked.list.entries);
}

}  // namespace

Snapshot RegistersOfListFile(const std::string& file, Context& context) {
  const std::vector<ListEntry> entries = ReadEntries(file, context);
  const std::uint32_t page = PageOf(entries);
  if (page != 0) {
    context.output.Note(
        Format("note: {} has the form of a dump: its 0xfffd and 0xfffe count as bits 16 to 31 of "
               "the addresses, {}",
               file, Hex(page, kAddressDigits)));
  }
  Snapshot values;
  for (const auto& [address, value] : RegistersOf(entries)) {
    Put(ChipAccess(page << kPageShift | address, false), value, kLowByte, values);
  }
  return values;
}

ExitCode Run(const RegDiffCommand& command, Context& context) {
  return CompareSides(
      "reg diff", DiffSideOf(command.left), DiffSideOf(command.right), command.csv,
      [&](const std::string& file, const RegisterNames*) {
        return RegistersOfListFile(file, context);
      },
      context);
}

CommandRule RegDiffRule() {
  RuleOf<RegDiffCommand> rule({"reg", "diff"}, "Shows where lists, presets or cameras differ.");
  AddDiffSides(rule);
  rule.Example("borvanusb reg diff registers.txt camera");
  rule.Example("borvanusb reg diff preset:night camera");
  return rule.Take();
}

}  // namespace borvanusb
