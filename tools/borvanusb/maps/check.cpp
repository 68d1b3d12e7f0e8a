#include "maps/check.h"

#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/text_command.h"
#include "command/values.h"
#include "maps/map_text.h"
#include "maps/read_svd.h"
#include "output/output.h"

namespace borvanusb {

namespace {

std::string PlaceText(const std::string& file, std::uint64_t line) {
  return line == 0 ? file : Format("{}:{}", file, line);
}

RegisterMap ReadMapFile(const std::string& file) {
  try {
    return ReadSvd(ReadWholeText(file));
  } catch (const SvdError& error) {
    throw Failure(
        ExitCode::kFile,
        Format("{}: {}; the map can't be used", PlaceText(file, error.Line()), error.what()),
        "Register maps are CMSIS-SVD files, up to schema 1.3.");
  }
}

std::string CountsText(const MapCounts& counts) {
  return Format("{}, {}, {}, {}", Count(counts.peripherals, "peripheral"),
                Count(counts.registers, "register"), Count(counts.fields, "field"),
                Count(counts.values, "enumerated value"));
}

}  // namespace

ExitCode Run(const MapCheckCommand& command, Context& context) {
  const RegisterMap map = ReadMapFile(command.file);
  const std::vector<ListProblem> doubts = map.Doubts();
  const std::uint64_t all_doubts = doubts.size() + map.UntoldDoubts();
  if (!context.common.json) {
    PrintMap(map, [&](std::string_view line) { context.output.Line(line); });
  }
  auto told = nlohmann::ordered_json::array();
  for (const ListProblem& doubt : doubts) {
    context.output.Line(Format("{}: {}", PlaceText(command.file, doubt.line), doubt.text));
    told.push_back({{"line", doubt.line}, {"message", doubt.text}});
  }
  if (map.UntoldDoubts() > 0) {
    context.output.Line(Format("and {} more doubts", map.UntoldDoubts()));
  }
  const MapCounts counts = CountsOf(map);
  context.output.Line(
      Format("{}: {}, {}", map.name, CountsText(counts), Count(all_doubts, "doubt")));
  context.result = {{"file", command.file},
                    {"name", map.name},
                    {"description", PlainText(map.description)},
                    {"counts",
                     {{"peripherals", counts.peripherals},
                      {"registers", counts.registers},
                      {"fields", counts.fields},
                      {"enumerated_values", counts.values},
                      {"doubts", all_doubts}}},
                    {"peripherals", MapJson(map)},
                    {"doubts", std::move(told)}};
  return ExitCode::kDone;
}

CommandRule MapCheckRule() {
  RuleOf<MapCheckCommand> rule({"map", "check"}, "Shows a register map and its doubts.");
  rule.Add(
      File(Argument("FILE", "the map, a CMSIS-SVD file")),
      [](MapCheckCommand& command, const std::string& text) { command.file = FileValue(text); });
  RefuseAllOfCameras(rule);
  rule.Example("borvanusb map check sensor.svd");
  return rule.Take();
}

}  // namespace borvanusb
