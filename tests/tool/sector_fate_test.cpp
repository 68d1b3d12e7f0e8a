// Analysis of a sector whose change was interrupted.
#include "flash/engine/sector_fate.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "flash_support.h"

namespace borvanusb::tool_test {
namespace {

class SectorFateTest : public testing::Test {
 protected:
  SectorFate Fate() const { return FateOf(found, sector, named); }

 public:
  // The change names 0x5400 to 0x57ff.
  const Ranges named{{0x5400, 0x57FF}};
  SharedSector sector{
      0x5000, Pattern(0x1000, 1), {Overlaid(Pattern(0x1000, 1), 0x400, Pattern(0x400, 2))}, {}, {}};
  Bytes found = sector.original;
};

TEST_F(SectorFateTest, SectorAsBeforeOrAsPlannedIsUnharmed) {
  EXPECT_EQ(Fate(), SectorFate::kUnharmed);
  found = sector.planned.back();
  EXPECT_EQ(Fate(), SectorFate::kUnharmed);
  found[0x400] = 0;  // a byte that the change names
  EXPECT_EQ(Fate(), SectorFate::kUnharmed);
}

TEST_F(SectorFateTest, ErasedSectorIsOnItsWay) {
  found.assign(0x1000, 0xFF);
  EXPECT_EQ(Fate(), SectorFate::kOnItsWay);
}

TEST_F(SectorFateTest, SectorThatIsWrittenUpToAnyByteIsOnItsWay) {
  for (std::size_t written = 0; written < 0xFF0; written += 7) {
    found.assign(0x1000, 0xFF);
    std::copy_n(sector.planned.back().begin(), written, found.begin());
    EXPECT_EQ(Fate(), SectorFate::kOnItsWay) << written;
  }
}

TEST_F(SectorFateTest, PacketThatIsHalfProgrammedIsOnItsWay) {
  found.assign(0x1000, 0xFF);
  std::copy_n(sector.planned.back().begin(), 600, found.begin());
  for (std::size_t i = 600; i < 660; ++i) {
    found[i] = static_cast<std::uint8_t>(sector.planned.back()[i] | 0x55U);
  }
  EXPECT_EQ(Fate(), SectorFate::kOnItsWay);
}

TEST_F(SectorFateTest, BitsSetAllOverAreAnEraseThatWasCutOff) {
  for (std::size_t i = 0; i < found.size(); ++i) {
    found[i] = static_cast<std::uint8_t>(found[i] | i * 37U);
  }
  EXPECT_EQ(Fate(), SectorFate::kOnItsWay);
}

TEST_F(SectorFateTest, BlankBytesInAPartOfTheSectorWereWrittenThere) {
  std::fill_n(found.begin() + 0x800, 0x420, std::uint8_t{0xFF});
  EXPECT_EQ(Fate(), SectorFate::kOtherwise);
  found = sector.planned.back();
  std::fill_n(found.begin() + 0x800, 0x420, std::uint8_t{0xFF});
  EXPECT_EQ(Fate(), SectorFate::kOtherwise);
}

TEST_F(SectorFateTest, OtherBytesAreNotOnTheWay) {
  found = Pattern(0x1000, 9);
  EXPECT_EQ(Fate(), SectorFate::kOtherwise);
  found.assign(0x1000, 0x00);
  EXPECT_EQ(Fate(), SectorFate::kOtherwise);
  sector.seen.push_back(SectorDigest(found));
  EXPECT_EQ(Fate(), SectorFate::kOnItsWay);
}

TEST_F(SectorFateTest, WhatALaterChangeWroteMayBeEither) {
  found.assign(0x1000, 0xFF);
  sector.since.push_back(SectorDigest(found));
  EXPECT_EQ(Fate(), SectorFate::kEither);
}

TEST(JournalTextTest, JournalIsReadAsItWasWritten) {
  Journal journal{
      .command = "flash program",
      .begun = "2026-01-02T03:04:05Z",
      .vid = "1234",
      .pid = "0001",
      .camera = "path",
      .image = "C:\\images\\fw.bin",
      .sha256 = "00ff",
      .address = 0x1F00,
      .size = 0x1500,
      .backup = BackupRecord{"old.bin", 0x1000, 0x3000, "aa"},
      .sectors = {{0x1000, "now", "after", {"x"}}},
      .landmarks = {{0x10, {1, 2}}},
      .open_sector = SharedSector{0x1000, Pattern(4096, 1), {Pattern(4096, 2)}, {"s"}, {"t"}},
      .replaces = {"other"}};
  const Journal read = ParseJournal(JournalText(journal));
  EXPECT_EQ(JournalText(read), JournalText(journal));
  EXPECT_EQ(read.open_sector->planned, journal.open_sector->planned);
  EXPECT_EQ(read.landmarks.at(0).words, (std::vector<std::uint32_t>{1, 2}));
}

TEST(JournalTextTest, HostileJournalsAreRefused) {
  Journal journal;
  journal.size = 1;
  const std::string good = JournalText(journal);
  EXPECT_NO_THROW(ParseJournal(good));
  const auto with = [&](const std::string& from, const std::string& to) {
    std::string text = good;
    text.replace(text.find(from), from.size(), to);
    return text;
  };
  for (const std::string& text :
       {std::string(), std::string("[]"), with("\"size\":1", "\"size\":0"),
        with("\"size\":1", "\"size\":4294967297"), with("\"size\":1", "\"size\":-1"),
        with("\"borvanusb_journal\":2", "\"borvanusb_journal\":3"),
        with("\"sectors\":[]", "\"sectors\":[[1,\"a\",\"b\",[]]]"),
        with("\"landmarks\":[]",
             "\"open_sector\":{\"address\":0,\"original\":\"00\",\"planned\":[],"
             "\"seen\":[],\"since\":[]},\"landmarks\":[]")}) {
    EXPECT_THROW(ParseJournal(text), std::invalid_argument) << text;
  }
}

}  // namespace
}  // namespace borvanusb::tool_test
