// Random sequences of interrupted and repeated programming: overlapping images, folders, names in
// several spellings, failures and kills at any transfer, other cameras at the same port and the
// same camera at another port, erasing, words, restored backups. flash_sequences_judge.h defines
// the required properties.
#include <algorithm>
#include <cstdlib>
#include <random>

#include "base/numbers.h"
#include "flash/erase.h"
#include "flash/program.h"
#include "flash/word.h"
#include "flash_sequences_judge.h"
#include "images/image_format.h"
#include "images/intel_hex.h"

namespace borvanusb::tool_test {
namespace {

class Sequence : public SequenceJudge {
 public:
  void TestBody() override {}

  // Plays a sequence. Returns an empty text, or the problem.
  std::string Play(std::uint32_t seed, Statistics& statistics) {
    random_.seed(seed);
    statistics_ = &statistics;
    ++statistics.sequences;
    has_patches_ = seed % 3 == 0;
    SetUpWorld();
    const std::uint32_t steps = 3 + Draw(6);
    for (std::uint32_t i = 0; i < steps && problem_.empty(); ++i) {
      Step();
    }
    return problem_.empty() ? "" : "seed " + std::to_string(seed) + log_ + "\n  " + problem_;
  }

 private:
  std::uint32_t Draw(std::uint32_t below) { return static_cast<std::uint32_t>(random_() % below); }
  bool Chance(std::uint32_t percent) { return Draw(100) < percent; }

  Bytes RandomBytes(std::size_t size) {
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) {
      byte = static_cast<std::uint8_t>(random_());
    }
    return bytes;
  }

  void SetUpWorld() {
    Bytes firmware = RandomBytes(kFlash);
    if (Chance(30)) {  // blank from a random position on
      std::fill(firmware.begin() + std::ptrdiff_t{0x1000} * (2 + Draw(12)), firmware.end(),
                std::uint8_t{0xFF});
    }
    Bytes sibling = firmware;
    for (int i = 0; i < 3; ++i) {
      const Bytes part = RandomBytes(0x40);
      std::copy(part.begin(), part.end(), sibling.begin() + Draw(kFlash - 0x40));
    }
    modules_.emplace_back("A", firmware);
    modules_.emplace_back("sibling", sibling);
    modules_.emplace_back("blank", Bytes(kFlash, 0xFF));
    modules_.emplace_back("foreign", RandomBytes(kFlash));
    plugged_ = {0, -1};
    for (const char* folder : {"a", "b"}) {
      std::filesystem::create_directories(File(folder));
    }
    const std::uint32_t base = 0x1000 * (1 + Draw(8));
    const std::uint32_t images = 2 + Draw(3);
    for (std::uint32_t i = 0; i < images; ++i) {
      SequenceImage image;
      image.address = base + Draw(0x2800);
      image.bytes = RandomBytes(Chance(50) ? 1 + Draw(0x400) : 1 + Draw(0x3800));
      if (Chance(20)) {
        std::fill(image.bytes.begin(), image.bytes.end(), std::uint8_t{0xFF});
      } else if (Chance(30)) {
        std::fill(image.bytes.begin() + Draw(static_cast<std::uint32_t>(image.bytes.size())),
                  image.bytes.end(), std::uint8_t{0xFF});
      }
      if (has_patches_) {
        MakePatch(image, firmware);
      }
      image.segments = {{image.address, image.bytes}};
      for (std::uint32_t holes = Chance(40) ? 1 + Draw(3) : 0; holes > 0; --holes) {
        MakeHole(image.segments);
      }
      const bool has_gaps = image.segments.size() > 1;
      image.name = "image" + std::to_string(i) + (has_gaps ? ".hex" : ".bin");
      const std::string text = IntelHexText(image.segments);
      for (const char* folder : {"a/", "b/"}) {
        WriteFile(folder + image.name,
                  has_gaps ? Bytes(text.begin(), text.end()) : image.segments.front().bytes);
      }
      images_.push_back(image);
    }
  }

  // Cuts some bytes out of the last piece of an image, so that it becomes two pieces; or cuts its
  // end.
  void MakeHole(Segments& segments) {
    const auto size = static_cast<std::uint32_t>(segments.back().bytes.size());
    if (size >= 3) {
      const std::uint32_t first = 1 + Draw(size - 1);
      CutOut(segments, first, std::min(size, first + 1 + Draw(Chance(50) ? 0x40 : 0x2000)));
    }
  }

  // An image that only clears bits in a few bytes, of the firmware or of the previous image.
  void MakePatch(SequenceImage& image, const Bytes& firmware) {
    if (!images_.empty() && Chance(50)) {
      image.address = images_.back().address;
      image.bytes = images_.back().bytes;
    } else {
      std::copy_n(firmware.begin() + image.address, image.bytes.size(), image.bytes.begin());
    }
    for (std::uint32_t count = 1 + Draw(20); count > 0; --count) {
      image.bytes[Draw(static_cast<std::uint32_t>(image.bytes.size()))] &=
          static_cast<std::uint8_t>(random_());
    }
  }

  std::string Spelled(const std::string& name) {
    const std::string folder = Chance(60) ? "a" : "b";
    switch (Draw(3)) {
      case 0:
        return File(folder + "/" + name);
      case 1:
        return File(folder + "/./" + name);
      default:
        return File("b/../" + folder + "/" + name);
    }
  }

  void Replug() {
    plugged_[0] = static_cast<int>(Draw(static_cast<std::uint32_t>(modules_.size())));
    plugged_[1] =
        Chance(50) ? -1 : static_cast<int>(Draw(static_cast<std::uint32_t>(modules_.size())));
    if (plugged_[1] == plugged_[0]) {
      plugged_[0] = -1;
    }
  }

  void Step() {
    if (Chance(25)) {
      Replug();
    }
    std::size_t port = plugged_[0] >= 0 ? 0 : 1;
    if (plugged_[0] >= 0 && plugged_[1] >= 0 && Chance(50)) {
      port = 1;
    }
    host.chips.clear();
    for (std::size_t i = 0; i < plugged_.size(); ++i) {
      if (plugged_[i] >= 0) {
        Module& module = modules_[static_cast<std::size_t>(plugged_[i])];
        module.chip->identity.path = kPorts[i];
        host.chips.push_back(module.chip);
      }
    }
    common.cameras = {kPorts[port]};
    Module& module = modules_[static_cast<std::size_t>(plugged_[port])];
    log_ += "\n  " + module.name + "@" + std::to_string(port + 1) + " ";
    const std::uint32_t kind = Draw(100);
    if (kind < 8) {
      EraseStep(module);
    } else if (kind < 13) {
      WordStep(module);
    } else if (kind < 20 && !backups_.empty()) {
      BackStep(module);
    } else {
      ProgramStep(module);
    }
  }

  void ProgramStep(Module& module) {
    const SequenceImage& image = images_[Draw(static_cast<std::uint32_t>(images_.size()))];
    FlashProgramCommand command;
    command.image = Spelled(image.name);
    const bool has_gaps = image.segments.size() > 1;
    if (!has_gaps) {
      command.address = image.address;
    }
    command.force = true;
    command.backup = Chance(60);
    if (command.backup && Chance(40)) {
      command.backup_file = Spelled("old" + std::to_string(Draw(3)) + ".bin");
    }
    command.restore_on_failure = command.backup && Chance(30);
    command.verify = Chance(85);
    log_ += "program " + image.name + " " + RangesText(PlacesOf(image.segments)) +
            (command.restore_on_failure ? " restore" : "") + (command.backup ? "" : " no-backup") +
            (command.verify ? "" : " no-verify");
    Program(module, command, {image.segments});
  }

  void BackStep(Module& module) {
    auto entry = backups_.begin();
    std::advance(entry, Draw(static_cast<std::uint32_t>(backups_.size())));
    const std::uint32_t address =
        backup_places_.contains(entry->first) ? backup_places_[entry->first] : 0x1000;
    FlashProgramCommand command;
    command.image = entry->first;
    command.force = true;
    log_ += "write back " + entry->first + " at " + Hex(address);
    // A backup with gaps contains its addresses.
    if (RecogniseFormat(entry->second) == ImageFormat::kIntelHex) {
      Program(module, command, {ReadIntelHex(entry->second).segments});
    } else {
      command.address = address;
      Program(module, command, {{{address, entry->second}}});
    }
  }

  void Program(Module& module, FlashProgramCommand command, const NamedBytes& named) {
    Attempt(
        module, named, [&] { return Run(command); }, command.verify);
    for (int i = 0; i < 2 && asked_; ++i) {
      // Answers like a user who knows the cameras.
      command.journal = IsNeeded(module, asked_journal_) ? asked_journal_ : "none";
      log_ += "\n    answered " + command.journal;
      Attempt(
          module, named, [&] { return Run(command); }, command.verify);
    }
  }

  void EraseStep(Module& module) {
    FlashEraseCommand command;
    command.range.first = 0x1000 * Draw(14);
    command.range.last = command.range.first + 0x1000 * (1 + Draw(2)) - 1;
    command.yes = true;
    command.backup = Chance(60);
    command.backup_file =
        command.backup ? Spelled("erased" + std::to_string(Draw(1000)) + ".bin") : "";
    log_ += "erase " + Text(command.range);
    Attempt(module, {{{command.range.first, Bytes(command.range.Size(), 0xFF)}}},
            [&] { return Run(command); });
  }

  void WordStep(Module& module) {
    FlashWordCommand command;
    command.address = 0x1000 + Draw(0x4000);
    Bytes bytes(module.chip->flash.begin() + command.address,
                module.chip->flash.begin() + command.address + 4);
    std::uint32_t value = 0;
    for (std::uint8_t& byte : bytes) {
      byte = static_cast<std::uint8_t>(byte & random_());
      value = value << 8U | byte;
    }
    command.value = value;
    command.yes = true;
    command.backup = Chance(60);
    command.backup_file =
        command.backup ? Spelled("word" + std::to_string(Draw(1000)) + ".bin") : "";
    log_ += "word " + Hex(command.address);
    Attempt(module, {{{command.address, bytes}}}, [&] { return Run(command); });
  }

  // With `verify`, a packet may also be answered but not programmed, because only then it must be
  // detected.
  void ArmCut(FakeChip& chip, bool verify) {
    const std::uint64_t first = chip.transfers + 1 + Draw(Chance(50) ? 1000 : 400);
    switch (verify ? Draw(10) : Draw(5)) {
      case 0:
      case 1:
        chip.before_transfer = [first](std::uint64_t number) {
          if (number >= first) {
            throw Failure(ExitCode::kDevice, "the camera is gone");
          }
        };
        break;
      case 2:
        chip.before_transfer = [first](std::uint64_t number) {
          if (number == first) {
            throw Failure(ExitCode::kDevice, "the transfer failed");
          }
        };
        break;
      case 3:
        chip.before_transfer = [first](std::uint64_t number) {
          if (number >= first) {
            throw Failure(ExitCode::kTimeout, "no answer");
          }
        };
        break;
      case 4:
        chip.before_transfer = [this, first](std::uint64_t number) {
          host.stop_requested = host.stop_requested || number >= first;
        };
        break;
      case 5:  // a packet that is answered but not programmed
        chip.after_programming = [first, &chip](std::uint32_t address,
                                                std::span<std::uint8_t> bytes) {
          if (chip.transfers == first) {
            std::copy_n(chip.flash.begin() + address, bytes.size(), bytes.begin());
          }
        };
        break;
      default:
        chip.before_transfer = [first](std::uint64_t number) {
          if (number >= first) {
            throw Killed();
          }
        };
    }
  }

  void Attempt(Module& module, const NamedBytes& named, const std::function<Outcome()>& run,
               bool verify = true) {
    ++statistics_->runs;
    asked_ = false;
    const Bytes before = module.chip->flash;
    NoteAlike(module);
    const bool cut = Chance(50);
    if (cut) {
      ArmCut(*module.chip, verify);
    }
    Outcome outcome;
    bool killed = false;
    try {
      outcome = run();
    } catch (const Killed&) {
      killed = true;
      outcome.code = ExitCode::kInternal;
    }
    module.chip->before_transfer = {};
    module.chip->after_programming = {};
    host.stop_requested = false;
    host.stop_holds = 0;
    log_ += killed
                ? " killed"
                : " -> " + std::to_string(static_cast<int>(outcome.code)) + " " + outcome.message;
    statistics_->done += outcome.code == ExitCode::kDone ? 1U : 0U;
    statistics_->cut += killed || cut ? 1U : 0U;
    NoteFiles(module);
    log_ += JournalsInWords();
    Judge(module, named, outcome, before);
    const std::size_t mark = outcome.hint.find("add --journal ");
    if (!killed && outcome.code == ExitCode::kFile && mark != std::string::npos) {
      asked_ = true;
      const std::size_t start = mark + std::string("add --journal ").size();
      asked_journal_ = outcome.hint.substr(start, outcome.hint.find(": the bytes", start) - start);
      ++statistics_->asked;
      statistics_->asked_owner += IsNeeded(module, asked_journal_) ? 1U : 0U;
      if (module.chip->flash != before) {
        problem_ = "it asked after it changed the flash";
      }
    }
  }

  std::mt19937 random_;
  std::vector<int> plugged_;  // index of the module for each port; -1: none
  std::vector<SequenceImage> images_;
  bool has_patches_ = false;
  bool asked_ = false;
  std::string asked_journal_;
  std::string log_;
};

std::uint64_t FromEnvironment(const char* name, std::uint64_t otherwise) {
  const char* const text = std::getenv(name);
  return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

TEST(FlashSequencesTest, NothingIsLostInAnySequence) {
  const bool is_long = std::getenv("BORVAN_LONG") != nullptr;
  const std::uint64_t count = FromEnvironment("BORVAN_SEQUENCES", is_long ? 100000 : 400);
  const std::uint64_t first = FromEnvironment("BORVAN_SEED", 1);
  Statistics statistics;
  int problems = 0;
  std::vector<std::uint64_t> seeds = {
      1004762,  // a later interrupted change in the sector of a landmark
      1013077,  // the same at another port
      1001137,  // "none" for one of two sectors
  };
  for (std::uint64_t seed = first; seed < first + count; ++seed) {
    seeds.push_back(seed);
  }
  for (const std::uint64_t seed : seeds) {
    if (problems >= 5) {
      break;
    }
    const std::string problem = Sequence().Play(static_cast<std::uint32_t>(seed), statistics);
    if (!problem.empty()) {
      ADD_FAILURE() << problem;
      ++problems;
    }
  }
  std::cout << statistics.sequences << " sequences, " << statistics.runs
            << " commands: " << statistics.done << " ended well, " << statistics.cut
            << " were to be cut off; " << statistics.asked << " asked for --journal, "
            << statistics.asked_owner << " of them with the journal's own camera; "
            << statistics.alike << " bytes of cameras that look alike in every landmark\n";
}

}  // namespace
}  // namespace borvanusb::tool_test
