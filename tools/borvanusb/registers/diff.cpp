#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "output/output.h"
#include "registers/diff.h"
#include "registers/list_problems.h"
#include "registers/register_diff.h"
#include "registers/register_list.h"
#include "registers/register_options.h"

namespace borvanusb {

namespace {

constexpr const char* kCamera = "camera";
constexpr unsigned kPageShift = 16;
constexpr int kAddressDigits = 4;
constexpr int kValueDigits = 2;
constexpr int kMissingWidth = 4;  // as wide as a value

// Only a list that can be loaded says what registers hold: the entries of an I2C list, say, are
// those of another chip.
std::vector<ListEntry> ReadEntries(const std::string& file, Context& context) {
  CheckedRegisterList checked = CheckRegisterList(ReadWholeText(file));
  RequireGoodList(file, checked.list, "nothing was compared", context);
  return std::move(checked.list.entries);
}

// The registers of a list as the addresses a camera knows them by.
RegisterValues RegistersOfFile(const std::string& file, Context& context) {
  const std::vector<ListEntry> entries = ReadEntries(file, context);
  const std::uint32_t page = PageOf(entries);
  if (page != 0) {
    context.output.Note(
        Format("note: {} has the form of a dump: its 0xfffd and 0xfffe count as bits 16 to 31 of "
               "the addresses, {}",
               file, Hex(page, kAddressDigits)));
  }
  RegisterValues values;
  for (const auto& [address, value] : RegistersOf(entries)) {
    values[page << kPageShift | address] = value;
  }
  return values;
}

RegisterValues SameRegistersOfCamera(const RegisterValues& other, Context& context) {
  const auto camera = OpenChosenCamera(context);
  RowProgress progress(context, other.size());
  RegisterValues values;
  for (const auto& [address, value] : other) {
    values[address] = camera->ReadRegister(address, RegisterWidth::kByte);
    progress.Advance(values.size());
  }
  progress.Done();
  return values;
}

std::string ValueText(const std::optional<std::uint32_t>& value) {
  return value ? Hex(*value, kValueDigits) : std::string(kMissingWidth, '-');
}

nlohmann::ordered_json ValueJson(const std::optional<std::uint32_t>& value) {
  return value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json();
}

}  // namespace

ExitCode Run(const RegDiffCommand& command, Context& context) {
  const bool left_is_camera = command.left == kCamera;
  const bool right_is_camera = command.right == kCamera;
  if (left_is_camera && right_is_camera) {
    throw Failure(ExitCode::kUsage, "A and B are both \"camera\": one of them must be a list",
                  "A file by that name is ./camera.");
  }
  RegisterValues left = left_is_camera ? RegisterValues{} : RegistersOfFile(command.left, context);
  RegisterValues right =
      right_is_camera ? RegisterValues{} : RegistersOfFile(command.right, context);
  if (left_is_camera) {
    left = SameRegistersOfCamera(right, context);
  } else if (right_is_camera) {
    right = SameRegistersOfCamera(left, context);
  }
  const std::vector<RegisterDifference> differences = CompareRegisters(left, right);
  auto list = nlohmann::ordered_json::array();
  for (const RegisterDifference& difference : differences) {
    context.output.Line(Format("{}  {}  {}", Hex(difference.address, kAddressDigits),
                               ValueText(difference.left), ValueText(difference.right)));
    list.push_back({{"address", difference.address},
                    {"left", ValueJson(difference.left)},
                    {"right", ValueJson(difference.right)}});
  }
  if (differences.empty()) {
    context.output.Line(Format("no difference in {}", Count(left.size(), "register")));
  } else {
    TellOutcome(context, "reg diff",
                Format("{} and {} differ in {}", command.left, command.right,
                       Count(differences.size(), "register")));
  }
  context.result = {{"left", command.left},
                    {"right", command.right},
                    {"equal", differences.empty()},
                    {"differences", std::move(list)}};
  return differences.empty() ? ExitCode::kDone : ExitCode::kVerify;
}

CommandRule RegDiffRule() {
  RuleOf<RegDiffCommand> rule({"reg", "diff"}, "Shows where two register lists differ.");
  rule.Add(
      File(Argument("A", "a list, or the word camera for what the camera holds now")),
      [](RegDiffCommand& command, const std::string& text) { command.left = FileValue(text); });
  rule.Add(
      File(Argument("B", "the other one: a list, or the word camera")),
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

}  // namespace borvanusb
