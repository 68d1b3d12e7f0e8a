#include "flash/name_address.h"

#include <algorithm>
#include <string_view>

#include "base/numbers.h"

namespace borvanusb {

namespace {

constexpr std::string_view kBackupMark = "-backup-";
constexpr std::size_t kLongestAddress = 10;  // 0x and eight digits

// Only ASCII counts. A number next to letters of other alphabets is separate.
bool IsWordLetter(char character) {
  return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
         (character >= 'A' && character <= 'Z');
}

}  // namespace

std::vector<std::uint32_t> AddressesInName(const std::string& file) {
  std::string_view name = file;
  name.remove_prefix(name.find_last_of("/\\") + 1);
  if (const std::size_t mark = name.rfind(kBackupMark); mark != std::string_view::npos) {
    name.remove_prefix(mark);
  }
  std::vector<std::uint32_t> addresses;
  while (!name.empty()) {
    const auto begin = std::ranges::find_if(name, IsWordLetter);
    const auto end = std::find_if_not(begin, name.end(), IsWordLetter);
    const std::string_view word(begin, end);
    const bool prefixed = word.starts_with("0x") || word.starts_with("0X");
    const auto number = prefixed && word.size() <= kLongestAddress ? ParseNumber(word) : 0;
    const auto address = static_cast<std::uint32_t>(number.value_or(0));
    if (address != 0 && std::ranges::find(addresses, address) == addresses.end()) {
      addresses.push_back(address);
    }
    name = std::string_view(end, name.end());
  }
  return addresses;
}

}  // namespace borvanusb
