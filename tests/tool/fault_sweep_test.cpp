// One bad transfer anywhere: the command must report a true result in every case.
#include <nlohmann/json.hpp>

#include "command/command.h"
#include "flash/erase.h"
#include "flash/map.h"
#include "flash/program.h"
#include "flash/read.h"
#include "flash/verify.h"
#include "flash/word.h"
#include "station/info.h"
#include "sweep/contents.h"
#include "sweep/fault_sweep.h"

namespace borvanusb::sweep {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kSector = 4096;

std::string Untrue(ExitCode code, ExitCode claimed, const std::string& what) {
  return code == claimed ? what : "";
}

// Programming

struct ImagePlace {
  std::string name;
  std::uint32_t address = 0;
  Bytes bytes;
};

std::vector<ImagePlace> Images() {
  return {{"100 bytes within a sector", 0x2345, RandomBytes(100, 3)},
          {"3,000 bytes in two sectors", 0x3C01, RandomBytes(3000, 4)},
          {"two whole sectors", 0x8000, RandomBytes(2 * kSector, 5)},
          {"10 KiB with repeats", 0x5800, RepeatingBytes(10240)}};
}

// Every file with the sectors' old bytes must contain them unchanged.
std::string WrongBackup(const SweepTest& rig, const Bytes& old, const std::string& image) {
  for (const std::string& name : rig.FilesThatEnd(".bin")) {
    if (name == image) {
      continue;
    }
    const Bytes backup = rig.Read(name).value_or(Bytes());
    bool found = false;
    for (std::size_t at = 0; at + backup.size() <= old.size(); at += kSector) {
      found = found || Part(old, at, backup.size()) == backup;
    }
    if (!found || backup.empty()) {
      return "the backup " + name + " holds what the flash never held";
    }
  }
  return "";
}

Scenario Program(const NamedBytes& flash, const ImagePlace& image, bool restore) {
  Scenario scenario;
  scenario.name = std::string("flash program") + (restore ? " --restore-on-failure" : "") + ", " +
                  image.name + ", " + flash.name;
  scenario.content = CameraWith(flash.bytes);
  scenario.prepare = [image](SweepTest& rig) { rig.Put("image.bin", image.bytes); };
  scenario.run = [image, restore](SweepTest& rig, Context& context) {
    FlashProgramCommand command;
    command.image = rig.File("image.bin");
    command.address = image.address;
    command.restore_on_failure = restore;
    command.report = rig.File("report.json");
    return RunValues(command, context);
  };
  scenario.wrong = [image, old = flash.bytes](const SweepTest& rig, const RunEnd& end) {
    const Bytes wanted = Overlaid(old, image.address, image.bytes);
    const Bytes found = rig.Camera().Flash();
    if (end.code == ExitCode::kDone && found != wanted) {
      return "the flash is wrong: " + Difference(wanted, found);
    }
    if (end.code == ExitCode::kVerify &&
        Part(found, image.address, image.bytes.size()) == image.bytes) {
      return std::string("the flash holds the image");
    }
    const auto report = rig.Read("report.json");
    if (report && found != old) {
      const std::string state = Json::parse(*report).value("state", "");
      if (state == "unchanged" || state == "restored") {
        return "the report calls the flash " + state + ": " + Difference(old, found);
      }
    }
    return WrongBackup(rig, old, "image.bin");
  };
  return scenario;
}

TEST_F(SweepTest, FlashProgram) {
  FaultSweep sweep(*this);
  for (const NamedBytes& flash : FlashContents()) {
    for (const ImagePlace& image : Images()) {
      sweep.Sweep(Program(flash, image, false));
    }
  }
}

// The flash already contains the image, completely or except for one byte.
TEST_F(SweepTest, FlashProgramOfWhatIsThere) {
  FaultSweep sweep(*this);
  for (const NamedBytes& flash : FlashContents()) {
    ImagePlace image{"the flash's own bytes", 0x3C01, Part(flash.bytes, 0x3C01, 3000)};
    if (flash.name == "random" || flash.name == "text with repeats") {  // else it is a blank image
      sweep.Sweep(Program(flash, image, false));
    }
    image.name = "the flash's own bytes but one";
    image.bytes[2500] ^= 0x10;
    sweep.Sweep(Program(flash, image, false));
    if (flash.name != "all zeros") {
      image.name = "the flash's own bytes with a few bits cleared";
      image.bytes = Part(flash.bytes, 0x3C01, 3000);
      for (const std::size_t at : {0U, 1023U, 1024U, 2999U}) {
        image.bytes[at] = 0;
      }
      sweep.Sweep(Program(flash, image, false));
      sweep.Sweep(Program(flash, image, true));
    }
  }
}

// Addresses wrap at the flash's end, so the image would overwrite the beginning.
TEST_F(SweepTest, FlashProgramBeyondTheEnd) {
  FaultSweep sweep(*this);
  for (const NamedBytes& flash : FlashContents()) {
    if (flash.name == "blank" || flash.name == "all zeros") {
      continue;  // the size can't be detected there
    }
    Scenario scenario = Program(flash, {"beyond the end", 0xF800, RandomBytes(4096, 6)}, false);
    scenario.expected = ExitCode::kFile;
    scenario.wrong = [old = flash.bytes](const SweepTest& rig, const RunEnd& /*end*/) {
      return std::string(rig.Camera().Flash() == old ? "" : "the flash was changed");
    };
    sweep.Sweep(scenario);
  }
}

TEST_F(SweepTest, FlashProgramRestoring) {
  FaultSweep sweep(*this);
  for (const NamedBytes& flash : FlashContents()) {
    sweep.Sweep(Program(flash, Images().front(), true));
  }
}

// Reading the flash

TEST_F(SweepTest, FlashRead) {
  FaultSweep sweep(*this);
  for (const NamedBytes& flash : FlashContents()) {
    for (const Range range : {Range{0x1234, 0x1234 + 999}, Range{0x3000, 0x4FFF},
                              Range{0xF000, 0xFFFF}, Range{0x123, 0x125}}) {
      Scenario scenario;
      scenario.name = "flash read, " + Text(range) + ", " + flash.name;
      scenario.content = CameraWith(flash.bytes);
      scenario.run = [range](SweepTest& rig, Context& context) {
        return RunValues(FlashReadCommand{range, rig.File("dump.bin")}, context);
      };
      const Bytes wanted = Part(flash.bytes, range.first, range.Size());
      scenario.wrong = [wanted, old = flash.bytes](const SweepTest& rig, const RunEnd& end) {
        if (rig.Camera().Flash() != old) {
          return std::string("the flash was changed");
        }
        const Bytes found = rig.Read("dump.bin").value_or(Bytes());
        return Untrue(end.code, ExitCode::kDone,
                      found == wanted ? "" : "the file is wrong: " + Difference(wanted, found));
      };
      sweep.Sweep(scenario);
    }
  }
}

Json RangesJson(const Bytes& wanted, const Bytes& found, std::uint32_t address) {
  Json ranges = Json::array();
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (wanted[i] == found[i]) {
      continue;
    }
    const std::uint64_t at = address + i;
    if (!ranges.empty() && ranges.back()["last"] == at - 1) {
      ranges.back()["last"] = at;
    } else {
      ranges.push_back({{"first", at}, {"last", at}});
    }
  }
  return ranges;
}

TEST_F(SweepTest, FlashVerify) {
  FaultSweep sweep(*this);
  for (const NamedBytes& flash : FlashContents()) {
    for (const bool equal : {true, false}) {
      constexpr std::uint32_t kAddress = 0x2FF0;
      Bytes image = Part(flash.bytes, kAddress, 3000);
      if (!equal) {
        for (const std::size_t at : {0U, 700U, 701U, 2999U}) {
          image[at] ^= 0x5A;
        }
      }
      Scenario scenario;
      scenario.name =
          std::string("flash verify, ") + (equal ? "equal" : "different") + ", " + flash.name;
      scenario.content = CameraWith(flash.bytes);
      scenario.prepare = [image](SweepTest& rig) { rig.Put("image.bin", image); };
      scenario.run = [address = kAddress](SweepTest& rig, Context& context) {
        FlashVerifyCommand command;
        command.image = rig.File("image.bin");
        command.address = address;
        return RunValues(command, context);
      };
      scenario.expected = equal ? ExitCode::kDone : ExitCode::kVerify;
      const Json ranges = RangesJson(Part(flash.bytes, kAddress, image.size()), image, kAddress);
      scenario.wrong = [equal, ranges](const SweepTest& /*rig*/, const RunEnd& end) {
        if (end.code == ExitCode::kDone && !equal) {
          return std::string("a different flash is called equal");
        }
        if (end.code == ExitCode::kVerify && equal) {
          return std::string("an equal flash is called different");
        }
        if (end.code == ExitCode::kVerify && end.result["different"] != ranges) {
          return "named as different: " + end.result["different"].dump();
        }
        return std::string();
      };
      sweep.Sweep(scenario);
    }
  }
}

TEST_F(SweepTest, FlashMap) {
  FaultSweep sweep(*this);
  constexpr Range kRange{0x4000, 0x6FFF};
  for (const NamedBytes& flash : FlashContents()) {
    // The middle sector is blank except for its last byte; the last sector is blank.
    Bytes content = Overlaid(flash.bytes, 0x5000, Bytes(2 * kSector, 0xFF));
    content[0x5FFF] = 0x7F;
    Scenario scenario;
    scenario.name = "flash map, " + flash.name;
    scenario.content = CameraWith(content);
    scenario.run = [kRange](SweepTest& /*rig*/, Context& context) {
      return RunValues(FlashMapCommand{kRange, {}}, context);
    };
    const bool first_is_blank = flash.name == "blank";
    scenario.wrong = [first_is_blank](const SweepTest& /*rig*/, const RunEnd& end) {
      const std::string signs = std::string("00004000  ") + (first_is_blank ? "." : "#") + "#.\n";
      return Untrue(end.code, ExitCode::kDone,
                    end.out.find(signs) != std::string::npos ? "" : "the map is " + end.out);
    };
    sweep.Sweep(scenario);
  }
}

TEST_F(SweepTest, FlashErase) {
  FaultSweep sweep(*this);
  constexpr Range kRange{0x3000, 0x4FFF};
  for (const NamedBytes& flash : FlashContents()) {
    Scenario scenario;
    scenario.name = "flash erase, " + flash.name;
    scenario.content = CameraWith(flash.bytes);
    scenario.run = [kRange](SweepTest& /*rig*/, Context& context) {
      FlashEraseCommand command;
      command.range = kRange;
      command.yes = true;
      return RunValues(command, context);
    };
    scenario.wrong = [kRange, old = flash.bytes](const SweepTest& rig, const RunEnd& end) {
      const Bytes erased(kRange.Size(), 0xFF);
      const Bytes found = rig.Camera().Flash();
      const Bytes wanted = Overlaid(old, kRange.first, erased);
      if (end.code == ExitCode::kVerify && Part(found, kRange.first, kRange.Size()) == erased) {
        return std::string("the flash is erased");
      }
      if (Overlaid(found, kRange.first, erased) != wanted) {
        return std::string("bytes beside the range were changed");
      }
      return Untrue(end.code, ExitCode::kDone,
                    found == wanted ? "" : "the flash is wrong: " + Difference(wanted, found));
    };
    sweep.Sweep(scenario);
  }
}

std::uint32_t WordIn(const Bytes& bytes, std::size_t at) {
  return static_cast<std::uint32_t>(bytes[at]) << 24U |
         static_cast<std::uint32_t>(bytes[at + 1]) << 16U |
         static_cast<std::uint32_t>(bytes[at + 2]) << 8U | bytes[at + 3];
}

TEST_F(SweepTest, FlashWord) {
  FaultSweep sweep(*this);
  constexpr std::uint32_t kAddress = 0x2346;
  for (const NamedBytes& flash : FlashContents()) {
    for (const bool write : {false, true}) {
      const std::uint32_t before = WordIn(flash.bytes, kAddress);
      const std::uint32_t after = write ? before & 0x0F3C55AA : before;
      Scenario scenario;
      scenario.name = std::string("flash word, ") + (write ? "written, " : "read, ") + flash.name;
      scenario.content = CameraWith(flash.bytes);
      scenario.run = [write, after](SweepTest& /*rig*/, Context& context) {
        FlashWordCommand command;
        command.address = kAddress;
        command.yes = true;
        if (write) {
          command.value = after;
        }
        return RunValues(command, context);
      };
      scenario.wrong = [after, old = flash.bytes](const SweepTest& rig, const RunEnd& end) {
        const Bytes found = rig.Camera().Flash();
        Bytes around = found;
        std::copy_n(old.begin() + kAddress, 4, around.begin() + kAddress);
        if (around != old) {
          return std::string("bytes beside the word were changed");
        }
        const std::uint32_t word = WordIn(found, kAddress);
        if (end.code == ExitCode::kVerify) {
          return std::string(word == after ? "the word is as it was to be" : "");
        }
        const bool told = end.result.value("value", Json()) == after && word == after;
        return Untrue(end.code, ExitCode::kDone, told ? "" : "told: " + end.result.dump());
      };
      sweep.Sweep(scenario);
    }
  }
}

TEST_F(SweepTest, Info) {
  FaultSweep sweep(*this);
  for (const NamedBytes& flash : FlashContents()) {
    Scenario scenario;
    scenario.name = "info, " + flash.name;
    scenario.content = CameraWith(flash.bytes);
    scenario.run = [](SweepTest& /*rig*/, Context& context) {
      return RunValues(InfoCommand{}, context);
    };
    scenario.wrong = [](const SweepTest& /*rig*/, const RunEnd& end) {
      if (end.code != ExitCode::kDone) {
        return std::string();
      }
      const Json size = end.result["flash"]["size"];
      const bool right = end.result["feature_register"] == 0x20 && end.result["fast_i2c"] == true &&
                         (size.is_null() || size == kFlashSize);
      return right ? std::string() : "told: " + end.result.dump();
    };
    sweep.Sweep(scenario);
  }
}

}  // namespace
}  // namespace borvanusb::sweep
