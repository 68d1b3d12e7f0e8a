#include "device/device_path.h"

#include "base/hexadecimal_text.h"

namespace borvan {
namespace {

constexpr std::size_t kIdDigits = 4;

}  // namespace

std::u16string LowerCasePath(std::u16string_view path) {
  std::u16string lower(path);
  for (char16_t& c : lower) {
    if (c >= u'A' && c <= u'Z') {
      c = static_cast<char16_t>(c - u'A' + u'a');
    }
  }
  return lower;
}

bool IsUsbPath(std::u16string_view path) {
  return path.find(u"usb#") != std::u16string_view::npos;
}

std::int32_t ReadPathId(std::u16string_view path, std::u16string_view marker) {
  const std::size_t found = path.find(marker);
  // A missing marker counts as found one position before the path.
  const std::size_t digits =
      found == std::u16string_view::npos ? marker.size() - 1 : found + marker.size();
  if (digits >= path.size()) {
    return 0;
  }
  return ParseLong(path.substr(digits, kIdDigits));
}

}  // namespace borvan
