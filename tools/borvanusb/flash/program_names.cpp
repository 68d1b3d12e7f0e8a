#include "flash/program_names.h"

#include "base/files.h"
#include "base/format.h"
#include "base/numbers.h"
#include "command/command_line.h"
#include "flash/flash_options.h"

namespace borvanusb {

std::vector<std::string> ProgramWords(const FlashProgramCommand& command) {
  std::vector<std::string> words = {"flash", "program"};
  // Full names, because the line may be repeated in another folder.
  const auto full = [](ImageWish wish) {
    wish.file = AbsoluteName(wish.file);
    return wish;
  };
  const ImageWish first = full({command.image, command.address, command.region});
  const bool has_place_inside = !command.more.empty() || ImageWishValue(first.file).HasPlace();
  if (has_place_inside) {
    words.push_back(ImageWord(first));
    for (const ImageWish& wish : command.more) {
      words.push_back(ImageWord(full(wish)));
    }
  } else {
    words.push_back(first.file);
    if (first.address) {
      words.insert(words.end(), {"--address", Hex(*first.address)});
    }
    if (!first.region.empty()) {
      words.insert(words.end(), {"--region", first.region});
    }
  }
  if (command.form != ImageForm::kAuto) {
    words.insert(words.end(), {"--format", std::string(NameOf(command.form))});
  }
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

std::vector<ImageFile> LoadForProgramming(const FlashProgramCommand& command, Output& output) {
  std::vector<ImageFile> files =
      LoadImageFiles(WishesOf(command), command.form, command.force, output);
  for (const ImageFile& file : files) {
    if (!command.force) {
      RefuseBlankImage(file);
    }
  }
  return files;
}

FlashProgramCommand Placed(FlashProgramCommand command, const std::vector<PlacedImage>& images) {
  const bool has_place = command.address || !command.region.empty();
  if (images.size() == 1 && !has_place && images.front().form == ImageForm::kRaw) {
    command.region = images.front().region;
    if (command.region.empty()) {
      command.address = 0;
    }
  }
  return command;
}

std::string GoBackText(const BackupRecord& backup, std::span<const std::uint8_t> bytes,
                       const CameraIdentity& camera, bool force) {
  std::vector<std::string> words = {"flash", "program", backup.file};
  if (!backup.ranges.empty()) {
    words.insert(words.end(), {"--format", std::string(NameOf(ImageForm::kIntelHex))});
  } else {
    words.insert(words.end(), {"--address", Hex(backup.address)});
    // A backup is raw bytes, but they may look like another format.
    if (FormOf(backup.file, bytes, ImageForm::kAuto) != ImageForm::kRaw) {
      words.insert(words.end(), {"--format", std::string(NameOf(ImageForm::kRaw))});
    }
  }
  if (force) {
    words.emplace_back("--force");
  }
  words.insert(words.end(), {"--camera", camera.path});
  return CommandLineText(words);
}

}  // namespace borvanusb
