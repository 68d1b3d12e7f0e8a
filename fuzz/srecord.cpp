// Motorola S-record files: any bytes, and files of valid records with overlapping addresses.
// Compared with an independent reader; the result is written and read again.

#include <string>
#include <vector>

#include "images/srecord.h"
#include "support/check.h"
#include "support/image_models.h"
#include "support/input.h"

namespace {

using borvan_fuzz::Check;
using borvan_fuzz::Input;
using borvanusb::SRecordForm;
using Bytes = std::vector<std::uint8_t>;

void CheckFile(const std::string& file) {
  const borvanusb::Segments segments = borvan_fuzz::CheckAgainst(
      borvan_fuzz::ModelOfSRecord(file),
      [&] { return borvanusb::ReadSRecord(Bytes(file.begin(), file.end())); });
  if (segments.empty()) {
    return;
  }
  for (const SRecordForm form : {SRecordForm::kS19, SRecordForm::kS28, SRecordForm::kS37}) {
    if (segments.back().Place().last <= LastAddressOf(form)) {
      const std::string text = borvanusb::SRecordText(segments, form);
      Check(borvanusb::ReadSRecord(Bytes(text.begin(), text.end())).segments == segments,
            "what is written is read otherwise");
      Check(borvan_fuzz::ModelOfSRecord(text).has_value(), "what is written is not in order");
    }
  }
}

// Records with valid checksums, mostly in a valid order; only a few addresses, so that they
// overlap.
std::string MadeFile(Input input) {
  constexpr std::uint32_t kPlaces[] = {0, 0x10, 0xFFFE, 0xFFFFF0, 0xFFFFFFF0, 0xFFFFFFFE};
  constexpr unsigned kTypes[] = {1, 2, 3, 3, 3, 0, 5, 6, 7, 8, 9, 4};
  constexpr unsigned kWidths[] = {2, 2, 3, 4, 2, 2, 3, 4, 3, 2};
  std::string file;
  std::uint32_t records = 0;
  while (!input.Empty()) {
    const unsigned type = kTypes[input.Choice(sizeof(kTypes) / sizeof(kTypes[0]))];
    const Bytes data = type <= 3 ? input.Bytes(input.Choice(20)) : Bytes();
    const bool is_count = type == 5 || type == 6;
    const std::uint32_t place =
        is_count ? records + (input.Choice(8) == 0 ? 1 : 0)
                 : static_cast<std::uint32_t>(kPlaces[input.Choice(6)] + input.Choice(4));
    records += type >= 1 && type <= 3 ? 1 : 0;
    Bytes record = {static_cast<std::uint8_t>(kWidths[type] + data.size() + 1)};
    for (unsigned i = kWidths[type]; i-- > 0;) {
      record.push_back(static_cast<std::uint8_t>(place >> (8 * i)));
    }
    record.insert(record.end(), data.begin(), data.end());
    unsigned sum = 0;
    for (const std::uint8_t byte : record) {
      sum += byte;
    }
    record.push_back(static_cast<std::uint8_t>(255 - sum % 256));
    file += "S" + std::to_string(type) + borvan_fuzz::Digits(record, input.Choice(2) == 1) + "\n";
  }
  return file + "S9030000FC\n";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CheckFile(std::string(data, data + size));
  CheckFile(MadeFile(Input(data, size)));
  return 0;
}
