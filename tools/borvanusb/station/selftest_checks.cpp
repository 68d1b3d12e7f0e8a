#include "station/selftest_checks.h"

#include <algorithm>
#include <span>

#include "base/chip_register.h"
#include "base/format.h"
#include "base/numbers.h"
#include "command/camera_work.h"

namespace borvanusb {

namespace {

// Whole blocks of a run read (56 registers) around the feature register.
constexpr std::uint32_t kRunFirst = 0x188;
constexpr std::uint32_t kRunLast = 0x1C7;
// Every flash is larger than this.
constexpr std::uint64_t kFlashSize = 4096;
// Begins and ends inside packets of 64 bytes.
constexpr std::uint32_t kOffset = 37;
constexpr std::uint64_t kOffsetSize = 300;
constexpr std::uint32_t kPeekStep = 252;  // reads words at every position within a packet

std::string TwoValues(const std::string& what, std::uint32_t first, std::uint32_t second,
                      int digits) {
  return Format("{}: {}, then {}", what, Hex(first, digits), Hex(second, digits));
}

std::string Answers(Camera& camera) {
  camera.ReadRegister(kFeatureRegister, RegisterWidth::kByte);
  return {};
}

std::string FeatureTwice(Camera& camera) {
  const std::uint32_t first = camera.ReadRegister(kFeatureRegister, RegisterWidth::kByte);
  const std::uint32_t second = camera.ReadRegister(kFeatureRegister, RegisterWidth::kByte);
  return first == second ? "" : TwoValues("register 0x1a3 changes by itself", first, second, 2);
}

std::string WideAgrees(Camera& camera) {
  const std::uint32_t wide = camera.ReadRegister(kFeatureRegister, RegisterWidth::kWide);
  const std::uint32_t byte = camera.ReadRegister(kFeatureRegister, RegisterWidth::kByte);
  return (wide & kLowByte) == byte ? ""
                                   : Format("register 0x1a3 reads as {} wide and as {} as a byte",
                                            Hex(wide, 8), Hex(byte, 2));
}

std::string RunAgrees(Camera& camera) {
  std::vector<std::uint32_t> before;
  for (std::uint32_t address = kRunFirst; address <= kRunLast; ++address) {
    before.push_back(camera.ReadRegister(address, RegisterWidth::kByte));
  }
  const std::vector<std::uint8_t> run = camera.ReadRegisterRun(kRunFirst, kRunLast);
  if (run.size() != before.size()) {
    return Format("a run of {} gives {}", Count(before.size(), "register"),
                  Count(run.size(), "value"));
  }
  for (std::uint32_t i = 0; i < run.size(); ++i) {
    // Registers that change by themselves, such as counters, are ignored.
    const std::uint32_t address = kRunFirst + i;
    if (run[i] != before[i] && camera.ReadRegister(address, RegisterWidth::kByte) == before[i]) {
      return Format("register {} reads as {} in a run and as {} alone", Hex(address, 4),
                    Hex(run[i], 2), Hex(before[i], 2));
    }
  }
  return {};
}

// Compares two reads of the flash. Returns a text with the first difference, or an empty one.
std::string CompareFlash(std::span<const std::uint8_t> first, std::span<const std::uint8_t> second,
                         std::uint32_t address, const std::string& what) {
  if (first.size() != second.size()) {
    return Format("{}: {}, then {}", what, SizeText(first.size()), SizeText(second.size()));
  }
  const auto differs = std::mismatch(first.begin(), first.end(), second.begin());
  if (differs.first == first.end()) {
    return {};
  }
  const auto offset = static_cast<std::uint32_t>(differs.first - first.begin());
  return TwoValues(Format("{}, byte {}", what, Hex(address + offset, 4)), *differs.first,
                   *differs.second, 2);
}

std::string FlashTwice(Camera& camera) {
  const std::uint64_t disagreements = camera.Disagreements();
  const std::vector<std::uint8_t> first = camera.ReadFlash(0, kFlashSize, {});
  const std::vector<std::uint8_t> second = camera.ReadFlash(0, kFlashSize, {});
  if (camera.Disagreements() != disagreements) {
    return "two readings of the flash differed; further ones agreed";
  }
  return CompareFlash(first, second, 0, "two reads of the flash differ");
}

std::string WordsAgree(Camera& camera) {
  const std::vector<std::uint8_t> bytes = camera.ReadFlash(0, kFlashSize, {});
  for (std::uint32_t address = 0; address + 4 <= bytes.size(); address += kPeekStep) {
    const std::uint32_t word = camera.PeekFlashWord(address);
    std::uint32_t wanted = 0;
    for (std::uint32_t i = 0; i < 4; ++i) {
      wanted = wanted << 8U | bytes[address + i];
    }
    if (word != wanted) {
      return Format("the flash word at {} reads as {} alone and as {} in bulk{}", Hex(address, 4),
                    Hex(word, 8), Hex(wanted, 8),
                    word == 0 ? " (0 also means that the read failed)" : "");
    }
  }
  return {};
}

std::string OffsetAgrees(Camera& camera) {
  const std::vector<std::uint8_t> whole = camera.ReadFlash(0, kOffset + kOffsetSize, {});
  const std::vector<std::uint8_t> part = camera.ReadFlash(kOffset, kOffsetSize, {});
  if (whole.size() != kOffset + kOffsetSize) {
    return Format("a read of {} gives {}", SizeText(kOffset + kOffsetSize), SizeText(whole.size()));
  }
  return CompareFlash(std::span(whole).subspan(kOffset), part, kOffset,
                      Format("reads from 0 and from {} differ", Hex(kOffset)));
}

std::string SensorAnswers(Camera& camera, const I2cTarget& target) {
  camera.ReadI2c(target, 0);
  return {};
}

std::string SensorTwice(Camera& camera, const I2cTarget& target) {
  const std::uint32_t first = camera.ReadI2c(target, 0);
  const std::uint32_t second = camera.ReadI2c(target, 0);
  return first == second ? "" : TwoValues("register 0x0 changes by itself", first, second, 2);
}

}  // namespace

std::vector<SelftestCheck> SelftestChecks(Camera& camera, const std::optional<I2cTarget>& target) {
  const std::string skip = target ? "" : "no --slave";
  return {
      {"vendor unit answers", [&camera] { return Answers(camera); }, ""},
      {"feature register reads the same twice", [&camera] { return FeatureTwice(camera); }, ""},
      {"wide and byte read agree", [&camera] { return WideAgrees(camera); }, ""},
      {"run of registers agrees with single reads", [&camera] { return RunAgrees(camera); }, ""},
      {"flash reads the same twice", [&camera] { return FlashTwice(camera); }, ""},
      {"flash words agree with the bulk read", [&camera] { return WordsAgree(camera); }, ""},
      {"flash read from an odd address agrees", [&camera] { return OffsetAgrees(camera); }, ""},
      {"sensor answers", [&camera, target] { return SensorAnswers(camera, *target); }, skip},
      {"sensor register reads the same twice",
       [&camera, target] { return SensorTwice(camera, *target); }, skip},
  };
}

}  // namespace borvanusb
