// ELF files of 32 and 64 bits in both byte orders, assembled by hand.
#include <tuple>

#include "images/elf.h"
#include "images_support.h"

namespace borvanusb::tool_test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// The bytes of a file, with functions to write numbers at offsets.
class ElfFile {
 public:
  ElfFile(int bits, bool low_first) : bits_(bits), low_first_(low_first) {
    bytes = {0x7F,
             'E',
             'L',
             'F',
             static_cast<std::uint8_t>(bits / 32),
             static_cast<std::uint8_t>(low_first ? 1 : 2),
             1};
    bytes.resize(bits == 32 ? 52 : 64);
    Put(bits == 32 ? 42 : 54, 2, HeaderSize());  // e_phentsize
  }

  std::size_t HeaderSize() const { return bits_ == 32 ? 32 : 56; }

  void Put(std::size_t place, std::size_t size, std::uint64_t number) {
    if (bytes.size() < place + size) {
      bytes.resize(place + size);
    }
    for (std::size_t i = 0; i < size; ++i) {
      const std::size_t shift = 8 * (low_first_ ? i : size - 1 - i);
      bytes[place + i] = static_cast<std::uint8_t>(number >> shift);
    }
  }

  void SetEntry(std::uint64_t entry) { Put(24, Word(), entry); }
  void SetTable(std::uint64_t place, std::uint64_t count) {
    Put(bits_ == 32 ? 28 : 32, Word(), place);
    Put(bits_ == 32 ? 44 : 56, 2, count);
  }

  struct Header {
    std::uint32_t type = 1;
    std::uint64_t offset = 0;
    std::uint64_t physical = 0;
    std::uint64_t file_size = 0;
    std::uint64_t memory_size = 0;
  };
  // The virtual address differs, because the reader must not use it.
  void PutHeader(std::size_t place, const Header& header) {
    Put(place, 4, header.type);
    if (bits_ == 32) {
      for (const auto& [at, value] :
           {std::pair(4, header.offset), std::pair(8, header.physical ^ 0x00F00000U),
            std::pair(12, header.physical), std::pair(16, header.file_size),
            std::pair(20, header.memory_size), std::pair(28, std::uint64_t{0})}) {
        Put(place + static_cast<std::size_t>(at), 4, value);
      }
      return;
    }
    for (const auto& [at, value] :
         {std::pair(8, header.offset), std::pair(16, header.physical ^ 0x00F00000U),
          std::pair(24, header.physical), std::pair(32, header.file_size),
          std::pair(40, header.memory_size), std::pair(48, std::uint64_t{0})}) {
      Put(place + static_cast<std::size_t>(at), 8, value);
    }
  }

  Bytes bytes;

 private:
  std::size_t Word() const { return bits_ == 32 ? 4 : 8; }

  int bits_;
  bool low_first_;
};

std::string ErrorIn(const Bytes& bytes) {
  return ErrorOf([&] { ReadElf(bytes); });
}

class ElfTest : public testing::TestWithParam<std::tuple<int, bool>> {
 protected:
  // Two segments, the higher one first, with a note and a segment without file bytes between.
  ElfTest() : file(std::get<0>(GetParam()), std::get<1>(GetParam())) {
    const std::size_t size = file.HeaderSize();
    file.SetEntry(0x20004);
    file.SetTable(kTable, 4);
    file.PutHeader(kTable, {1, kData, 0x20000, 4, 4});
    file.PutHeader(kTable + size, {4, kData, 0x30000, 4, 4});
    file.PutHeader(kTable + 2 * size, {1, kData + 4, 0x1000, 2, 0x100});
    file.PutHeader(kTable + 3 * size, {1, 0xFFFFFF, 0x40000, 0, 0x100});
    file.bytes.resize(kData);
    const Bytes data = {1, 2, 3, 4, 5, 6};
    file.bytes.insert(file.bytes.end(), data.begin(), data.end());
  }

  static constexpr std::size_t kTable = 0x40;
  static constexpr std::size_t kData = 0x180;

  std::string Second() const { return std::to_string(kTable + 2 * file.HeaderSize()); }

 public:
  ElfFile file;
};

INSTANTIATE_TEST_SUITE_P(All, ElfTest, testing::Combine(testing::Values(32, 64), testing::Bool()));

TEST_P(ElfTest, LoadedBytesLieAtTheirPhysicalAddresses) {
  const ImageContent content = ReadElf(file.bytes);
  EXPECT_EQ(content.segments, (Segments{{0x1000, {5, 6}}, {0x20000, {1, 2, 3, 4}}}));
  EXPECT_EQ(content.start, 0x20004U);
}

TEST_P(ElfTest, CutOffAnywhereItIsRefused) {
  // After the table, every truncation cuts into one of the two segments.
  for (std::size_t size = 0; size < file.bytes.size(); ++size) {
    const Bytes cut(file.bytes.begin(), file.bytes.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_NE(ErrorIn(cut), "") << size;
    EXPECT_TRUE(ErrorIn(cut).starts_with("byte ")) << ErrorIn(cut);
  }
}

TEST_P(ElfTest, SegmentBeyondTheFileIsRefused) {
  file.PutHeader(kTable + 2 * file.HeaderSize(), {1, kData + 4, 0x1000, 3, 0x100});
  EXPECT_EQ(ErrorIn(file.bytes),
            "byte " + Second() + ": a segment's 3 bytes at byte 388 exceed the file's end, 390");
  file.PutHeader(kTable + 2 * file.HeaderSize(), {1, 0xFFFFFFFF, 0x1000, 2, 0x100});
  EXPECT_EQ(
      ErrorIn(file.bytes),
      "byte " + Second() + ": a segment's 2 bytes at byte 4294967295 exceed the file's end, 390");
}

TEST_P(ElfTest, MoreBytesInTheFileThanInMemoryAreRefused) {
  file.PutHeader(kTable + 2 * file.HeaderSize(), {1, kData + 4, 0x1000, 2, 1});
  EXPECT_EQ(ErrorIn(file.bytes), "byte " + Second() +
                                     ": a segment has 2 bytes in the file, more than the 1 byte in "
                                     "memory");
}

TEST_P(ElfTest, SegmentsThatOverlapAreRefused) {
  file.PutHeader(kTable + 2 * file.HeaderSize(), {1, kData + 4, 0x20003, 2, 2});
  EXPECT_EQ(ErrorIn(file.bytes),
            "the program header at byte " + Second() + ": duplicate bytes for 0x20003");
}

TEST_P(ElfTest, TableBeyondTheFileIsRefused) {
  file.SetTable(kTable, 40);
  EXPECT_EQ(ErrorIn(file.bytes).substr(0, 43),
            "byte 64: the 40 program headers of " + std::to_string(file.HeaderSize()) + " bytes");
  file.SetTable(0xFFFFFFF0, 4);
  EXPECT_NE(ErrorIn(file.bytes).find("exceed the file's end, 390"), std::string::npos);
}

TEST_P(ElfTest, FileThatIsNotLinkedIsRefused) {
  file.SetTable(0, 0);
  EXPECT_EQ(ErrorIn(file.bytes),
            "it has no program headers and therefore no addresses: link it first");
  file.SetTable(kTable, 1);
  file.PutHeader(kTable, {1, 0, 0, 0, 0});
  EXPECT_EQ(ErrorIn(file.bytes), "it contains no bytes for the flash");
  file.SetTable(kTable, 0xFFFF);
  EXPECT_NE(ErrorIn(file.bytes).find("more program headers than this tool reads"),
            std::string::npos);
}

TEST_P(ElfTest, MarksThatAreNotThoseOfAnElfFileAreRefused) {
  struct Case {
    std::size_t place;
    std::uint8_t value;
    std::string error;
  };
  for (const Case& test : std::vector<Case>{
           {0, 0x7E, "byte 0: the ELF magic number is missing"},
           {4, 3, "byte 4: 3 is neither 1 (32 bits) nor 2 (64 bits)"},
           {5, 0, "byte 5: 0 is not a valid byte order: 1 is low byte first, 2 high byte first"},
           {6, 2, "byte 6: the version is 2, not 1"},
       }) {
    Bytes bytes = file.bytes;
    bytes[test.place] = test.value;
    EXPECT_EQ(ErrorIn(bytes), test.error);
  }
}

TEST(Elf64Test, AddressesBeyond4GiBAreRefused) {
  ElfFile file(64, true);
  file.SetTable(64, 1);
  file.PutHeader(64, {1, 64, 0x100000000, 4, 4});
  EXPECT_EQ(ErrorIn(file.bytes),
            "the program header at byte 64: 4 bytes at 0x100000000 are beyond the last address "
            "0xffffffff");
  file.PutHeader(64, {1, 64, 0xFFFFFFFC, 4, 4});
  file.SetEntry(0x100000000);
  EXPECT_EQ(ReadElf(file.bytes).segments.front().address, 0xFFFFFFFCU);
  EXPECT_EQ(ReadElf(file.bytes).start, std::nullopt);
  file.PutHeader(64, {1, 0xFFFFFFFFFFFFFFFF, 0, 0xFFFFFFFFFFFFFFFF, 0xFFFFFFFFFFFFFFFF});
  EXPECT_NE(ErrorIn(file.bytes), "");
}

}  // namespace
}  // namespace borvanusb::tool_test
