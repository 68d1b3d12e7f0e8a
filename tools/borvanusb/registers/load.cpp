#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/format.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/standard_streams.h"
#include "command/values.h"
#include "output/output.h"
#include "registers/list_problems.h"
#include "registers/list_verify.h"
#include "registers/load.h"
#include "registers/load_several.h"
#include "registers/register_list.h"
#include "registers/register_options.h"

namespace borvanusb {

namespace {

// Throws kUsage if the addresses of the list's registers are ambiguous.
void CheckMarkers(const RegLoadCommand& command, const CheckedRegisterList& checked) {
  const ListEntry* const marked = FirstMarkedRegister(checked.list.entries);
  if (marked != nullptr && !command.markers) {
    throw Failure(
        ExitCode::kUsage,
        Format("--verify: {} gives 0xfffd and 0xfffe values other than 0 before the "
               "register in line {}; "
               "whether the register is at {} then depends on the chip; nothing was sent",
               ShownName(command.file, kStandardInput), marked->line, Hex(marked->address, 4)),
        "Add --markers delays if the chip uses these values as delays, or --markers page "
        "if it uses "
        "them as bits 16 to 31 of the addresses.");
  }
}

}  // namespace

ExitCode Run(const RegLoadCommand& command, Context& context) {
  const std::string name = ShownName(command.file, kStandardInput);
  const CheckedRegisterList checked =
      CheckRegisterList(ReadTextOrInput(command.file, context.host));
  if (command.check_only) {
    const ExitCode code = ReportCheck("reg load", name, checked.list, checked.registers, context);
    context.result["file"] = command.file;
    return code;
  }
  RequireGoodList(name, checked.list, "nothing was sent", context);
  if (command.verify) {
    CheckMarkers(command, checked);
  }
  NoteRemarks(name, checked.list, context);
  if (IsForSeveral(command.all, context)) {
    return LoadForSeveral(command.all, context);
  }
  const ReservedCamera camera = ReserveChosenCamera(context);
  // Sends the entries that were checked. The library might read the file differently, or the file
  // might change.
  camera->WriteRegisterList(RegisterListText(checked.list.entries));
  context.result = LoadJson(command.file, checked.list, checked.registers, true);
  const std::string written =
      Format("{} written from {}", Count(checked.registers, "register"), name);
  if (!command.verify) {
    context.output.Line(written);
    return ExitCode::kDone;
  }
  const ReadBack read_back = ReadBackRegisters(
      WrittenRegisters(checked.list.entries, command.markers.value_or(ListMarkers::kDelays)),
      *camera.camera, context);
  context.output.Line(written + ReadBackText(read_back));
  return ReportReadBack("reg load", name, read_back, context);
}

namespace {

ListMarkers MarkersValue(const std::string& text) {
  return ChoiceValue(text, {"delays", "page"}) == 0 ? ListMarkers::kDelays : ListMarkers::kPage;
}

}  // namespace

CommandRule RegLoadRule() {
  RuleOf<RegLoadCommand> rule({"reg", "load"}, "Writes the registers of a list.");
  AddList(rule);
  AddAll(rule);
  rule.Add(Choices(Option("--markers", "WHAT",
                          "how the chip uses 0xfffd and 0xfffe, for --verify: delays, or page "
                          "(bits 16 to 31 of the addresses)"),
                   {"delays", "page"}),
           [](RegLoadCommand& command, const std::string& text) {
             command.markers = MarkersValue(text);
           });
  rule.Check([](const RegLoadCommand& command, const GivenOptions& given) {
    CheckCheckOnly(command, given);
    CheckVerify(command);
    CheckLoadForSeveral(command, given);
    if (command.markers && !command.verify) {
      throw WrongUse("--markers: says what --verify reads back, which is not given");
    }
  });
  rule.Example("borvanusb reg load registers.txt --verify");
  return rule.Take();
}

}  // namespace borvanusb
