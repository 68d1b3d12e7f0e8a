#pragma once

// What the tests of a programming that is cut off share: the work without a cut, cuts at each of
// its transfers, and the runs that must finish it.

#include <algorithm>
#include <cstdint>
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
  // Runs the work once without a cut: a file at an address, and what it holds.
  void Measure(const std::string& file, std::optional<std::uint32_t> address, Segments segments) {
    segments_ = std::move(segments);
    command_.image = file;
    command_.address = address;
    command_.backup = false;
    flash() = before_;
    const std::uint64_t start = chip().transfers;
    EXPECT_EQ(Run(command_).code, ExitCode::kDone);
    EXPECT_EQ(flash(), Wanted());
    EXPECT_FALSE(HasJournal());
    transfers_ = chip().transfers - start;
    flash() = before_;
  }

  Bytes Wanted() const {
    Bytes wanted = before_;
    for (const Segment& segment : segments_) {
      wanted = Overlaid(std::move(wanted), segment.address, segment.bytes);
    }
    return wanted;
  }

  // Bytes that are not the image's are not those from before.
  bool IsHarmed() {
    Bytes beside = flash();
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
    EXPECT_TRUE(flash() == Wanted()) << where;
    // A journal whose bytes nobody missed may be another camera's: it stays.
    EXPECT_FALSE(harmed && HasJournal() && leftovers == Leftovers::kNone) << where;
    std::filesystem::remove_all(host.journal_folder);
  }

  // At each transfer, or at every `step`-th of them.
  void ExpectEveryCutIsMended(ExitCode code, std::uint64_t step = 1) {
    for (std::uint64_t transfer = 1; transfer <= transfers_; transfer += step) {
      flash() = before_;
      FailFrom(transfer, code);
      EXPECT_EQ(Run(command_).code, code) << transfer;
      ExpectSecondRunFinishes(std::to_string(transfer));
    }
  }

  // Both runs are cut off: each at the transfer `start` and at transfers after it.
  void ExpectTwoCutsAreMended(std::uint64_t start, std::uint64_t step, std::uint64_t second_step) {
    for (std::uint64_t first = start; first <= transfers_; first += step) {
      for (std::uint64_t second = start; second <= transfers_; second += second_step) {
        flash() = before_;
        FailFrom(first);
        EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
        FailFrom(second);
        Run(command_);
        // What the first cut left alone keeps its journal.
        ExpectSecondRunFinishes(std::to_string(first) + " and " + std::to_string(second),
                                Leftovers::kAllowed);
      }
    }
  }

  void ExpectEveryFailureIsRestored(std::uint64_t step) {
    command_.restore_on_failure = true;
    for (std::uint64_t transfer = 1; transfer <= transfers_; transfer += step) {
      flash() = before_;
      FailAt(transfer);
      EXPECT_EQ(Run(command_).code, ExitCode::kDevice) << transfer;
      EXPECT_TRUE(flash() == before_) << transfer;
      EXPECT_FALSE(HasJournal()) << transfer;
      Heal();
    }
  }

  const Bytes before_ = Pattern(64 * 1024, 1);
  Segments segments_;
  FlashProgramCommand command_;
  std::uint64_t transfers_ = 0;
};

}  // namespace borvanusb::tool_test
