#pragma once

// An interrupted programming run with its journal, for the tests of journals.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "base/files.h"
#include "flash/engine/journal.h"
#include "flash/program.h"
#include "flash_support.h"

namespace borvanusb::tool_test {

constexpr std::uint32_t kAddress = 0x1F00;
// From 0x1f00 to 0x33ff: shares the sectors 0x1000 and 0x3000 with other bytes, and fills 0x2000.
constexpr std::size_t kSize = 0x1500;
// Transfers before the first erase: reading three sectors and nine landmarks.
constexpr std::uint64_t kBefore = 3 * 64 + 9;
// A whole sector: erase, 68 packets, 4 words.
constexpr std::uint64_t kSectorTransfers = 1 + 68 + 4;

class FlashJournalTest : public FlashTest {
 protected:
  FlashJournalTest() {
    Flash() = Pattern(64 * kKibi, 1);
    before_ = Flash();
    image_ = Pattern(kSize, 2);
    std::filesystem::create_directories(File("a"));
    std::filesystem::create_directories(File("b"));
    command_ = CommandFor("a/image.bin", image_, kAddress);
  }

  FlashProgramCommand CommandFor(const std::string& name, const Bytes& image,
                                 std::uint32_t address) {
    FlashProgramCommand command;
    command.image = WriteFile(name, image);
    command.address = address;
    command.backup = false;
    return command;
  }

  // The complete sector is written and 0x1000 is erased: there, the bytes beside the image are only
  // in the journal.
  void CutOffAfterErasing() {
    FailFrom(kBefore + kSectorTransfers + 2);
    EXPECT_EQ(Run(command_).code, ExitCode::kDevice);
    EXPECT_EQ(Bytes(Flash().begin() + 0x1000, Flash().begin() + 0x2000), Bytes(0x1000, 0xFF));
    Heal();
  }
  Bytes Wanted() const { return Overlaid(before_, kAddress, image_); }
  Journal OnlyJournal() const {
    EXPECT_EQ(Journals().size(), 1U);
    return ParseJournal(ReadWholeText(Journals().at(0)));
  }

  Bytes before_;
  Bytes image_;
  FlashProgramCommand command_;
};

}  // namespace borvanusb::tool_test
