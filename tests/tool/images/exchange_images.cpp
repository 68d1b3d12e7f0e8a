// Reads and writes image files for compare.py.
//   exchange_images read FILE          prints "ADDRESS BYTES" for each segment, in hexadecimal
//   exchange_images write FORM < LIST  FORM: hex, s19, s28, s37; prints the file
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "base/hex_bytes.h"
#include "images/intel_hex.h"
#include "images/read_image.h"
#include "images/srecord.h"

namespace {

using namespace borvanusb;

int Read(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
  try {
    const ImageForm form = FormOf(name, bytes, ImageForm::kAuto).value_or(ImageForm::kRaw);
    for (const Segment& segment : ReadImage(bytes, form).segments) {
      std::cout << std::hex << segment.address << ' ' << HexBytes(segment.bytes) << '\n';
    }
    return 0;
  } catch (const ImageError& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}

int Write(const std::string& form) {
  SegmentCollector collector;
  std::uint32_t address = 0;
  std::string bytes;
  while (std::cin >> std::hex >> address >> bytes) {
    collector.Add(address, ParseHexBytes(bytes).value(), {"line", 0});
  }
  const Segments segments = collector.Take();
  if (form == "hex") {
    std::cout << IntelHexText(segments);
    return 0;
  }
  const SRecordForm records = form == "s19"   ? SRecordForm::kS19
                              : form == "s28" ? SRecordForm::kS28
                                              : SRecordForm::kS37;
  std::cout << SRecordText(segments, records);
  return 0;
}

}  // namespace

int main(int count, char** words) {
  if (count != 3) {
    return 2;
  }
  return std::string(words[1]) == "read" ? Read(words[2]) : Write(words[2]);
}
