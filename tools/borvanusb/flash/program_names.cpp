#include "flash/program_names.h"

#include "base/files.h"
#include "base/format.h"
#include "base/numbers.h"
#include "command/command_line.h"

namespace borvanusb {

std::vector<std::string> ProgramWords(const FlashProgramCommand& command) {
  // The line may be repeated in another folder.
  std::vector<std::string> words = {"flash", "program", AbsoluteName(command.image), "--address",
                                    Hex(command.address)};
  const auto add = [&](bool wanted, const std::string& word) {
    if (wanted) {
      words.push_back(word);
    }
  };
  if (command.flash_size) {
    words.insert(words.end(), {"--flash-size", std::to_string(*command.flash_size)});
  }
  add(command.dry_run, "--dry-run");
  add(!command.verify, "--no-verify");
  add(!command.backup, "--no-backup");
  if (!command.backup_file.empty()) {
    words.insert(words.end(), {"--backup", AbsoluteName(command.backup_file)});
  }
  add(command.restore_on_failure, "--restore-on-failure");
  add(command.force, "--force");
  if (!command.report.empty()) {
    words.insert(words.end(), {"--report", AbsoluteName(command.report)});
  }
  for (const auto& [name, value] : command.tags) {
    words.insert(words.end(), {"--tag", Format("{}={}", name, value)});
  }
  return words;
}

std::string GoBackText(const std::string& backup, std::uint32_t address,
                       const CameraIdentity& camera, bool is_blank) {
  std::vector<std::string> words = {"flash", "program", backup, "--address", Hex(address)};
  if (is_blank) {
    words.emplace_back("--force");
  }
  words.insert(words.end(), {"--camera", camera.path});
  return CommandLineText(words);
}

}  // namespace borvanusb
