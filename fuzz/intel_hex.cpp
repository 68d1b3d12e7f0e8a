// Intel HEX files: any bytes, and files of valid records with overlapping addresses. Compared with
// an independent reader; the result is written and read again.

#include <string>
#include <vector>

#include "images/intel_hex.h"
#include "support/check.h"
#include "support/image_models.h"
#include "support/input.h"

namespace {

using borvan_fuzz::Check;
using borvan_fuzz::Input;
using Bytes = std::vector<std::uint8_t>;

void CheckFile(const std::string& file) {
  const borvanusb::Segments segments = borvan_fuzz::CheckAgainst(
      borvan_fuzz::ModelOfIntelHex(file),
      [&] { return borvanusb::ReadIntelHex(Bytes(file.begin(), file.end())); });
  if (!segments.empty()) {
    const std::string text = borvanusb::IntelHexText(segments);
    Check(borvanusb::ReadIntelHex(Bytes(text.begin(), text.end())).segments == segments,
          "what is written is read otherwise");
    Check(borvan_fuzz::ModelOfIntelHex(text).has_value(), "what is written is not in order");
  }
}

// Records with valid checksums, mostly in a valid order; only a few addresses, so that they
// overlap.
std::string MadeFile(Input input) {
  constexpr std::uint16_t kPlaces[] = {0, 1, 0x10, 0xFFF0, 0xFFFE, 0xFFFF};
  constexpr std::uint16_t kBases[] = {0, 1, 0x1000, 0xF000, 0xFFFF};
  constexpr std::uint8_t kTypes[] = {0, 0, 0, 0, 2, 4, 4, 3, 5, 1, 6};
  std::string file;
  while (!input.Empty()) {
    const std::uint8_t type = kTypes[input.Choice(sizeof(kTypes))];
    Bytes data;
    if (type == 2 || type == 4) {
      const std::uint16_t base = kBases[input.Choice(5)];
      data = {static_cast<std::uint8_t>(base >> 8U), static_cast<std::uint8_t>(base)};
    } else if (type == 0) {
      data = input.Bytes(input.Choice(20));
    } else {
      data = Bytes(type == 1 ? 0 : 4, 7);
    }
    const auto place = static_cast<std::uint16_t>(kPlaces[input.Choice(6)] + input.Choice(4));
    Bytes record = {static_cast<std::uint8_t>(data.size()), static_cast<std::uint8_t>(place >> 8U),
                    static_cast<std::uint8_t>(place), type};
    record.insert(record.end(), data.begin(), data.end());
    unsigned sum = 0;
    for (const std::uint8_t byte : record) {
      sum += byte;
    }
    record.push_back(static_cast<std::uint8_t>(256 - sum % 256));
    file += ":" + borvan_fuzz::Digits(record, input.Choice(2) == 1) + "\n";
  }
  return file + ":00000001FF\n";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CheckFile(std::string(data, data + size));
  CheckFile(MadeFile(Input(data, size)));
  return 0;
}
