#include <limits>
#include <nlohmann/json.hpp>

#include "camera_choice.h"
#include "commands/commands.h"
#include "failure.h"
#include "flash/report.h"
#include "host.h"
#include "output/output.h"

namespace {

constexpr std::uint32_t kWordSize = 4;
constexpr int kWordDigits = 8;
constexpr std::uint32_t kLastWord = std::numeric_limits<std::uint32_t>::max() - (kWordSize - 1);

// Through a bulk read, since a single access that fails looks like a word of 0.
std::uint32_t ReadWord(Camera& camera, std::uint32_t address) {
  std::uint32_t word = 0;
  for (const std::uint8_t byte : camera.ReadFlash(address, kWordSize, {})) {
    word = word << 8U | byte;
  }
  return word;
}

std::string WordText(std::uint32_t word) {
  return Hex(word, kWordDigits);
}

ExitCode Write(Camera& camera, const FlashWordCommand& command, std::uint32_t value,
               Context& context) {
  const std::uint32_t before = ReadWord(camera, command.address);
  context.result["before"] = before;
  if ((before & value) != value) {
    context.output.Note("the flash holds " + WordText(before) + " at " + Hex(command.address) +
                        "; writing only clears bits, so it can't become " + WordText(value) +
                        " before its sector is erased");
  }
  if (!command.yes && !context.host.Ask("Write " + WordText(value) + " over " + WordText(before) +
                                        " at " + Hex(command.address) + "?")) {
    throw Failure(ExitCode::kStopped, "nothing was written",
                  "Answer y, or give --yes to write without being asked.");
  }
  camera.WriteFlashWord(command.address, value);
  const std::uint32_t found = ReadWord(camera, command.address);
  context.result["written"] = value;
  context.result["value"] = found;
  context.result["verified"] = found == value;
  if (found != value) {
    context.output.Line(Hex(command.address) + ": wrote " + WordText(value) + ", but reads back " +
                        WordText(found));
    return ExitCode::kVerify;
  }
  context.output.Line(Hex(command.address) + ": " + WordText(found) + ", reads back as written");
  return ExitCode::kDone;
}

}  // namespace

ExitCode Run(const FlashWordCommand& command, Context& context) {
  if (command.address > kLastWord) {
    throw Failure(
        ExitCode::kUsage,
        "ADDR: the four bytes at " + Hex(command.address) + " would reach beyond 0xffffffff",
        "The last word is at 0xfffffffc.");
  }
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const auto reservation =
      command.value ? context.host.ReserveCamera(identity) : std::unique_ptr<Host::Reservation>();
  const auto camera = context.host.OpenCamera(identity);
  context.result["camera"] = ToJson(identity);
  context.result["address"] = command.address;
  if (command.value) {
    return Write(*camera, command, *command.value, context);
  }
  const std::uint32_t word = ReadWord(*camera, command.address);
  context.result["value"] = word;
  context.output.Line(Hex(command.address) + ": " + WordText(word));
  return ExitCode::kDone;
}
