#pragma once

// Shared by the tests of interrupted programming: the work without an interruption, interruptions
// at its transfers, and the runs that must finish it.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "flash/program.h"
#include "flash_support.h"
#include "images/segments.h"

namespace borvanusb::tool_test {

class FlashCutFixture : public FlashTest {
 protected:
  // Only each BORVAN_CUT_STEP-th of the interruptions, if that is set.
  static std::uint64_t Step(std::uint64_t step) {
    const char* const text = std::getenv("BORVAN_CUT_STEP");
    return text != nullptr ? step * std::strtoul(text, nullptr, 10) : step;
  }

  // Runs the work once without an interruption. `segments` are the content of `file`.
  void Measure(const std::string& file, std::optional<std::uint32_t> address, Segments segments) {
    segments_ = std::move(segments);
    command_.image = file;
    command_.address = address;
    command_.backup = false;
    Flash() = before_;
    const std::uint64_t start = Chip().transfers;
    EXPECT_EQ(Run(command_).code, ExitCode::kDone);
    EXPECT_EQ(Flash(), Wanted());
    EXPECT_FALSE(HasJournal());
    transfers_ = Chip().transfers - start;
    Flash() = before_;
  }

  Bytes Wanted() const {
    Bytes wanted = before_;
    for (const Segment& segment : segments_) {
      wanted = Overlaid(std::move(wanted), segment.address, segment.bytes);
    }
    return wanted;
  }

  // Whether bytes beside the image are changed.
  bool IsHarmed() {
    Bytes beside = Flash();
    for (const Segment& segment : segments_) {
      std::copy_n(before_.begin() + segment.address, segment.bytes.size(),
                  beside.begin() + segment.address);
    }
    return beside != before_;
  }

  enum class Leftovers { kNone, kAllowed };

  void ExpectSecondRunFinishes(const std::string& where, Leftovers leftovers = Leftovers::kNone) {
    Heal();
    const bool harmed = IsHarmed();
    const Outcome outcome = Run(command_);
    EXPECT_EQ(outcome.code, ExitCode::kDone) << where << ": " << outcome.message;
    EXPECT_TRUE(Flash() == Wanted()) << where;
    // A journal whose bytes are not missing may belong to another camera, so it stays.
    EXPECT_FALSE(harmed && HasJournal() && leftovers == Leftovers::kNone) << where;
    std::filesystem::remove_all(host.journal_folder);
  }

  // Interrupts at each transfer, or at every `step`-th one.
  void ExpectEveryCutIsMended(ExitCode code, std::uint64_t step = 1) {
    for (std::uint64_t transfer = 1; transfer <= transfers_; transfer += Step(step)) {
      Flash() = before_;
      FailFrom(transfer, code);
      EXPECT_EQ(Run(command_).code, code) << transfer;
      ExpectSecondRunFinishes(std::to_string(transfer));
    }
  }

  // Interrupts two runs: each at the transfer `start` and at every `step`-th one after it.
  void ExpectTwoCutsAreMended(std::uint64_t start, std::uint64_t step, std::uint64_t second_step) {
    for (std::uint64_t first = start; first <= transfers_; first += Step(step)) {
      for (std::uint64_t second = start; second <= transfers_; second += Step(second_step)) {
        Flash() = before_;
        FailFrom(first);
        EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
        FailFrom(second);
        Run(command_);
        // Sectors that the first interruption did not affect keep their journal.
        ExpectSecondRunFinishes(std::to_string(first) + " and " + std::to_string(second),
                                Leftovers::kAllowed);
      }
    }
  }

  // Lets one transfer fail. The same run must restore the flash.
  void ExpectEveryFailureIsRestored(std::uint64_t step) {
    command_.restore_on_failure = true;
    for (std::uint64_t transfer = 1; transfer <= transfers_; transfer += Step(step)) {
      Flash() = before_;
      FailAt(transfer);
      EXPECT_EQ(Run(command_).code, ExitCode::kDevice) << transfer;
      EXPECT_TRUE(Flash() == before_) << transfer;
      EXPECT_FALSE(HasJournal()) << transfer;
      Heal();
    }
  }

  const Bytes before_ = Pattern(64 * kKibi, 1);
  Segments segments_;
  FlashProgramCommand command_;
  std::uint64_t transfers_ = 0;
};

}  // namespace borvanusb::tool_test
