#include "images/intel_hex.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "base/format.h"
#include "images/record_lines.h"

namespace borvanusb {

namespace {

// Length, address, type and checksum stand beside the data.
constexpr RecordRule kHexRule{5, 0};
constexpr std::size_t kDataStart = 4;
constexpr std::uint64_t kBank = 0x10000;  // range of a 16-bit address
constexpr unsigned kBankBits = 16;
constexpr unsigned kParagraphBits = 4;  // a segment starts at a multiple of 16

enum Type : std::uint8_t {
  kData = 0,
  kEnd = 1,
  kSegmentBase = 2,
  kSegmentStart = 3,
  kLinearBase = 4,
  kLinearStart = 5,
};

// Length of the data, by type. kData may have any length.
constexpr std::array<std::size_t, 6> kLengths = {0, 0, 2, 4, 2, 4};

struct HexRecord {
  std::uint8_t type = 0;
  std::uint32_t address = 0;
  std::span<const std::uint8_t> data;  // view into the bytes it was parsed from
};

HexRecord RecordOf(const FilePlace& place, std::span<const std::uint8_t> bytes) {
  CheckRecord(kHexRule, place, bytes);
  const HexRecord record{bytes[3], HighFirst(bytes.subspan(1, 2)),
                         bytes.subspan(kDataStart, bytes[0])};
  if (record.type >= kLengths.size()) {
    throw ImageError(
        Format("{}: there are no records of type {}", place.Text(), Hex(record.type, 2)));
  }
  if (record.type != kData && record.data.size() != kLengths.at(record.type)) {
    throw ImageError(Format("{}: a record of type {} has {} bytes of data, not {}", place.Text(),
                            Hex(record.type, 2), kLengths.at(record.type), record.data.size()));
  }
  return record;
}

class HexReader {
 public:
  void Take(const FilePlace& place, std::string_view line) {
    if (ended_) {
      throw ImageError(Format("{}: the file continues after its end record", place.Text()));
    }
    if (!line.starts_with(':')) {
      throw ImageError(Format("{}: a record begins with a colon", place.Text()));
    }
    last_line_ = place.number;
    const std::vector<std::uint8_t> bytes = RecordBytes(place, line.substr(1));
    const HexRecord record = RecordOf(place, bytes);
    switch (record.type) {
      case kData:
        TakeData(place, record);
        break;
      case kEnd:
        ended_ = true;
        break;
      case kSegmentBase:
        base_ = HighFirst(record.data) << kParagraphBits;
        is_linear_ = false;
        break;
      case kLinearBase:
        base_ = HighFirst(record.data) << kBankBits;
        is_linear_ = true;
        break;
      case kSegmentStart:
        TakeStart(place, (HighFirst(record.data.first(2)) << kParagraphBits) +
                             HighFirst(record.data.subspan(2)));
        break;
      default:
        TakeStart(place, HighFirst(record.data));
        break;
    }
  }

  ImageContent End() {
    if (!ended_) {
      throw ImageError(Format(
          "line {}: the file ends here without an end record (:00000001FF); it is incomplete",
          last_line_));
    }
    return {collector_.Take(), start_};
  }

 private:
  void TakeData(const FilePlace& place, const HexRecord& record) {
    const std::uint64_t to_end = kBank - record.address;
    if (is_linear_ || record.data.size() <= to_end) {
      collector_.Add(std::uint64_t{base_} + record.address, record.data, place);
      return;
    }
    collector_.Add(std::uint64_t{base_} + record.address, record.data.first(to_end), place);
    collector_.Add(base_, record.data.subspan(to_end), place);
  }

  void TakeStart(const FilePlace& place, std::uint32_t start) {
    if (start_) {
      throw ImageError(Format("{}: a second record names a start address", place.Text()));
    }
    start_ = start;
  }

  SegmentCollector collector_;
  std::optional<std::uint32_t> start_;
  std::uint32_t base_ = 0;
  bool is_linear_ = false;
  bool ended_ = false;
  std::uint64_t last_line_ = 0;
};

std::string RecordText(std::uint8_t type, std::uint32_t address,
                       std::span<const std::uint8_t> data) {
  std::vector<std::uint8_t> bytes = {static_cast<std::uint8_t>(data.size())};
  AppendHighFirst(bytes, address, 2);
  bytes.push_back(type);
  bytes.insert(bytes.end(), data.begin(), data.end());
  return RecordLine(kHexRule, ":", std::move(bytes));
}

}  // namespace

ImageContent ReadIntelHex(std::span<const std::uint8_t> file) {
  HexReader reader;
  ForEachRecord(file,
                [&](const FilePlace& place, std::string_view line) { reader.Take(place, line); });
  return reader.End();
}

std::string IntelHexText(const Segments& segments) {
  std::string text;
  std::uint32_t bank = 0;
  for (const Segment& segment : segments) {
    const std::span<const std::uint8_t> bytes = segment.bytes;
    for (std::size_t done = 0; done < bytes.size();) {
      const auto address = static_cast<std::uint32_t>(segment.address + done);
      if (address >> kBankBits != bank) {
        bank = address >> kBankBits;
        std::vector<std::uint8_t> high;
        AppendHighFirst(high, bank, 2);
        text += RecordText(kLinearBase, 0, high);
      }
      const std::uint64_t in_bank = kBank - address % kBank;
      const auto size = std::min<std::uint64_t>({kBytesPerRecord, bytes.size() - done, in_bank});
      text += RecordText(kData, address, bytes.subspan(done, size));
      done += size;
    }
  }
  return text + RecordText(kEnd, 0, {});
}

}  // namespace borvanusb
