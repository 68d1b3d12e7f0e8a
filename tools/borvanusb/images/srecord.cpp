#include "images/srecord.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "base/format.h"
#include "images/record_lines.h"

namespace borvanusb {

namespace {

// The length stands beside what it counts.
constexpr RecordRule kSRecordRule{1, 0xFF};
constexpr std::uint64_t kHighestShortCount = 0xFFFF;   // of an S5 record
constexpr std::uint64_t kHighestLongCount = 0xFFFFFF;  // of an S6 record
// Bytes of the address or count, by type. S4 does not exist.
constexpr std::array<std::size_t, 10> kAddressBytes = {2, 2, 3, 4, 0, 2, 3, 4, 3, 2};

struct SRecord {
  int type = 0;
  std::uint32_t address = 0;  // the count for S5 and S6
  std::span<const std::uint8_t> data;
};

int TypeOf(const FilePlace& place, std::string_view line) {
  if (line.size() < 2 || line[0] != 'S' || line[1] < '0' || line[1] > '9') {
    throw ImageError(Format("{}: a record begins with S and a digit", place.Text()));
  }
  if (line[1] == '4') {
    throw ImageError(Format("{}: there are no records of type S4", place.Text()));
  }
  return line[1] - '0';
}

SRecord RecordOf(const FilePlace& place, int type, std::span<const std::uint8_t> bytes) {
  const std::size_t address = kAddressBytes.at(static_cast<std::size_t>(type));
  CheckRecord(kSRecordRule, place, bytes);
  const std::size_t shortest = 1 + address + 1;
  const bool takes_data = type <= 3;
  if (bytes.size() < shortest || (!takes_data && bytes.size() != shortest)) {
    throw ImageError(Format("{}: a record S{} has {} {} bytes, not {}", place.Text(), type,
                            takes_data ? "at least" : "exactly", shortest, bytes.size()));
  }
  return {type, HighFirst(bytes.subspan(1, address)),
          bytes.subspan(1 + address, bytes.size() - shortest)};
}

class SRecordReader {
 public:
  void Take(const FilePlace& place, std::string_view line) {
    if (ended_) {
      throw ImageError(Format("{}: the file continues after its start record", place.Text()));
    }
    last_line_ = place.number;
    const int type = TypeOf(place, line);
    const std::vector<std::uint8_t> bytes = RecordBytes(place, line.substr(2));
    const SRecord record = RecordOf(place, type, bytes);
    switch (type) {
      case 0:
        break;
      case 1:
      case 2:
      case 3:
        if (counted_) {
          throw ImageError(Format("{}: a data record follows the record count", place.Text()));
        }
        collector_.Add(record.address, record.data, place);
        ++records_;
        break;
      case 5:
      case 6:
        CheckCount(place, record.address);
        break;
      default:
        start_ = record.address;
        ended_ = true;
        break;
    }
  }

  ImageContent End() {
    if (!ended_ && !counted_) {
      throw ImageError(
          Format("line {}: the file ends here without a start record (S7, S8, S9) or a "
                 "count (S5, S6); it is incomplete",
                 last_line_));
    }
    return {collector_.Take(), start_};
  }

 private:
  void CheckCount(const FilePlace& place, std::uint32_t count) {
    if (count != records_) {
      throw ImageError(
          Format("{}: the file counts {} data records, but has {}", place.Text(), count, records_));
    }
    counted_ = true;
  }

  SegmentCollector collector_;
  std::optional<std::uint32_t> start_;
  std::uint64_t records_ = 0;
  bool counted_ = false;
  bool ended_ = false;
  std::uint64_t last_line_ = 0;
};

std::string RecordText(int type, std::uint32_t address, std::span<const std::uint8_t> data) {
  const std::size_t width = kAddressBytes.at(static_cast<std::size_t>(type));
  std::vector<std::uint8_t> bytes = {static_cast<std::uint8_t>(width + data.size() + 1)};
  AppendHighFirst(bytes, address, width);
  bytes.insert(bytes.end(), data.begin(), data.end());
  return RecordLine(kSRecordRule, Format("S{}", type), std::move(bytes));
}

// The type of the data records: 1, 2 or 3.
int DataType(SRecordForm form) {
  return static_cast<int>(form) + 1;
}

}  // namespace

ImageContent ReadSRecord(std::span<const std::uint8_t> file) {
  SRecordReader reader;
  ForEachRecord(file,
                [&](const FilePlace& place, std::string_view line) { reader.Take(place, line); });
  return reader.End();
}

SRecordForm ShortestSRecordForm(const Segments& segments) {
  const std::uint32_t last = segments.empty() ? 0 : segments.back().Place().last;
  for (const SRecordForm form : {SRecordForm::kS19, SRecordForm::kS28}) {
    if (last <= LastAddressOf(form)) {
      return form;
    }
  }
  return SRecordForm::kS37;
}

std::uint32_t LastAddressOf(SRecordForm form) {
  constexpr std::uint32_t kAll = 0xFFFFFFFF;
  return kAll >> (form == SRecordForm::kS19 ? 16U : form == SRecordForm::kS28 ? 8U : 0U);
}

std::string SRecordText(const Segments& segments, SRecordForm form) {
  const int type = DataType(form);
  std::string text = RecordText(0, 0, {});
  std::uint64_t records = 0;
  for (const Segment& segment : segments) {
    const std::span<const std::uint8_t> bytes = segment.bytes;
    for (std::size_t done = 0; done < bytes.size(); done += kBytesPerRecord) {
      text += RecordText(type, static_cast<std::uint32_t>(segment.address + done),
                         bytes.subspan(done, std::min(kBytesPerRecord, bytes.size() - done)));
      ++records;
    }
  }
  if (records <= kHighestLongCount) {
    text +=
        RecordText(records <= kHighestShortCount ? 5 : 6, static_cast<std::uint32_t>(records), {});
  }
  constexpr int kStartOfS1 = 10;
  return text + RecordText(kStartOfS1 - type, 0, {});
}

}  // namespace borvanusb
