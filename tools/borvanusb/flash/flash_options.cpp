#include "flash/flash_options.h"

#include <utility>
#include <vector>

#include "base/format.h"
#include "flash/name_address.h"

namespace borvanusb {

Range RangeBesideAll(const std::string& text) {
  try {
    return FlashRangeValue(text);
  } catch (const WrongValue& wrong) {
    throw WrongValue(Format("{}; all means the whole flash", wrong.what()));
  }
}

std::string RangeRemark(const std::string& text) {
  const std::string remark = RemarkOnEnd(text);
  return remark.empty() ? remark : Format("{} {}", text, remark);
}

void AskForAddress(const std::string& image, const GivenOptions& given) {
  const std::vector<std::uint32_t> addresses = AddressesInName(image);
  if (given.Has("--address") || addresses.empty()) {
    return;
  }
  std::string shown;
  std::vector<WrongUse::Way> ways;
  for (const std::uint32_t address : addresses) {
    shown += Format("{}{}", shown.empty() ? "" : " and ", Hex(address));
    ways.push_back({Format("If it belongs to {}", Hex(address)), {"--address", Hex(address)}});
  }
  ways.push_back({"If it belongs to the beginning of the flash", {"--address", "0"}});
  throw WrongUse(
      Format("--address: is missing, but the name of {} carries {}", Quoted(image), shown),
      std::move(ways));
}

}  // namespace borvanusb
