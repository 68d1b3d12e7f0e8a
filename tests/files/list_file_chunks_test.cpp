// List files across the pieces in which they are read: wherever one ends, the entries are the same
// as those of the lines one by one.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "list_reading.h"

namespace borvan_test {
namespace {

// Files are read in pieces of this many bytes.
constexpr std::size_t kPiece = std::size_t{256} * 1024;

// A line of `size` bytes, its end included, that gives no entry.
std::string Remark(std::size_t size) {
  return "//" + std::string(size - 3, 'x') + "\n";
}

std::string Printable(std::string_view text) {
  std::string printable;
  for (const char c : text) {
    printable += c >= ' ' && c <= '~' ? std::string(1, c)
                                      : "<" + std::to_string(static_cast<unsigned char>(c)) + ">";
  }
  return printable;
}

class ListFileChunksTest : public ListReadingTest {
 protected:
  // The reading of `text` when a piece ends `cut` bytes into it.
  Reading ReadCut(std::string_view text, std::size_t cut) const {
    return Read(Remark(kPiece - cut) + std::string(text));
  }

  // Expects `text` to give `expected` wherever a piece ends.
  void ExpectAtEveryCut(std::string_view text, const Entries& expected) const {
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
      EXPECT_EQ(ReadCut(text, cut), (Reading{expected, false})) << Printable(text) << " at " << cut;
    }
  }

  // Expects texts of whole lines to read as their lines do: those that can stand in one file
  // together, the others each alone.
  void ExpectLikeTheirLines(const std::vector<std::string>& texts) const {
    std::string together;
    Reading expected;
    for (const std::string& text : texts) {
      const Reading alone = LineByLine(text);
      if (alone.refused || text.find('\x1A') != std::string::npos) {
        EXPECT_EQ(Read(text), alone) << Printable(text);
      } else {
        together += text;
        expected.entries.insert(expected.entries.end(), alone.entries.begin(), alone.entries.end());
      }
    }
    EXPECT_GT(expected.entries.size(), 100U);
    const Reading reading = Read(together);
    ASSERT_EQ(reading.entries.size(), expected.entries.size());
    for (std::size_t i = 0; i < reading.entries.size(); ++i) {
      ASSERT_EQ(reading.entries[i], expected.entries[i]) << "entry " << i;
    }
  }
};

TEST_F(ListFileChunksTest, PlainLines) {
  ExpectAtEveryCut("0x3012, 0x5a,\r\n7,8\r\n", {{0x3012, 0x5A}, {7, 8}});
  ExpectAtEveryCut("0x3012, 0x5a,\n7,8\n", {{0x3012, 0x5A}, {7, 8}});
  ExpectAtEveryCut("3012,5A\n7,8\n", {{0x3012, 0x5A}, {7, 8}});
}

TEST_F(ListFileChunksTest, LastLineWithoutAnEnd) {
  ExpectAtEveryCut("0x3012, 0x5a", {{0x3012, 0x5A}});
  ExpectAtEveryCut("0x3012, 0x5a,", {{0x3012, 0x5A}});
  ExpectAtEveryCut("0x3012, 0x5a, \r", {{0x3012, 0x5A}});
}

// The last piece lies where the one before it lay: behind the file's end still stands what that one
// had there, here ends of lines.
TEST_F(ListFileChunksTest, LongestPlainLineIsNotReadOnIntoAFormerPiece) {
  const std::string line = "0x12345678, 0x9abcdef0,\r\n";
  const std::string whole_piece = line + "\n" + Remark(kPiece - line.size() - 1);
  const Reading expected = {{{0x12345678, 0x9ABCDEF0}, {0x12345678, 0x9ABCDEF0}}, false};
  EXPECT_EQ(Read(whole_piece + line), expected);
  EXPECT_EQ(Read(whole_piece + line.substr(0, 24)), expected);
}

TEST_F(ListFileChunksTest, BlanksWhereverTheyMayStand) {
  ExpectAtEveryCut("  \t 0x10  ,  0x20  ,  \r\n7,8\n", {{0x10, 0x20}, {7, 8}});
  ExpectAtEveryCut("\v\f\r 0x10 \r,\r 0x20 \r\r\n7,8\n", {{0x10, 0x20}, {7, 8}});
  // A blank ends a number, so the second "2" is none of its digits.
  ExpectAtEveryCut("1 2,3  4\n7,8\n", {{1, 3}, {7, 8}});
  // The conversion passes over blanks behind a prefix.
  ExpectAtEveryCut("0x  12,0x  34,\n7,8\n", {{0x12, 0x34}, {7, 8}});
  ExpectAtEveryCut("   \r\n\n \t \n7,8\n", {{7, 8}});
}

TEST_F(ListFileChunksTest, PrefixesAndWhatStandsBeforeThem) {
  ExpectAtEveryCut("reg 0x3012,val 0x5a,\n7,8\n", {{0x3012, 0x5A}, {7, 8}});
  ExpectAtEveryCut("0X3012,0X5A\n7,8\n", {{0x3012, 0x5A}, {7, 8}});
  ExpectAtEveryCut("0x0x12,0x0x34,\n7,8\n", {{0x12, 0x34}, {7, 8}});
  // "0 x" is no prefix: the number ends behind its 0.
  ExpectAtEveryCut("0 x12,34\n7,8\n", {{0, 0x34}, {7, 8}});
}

TEST_F(ListFileChunksTest, Remarks) {
  ExpectAtEveryCut("// 1,2\n7,8\n", {{7, 8}});
  ExpectAtEveryCut(" \t // 1,2,3\r\n7,8\n", {{7, 8}});
  ExpectAtEveryCut("/ /1,2\n7,8\n", {{0, 2}, {7, 8}});
  ExpectAtEveryCut("/,2\n7,8\n", {{0, 2}, {7, 8}});
  ExpectAtEveryCut("1,2 // a, b, c\n7,8\n", {{1, 2}, {7, 8}});
  ExpectAtEveryCut("1,2, // a\n7,8\n", {{1, 2}, {7, 8}});
}

TEST_F(ListFileChunksTest, LinesWithoutACommaAndDroppedAddresses) {
  ExpectAtEveryCut("0x3012 0x5a\n7,8\n", {{7, 8}});
  ExpectAtEveryCut("0xfff2,1\n7,8\n", {{7, 8}});
  ExpectAtEveryCut("  0XFFF2,\r\n7,8\n", {{7, 8}});
  ExpectAtEveryCut("0xfff2 ,1\n7,8\n", {{0xFFF2, 1}, {7, 8}});
  ExpectAtEveryCut("0xfff2  ,1\n7,8\n", {{0xFFF2, 1}, {7, 8}});
}

TEST_F(ListFileChunksTest, EmptyAndFurtherFields) {
  ExpectAtEveryCut(",,\n7,8\n", {{0, 0}, {7, 8}});
  ExpectAtEveryCut(" , , \n7,8\n", {{0, 0}, {7, 8}});
  ExpectAtEveryCut("1,2,3,4\n7,8\n", {{1, 2}, {7, 8}});
  ExpectAtEveryCut(",5\n7,8\n", {{0, 5}, {7, 8}});
}

TEST_F(ListFileChunksTest, NulAndControlZ) {
  ExpectAtEveryCut(std::string_view("12\0"
                                    "3,4\0"
                                    "5\n7,8\n",
                                    13),
                   {{0x12, 4}, {7, 8}});
  ExpectAtEveryCut("1,2\n3,4\x1A\n5,6\n", {{1, 2}, {3, 4}});
  ExpectAtEveryCut(
      "1,2\r\n\x1A"
      "5,6\n",
      {{1, 2}});
}

TEST_F(ListFileChunksTest, LinesOfOneFieldAreRefused) {
  for (const std::string_view text : {"0x3012,\n7,8\n", "0x3012, \t \r\n7,8\n", ",\n", " , \n7,8\n",
                                      "1,2\n3,", "3,\x1A\n4,5\n"}) {
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
      EXPECT_TRUE(ReadCut(text, cut).refused) << Printable(text) << " at " << cut;
    }
  }
}

TEST_F(ListFileChunksTest, FileThatIsExactlyOneOrTwoPieces) {
  const std::string line = "1,2\n";
  for (const std::size_t pieces : {1U, 2U}) {
    EXPECT_EQ(Read(Remark(pieces * kPiece - line.size()) + line), (Reading{{{1, 2}}, false}));
    // The last line's end is what the next piece would open with.
    EXPECT_EQ(Read(Remark(pieces * kPiece - 3) + "1,2"), (Reading{{{1, 2}}, false}));
  }
}

// Numbers from a seed, the same on every system.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : random_(seed) {}
  std::size_t Below(std::size_t limit) { return random_() % limit; }
  template <typename Choice, std::size_t kCount>
  const Choice& Among(const Choice (&choices)[kCount]) {
    return choices[Below(kCount)];
  }

 private:
  std::mt19937 random_;
};

constexpr std::string_view kTokens[] = {
    ",",     ",",   ",",    " ",    " ",  "\t",     "\r",
    "\n",    "\n",  "\r\n", "0x",   "0X", "12",     "ffff",
    "-",     "+",   "g",    "//",   "/",  "0xfff2", "0xFF",
    "F2",    "\v",  "\f",   "\xA0", "x",  "   ",    "0x3012, 0x5a,\r\n",
    "7,8\n", "1,2,"};

TEST_F(ListFileChunksTest, RandomTextsReadAsTheirLinesDo) {
  int refused = 0;
  for (std::uint32_t seed = 0; seed < 400; ++seed) {
    Dice dice(seed);
    std::string text;
    const std::size_t tokens = 1 + dice.Below(24);
    for (std::size_t i = 0; i < tokens; ++i) {
      text += dice.Among(kTokens);
    }
    if (dice.Below(8) == 0) {
      text.insert(dice.Below(text.size() + 1), 1, '\0');
    }
    if (dice.Below(8) == 0) {
      text.insert(dice.Below(text.size() + 1), 1, '\x1A');
    }
    const std::size_t cut = dice.Below(text.size() + 1);
    const Reading expected = LineByLine(text);
    refused += expected.refused ? 1 : 0;
    ASSERT_EQ(ReadCut(text, cut), expected)
        << "seed " << seed << ": " << Printable(text) << " at " << cut;
  }
  // Texts of both kinds were tried, or the comparison says little.
  EXPECT_GT(refused, 30);
  EXPECT_LT(refused, 370);
}

// A line that is never refused, of up to some hundred bytes; now and then one of several pieces.
std::string RandomLine(Dice& dice) {
  constexpr std::string_view kEnds[] = {"\n", "\r\n", " \r\n", "\r\r\n"};
  constexpr std::string_view kAddresses[] = {"0x3012", "3013",  "0xfff2", "0xFFF2 ",  "a 0x10",
                                             "",       " 0X7 ", "-1",     "123456789"};
  constexpr std::string_view kValues[] = {"0x5a", "5b", "g", "\xA0", "0x12 remark", "-2", "0X1"};
  constexpr std::string_view kTails[] = {"", ",", " , ", ",,", ", // and so on, and on", ",3,4"};
  if (dice.Below(12) == 0) {
    return "// " + std::string(dice.Below(80), ',') + std::string(dice.Among(kEnds));
  }
  const auto blanks = [&] {
    const std::size_t often = dice.Below(4000);
    return std::string(often == 0 ? 300000 : often % 4, often % 2 == 0 ? ' ' : '\t');
  };
  std::string line = blanks();
  line += dice.Among(kAddresses);
  line += blanks() + "," + blanks();
  line += dice.Among(kValues);
  line += blanks();
  line += dice.Among(kTails);
  line += blanks();
  return line + std::string(dice.Among(kEnds));
}

TEST_F(ListFileChunksTest, RandomFilesOfManyPiecesReadAsTheirLinesDo) {
  for (std::uint32_t seed = 1000; seed < 1020; ++seed) {
    Dice dice(seed);
    std::string content;
    while (content.size() < 3 * kPiece) {
      content += RandomLine(dice);
    }
    const Reading expected = LineByLine(content);
    ASSERT_FALSE(expected.refused);
    ASSERT_GT(expected.entries.size(), 10U);
    ASSERT_TRUE(Read(content) == expected) << "seed " << seed;
  }
}

TEST_F(ListFileChunksTest, RandomTextsBeforeMoreLinesReadAsTheirLinesDo) {
  std::vector<std::string> texts;
  for (std::uint32_t seed = 2000; seed < 3000; ++seed) {
    Dice dice(seed);
    std::string text;
    const std::size_t tokens = 1 + dice.Below(12);
    for (std::size_t i = 0; i < tokens; ++i) {
      text += dice.Among(kTokens);
    }
    texts.push_back(text + "\n" + Remark(60));
  }
  ExpectLikeTheirLines(texts);
}

// Lines as list writers make them are read in a quicker way; what nearly looks like one must not be
// taken for one.
TEST_F(ListFileChunksTest, LinesThatDifferFromACommonOneInACharacterOrTwo) {
  constexpr std::string_view kCommon[] = {"0x3012, 0x5a,\r\n", "0xfff2, 0x01,\n", "12345678,1\n",
                                          "0xABCDEF01,0xfedcba98,\r\n"};
  constexpr std::string_view kInstead[] = {"",   ",",  " ",    "\t", "\r",      "\n", "x", "X",
                                           "g",  "/",  "-",    "0x", "0",       "9",  "a", "F",
                                           "  ", ",,", "\xA0", "//", ", 0x12,", ";"};
  std::vector<std::string> texts;
  for (const std::string_view common : kCommon) {
    for (std::size_t at = 0; at <= common.size(); ++at) {
      for (const std::string_view instead : kInstead) {
        for (const std::size_t dropped : {0U, 1U, 2U}) {
          std::string text(common.substr(0, at));
          text += instead;
          text += common.substr(std::min(at + dropped, common.size()));
          texts.push_back(text + "\n" + Remark(60));
        }
      }
    }
  }
  ExpectLikeTheirLines(texts);
}

TEST_F(ListFileChunksTest, NumbersOfNineDigitsAreTooLargeForAnEntry) {
  const std::string more = Remark(60);
  EXPECT_EQ(Read("0x123456789, 0x5a,\n" + more), (Reading{{{0xFFFFFFFF, 0x5A}}, false}));
  EXPECT_EQ(Read("0x012345678, 0x000000000005a,\n" + more), (Reading{{{0x12345678, 0x5A}}, false}));
  EXPECT_EQ(Read("0x12345678, 0x123456789\n" + more), (Reading{{{0x12345678, 0xFFFFFFFF}}, false}));
}

constexpr std::size_t kTenMegabytes = 10'000'000;

TEST_F(ListFileChunksTest, LineOfTenMegabytesIsOneLine) {
  const std::string zeros(kTenMegabytes, '0');
  EXPECT_EQ(Read("1," + zeros + "7\n3,4\n"), (Reading{{{1, 7}, {3, 4}}, false}));
  EXPECT_EQ(Read(zeros + "7,1\n3,4\n"), (Reading{{{7, 1}, {3, 4}}, false}));
  EXPECT_EQ(Read("text " + zeros + "x7,1,\n3,4\n"), (Reading{{{7, 1}, {3, 4}}, false}));
}

TEST_F(ListFileChunksTest, RemarkOfTenMegabytesIsOneRemark) {
  EXPECT_EQ(Read("//" + std::string(kTenMegabytes, ',') + "1,2\n3,4\n"),
            (Reading{{{3, 4}}, false}));
}

TEST_F(ListFileChunksTest, TenMegabytesWithoutACommaAreSkipped) {
  EXPECT_EQ(Read(std::string(kTenMegabytes, '1') + "\n3,4\n"), (Reading{{{3, 4}}, false}));
}

TEST_F(ListFileChunksTest, TenMegabytesBehindTheSecondFieldAreIgnored) {
  EXPECT_EQ(Read("1,2," + std::string(kTenMegabytes, ',') + "5\n3,4\n"),
            (Reading{{{1, 2}, {3, 4}}, false}));
}

TEST_F(ListFileChunksTest, AddressWithTenMegabytesOfBlanksIsRefused) {
  EXPECT_TRUE(Read("1," + std::string(kTenMegabytes, ' ') + "\n3,4\n").refused);
}

}  // namespace
}  // namespace borvan_test
