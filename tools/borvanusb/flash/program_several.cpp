#include "flash/program_several.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "base/format.h"
#include "command/several_cameras.h"
#include "flash/program_names.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

std::vector<std::string> ChildWords(FlashProgramCommand command, const CameraIdentity& camera) {
  const std::string part = std::to_string(camera.index);
  const auto own = [&](const std::string& file) {
    return file.empty() ? file : InsertBeforeExtension(file, part);
  };
  command.report = own(command.report);
  command.backup_file = own(command.backup_file);
  return ProgramWords(command);
}

std::string Summary(const Json& result) {
  if (result.value("dry_run", false)) {
    return Format("would change {} bytes", result.value("changed_bytes", std::uint64_t{0}));
  }
  const auto changed = result.value("changed_bytes", std::uint64_t{0}) / kSectorSize;
  return changed == 0 ? "holds the image already"
                      : Format("programmed, {} sectors changed{}", changed,
                               result.contains("verified") && result["verified"] == true
                                   ? ", read back equal"
                                   : "");
}

}  // namespace

ExitCode ProgramSeveral(const FlashProgramCommand& command, Context& context) {
  // Reports an error that concerns all cameras only once.
  LoadForProgramming(command, context.output);
  return RunForSeveral(
      {[&](const CameraIdentity& camera) { return ChildWords(command, camera); }, Summary},
      command.all, context);
}

}  // namespace borvanusb
