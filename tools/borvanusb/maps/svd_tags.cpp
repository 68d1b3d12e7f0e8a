#include "maps/svd_tags.h"

#include <algorithm>
#include <utility>

namespace borvanusb {

namespace {

using NamedTag = std::pair<std::string_view, SvdTag>;
using enum SvdTag;

constexpr auto kTags = std::to_array<NamedTag>({
    {"name", kName},
    {"description", kDescription},
    {"groupName", kGroupName},
    {"baseAddress", kBaseAddress},
    {"addressOffset", kAddressOffset},
    {"addressUnitBits", kAddressUnitBits},
    {"addressBlock", kAddressBlock},
    {"size", kSize},
    {"access", kAccess},
    {"protection", kProtection},
    {"resetValue", kResetValue},
    {"resetMask", kResetMask},
    {"dim", kDim},
    {"dimIncrement", kDimIncrement},
    {"dimIndex", kDimIndex},
    {"dimArrayIndex", kDimArrayIndex},
    {"alternateRegister", kAlternateRegister},
    {"alternateGroup", kAlternateGroup},
    {"alternateCluster", kAlternateCluster},
    {"alternatePeripheral", kAlternatePeripheral},
    {"readAction", kReadAction},
    {"modifiedWriteValues", kModifiedWriteValues},
    {"writeConstraint", kWriteConstraint},
    {"bitOffset", kBitOffset},
    {"bitWidth", kBitWidth},
    {"lsb", kLsb},
    {"msb", kMsb},
    {"bitRange", kBitRange},
    {"headerEnumName", kHeaderEnumName},
    {"usage", kUsage},
    {"value", kValue},
    {"isDefault", kIsDefault},
    {"offset", kOffset},
    {"range", kRange},
    {"minimum", kMinimum},
    {"maximum", kMaximum},
    {"writeAsRead", kWriteAsRead},
    {"useEnumeratedValues", kUseEnumeratedValues},
    {"enumeratedValue", kEnumeratedValue},
    {"peripherals", kPeripherals},
    {"peripheral", kPeripheral},
    {"registers", kRegisters},
    {"cluster", kCluster},
    {"register", kRegister},
    {"fields", kFields},
    {"field", kField},
    {"enumeratedValues", kEnumeratedValues},
    // Names in the header files of the chip's maker, its processor, legal texts.
    {"vendorExtensions", kSkipped},
    {"vendor", kSkipped},
    {"vendorID", kSkipped},
    {"series", kSkipped},
    {"version", kSkipped},
    {"licenseText", kSkipped},
    {"cpu", kSkipped},
    {"headerSystemFilename", kSkipped},
    {"headerDefinitionsPrefix", kSkipped},
    {"headerStructName", kSkipped},
    {"width", kSkipped},
    {"interrupt", kSkipped},
    {"prependToName", kSkipped},
    {"appendToName", kSkipped},
    {"disableCondition", kSkipped},
    {"displayName", kSkipped},
    {"dataType", kSkipped},
    {"dimName", kSkipped},
});

constexpr std::size_t kLongestName = 24;

// The tags of each length in a row: most lengths have two or three.
struct TagsByLength {
  std::array<NamedTag, kTags.size()> tags = {};
  std::array<std::uint8_t, kLongestName + 2> first = {};
};

constexpr TagsByLength SortByLength() {
  TagsByLength sorted;
  std::size_t count = 0;
  for (std::size_t length = 0; length <= kLongestName; ++length) {
    sorted.first[length] = static_cast<std::uint8_t>(count);
    for (const NamedTag& tag : kTags) {
      if (tag.first.size() == length) {
        sorted.tags[count++] = tag;
      }
    }
  }
  sorted.first[kLongestName + 1] = static_cast<std::uint8_t>(count);
  return sorted;
}
constexpr TagsByLength kByLength = SortByLength();
static_assert(kByLength.first[kLongestName + 1] == kTags.size(), "a name is too long");

constexpr std::uint64_t Bits(std::initializer_list<SvdTag> tags) {
  std::uint64_t bits = TagBit(kName) | TagBit(kDescription) | TagBit(kSkipped);
  for (const SvdTag tag : tags) {
    bits |= TagBit(tag);
  }
  return bits;
}

constexpr std::uint64_t kProperties = Bits({kSize, kAccess, kProtection, kResetValue, kResetMask});
constexpr std::uint64_t kArray = Bits({kDim, kDimIncrement, kDimIndex, kDimArrayIndex});
constexpr std::uint64_t kEffects = Bits({kReadAction, kModifiedWriteValues, kWriteConstraint});

}  // namespace

SvdTag SvdTagOf(std::string_view name) {
  if (name.size() > kLongestName) {
    return kUnknown;
  }
  for (std::size_t i = kByLength.first[name.size()]; i < kByLength.first[name.size() + 1]; ++i) {
    if (kByLength.tags[i].first == name) {
      return kByLength.tags[i].second;
    }
  }
  return kUnknown;
}

std::string_view NameOf(SvdTag tag) {
  const auto* const found = std::find_if(kTags.begin(), kTags.end(),
                                         [&](const NamedTag& one) { return one.second == tag; });
  return found == kTags.end() ? "" : found->first;
}

std::string_view NameOf(SvdKind kind) {
  constexpr std::array<std::string_view, 6> kNames = {"device",   "peripheral", "cluster",
                                                      "register", "field",      "enumeratedValues"};
  return kNames.at(static_cast<std::size_t>(kind));
}

std::uint64_t TagsAllowedIn(SvdKind kind) {
  switch (kind) {
    case SvdKind::kDevice:
      return kProperties | Bits({kAddressUnitBits, kPeripherals, kPeripheral});
    case SvdKind::kPeripheral:
      return kProperties | kArray |
             Bits({kGroupName, kBaseAddress, kAddressBlock, kAlternatePeripheral, kRegisters,
                   kRegister, kCluster});
    case SvdKind::kCluster:
      return kProperties | kArray | Bits({kAddressOffset, kAlternateCluster, kRegister, kCluster});
    case SvdKind::kRegister:
      return kProperties | kArray | kEffects |
             Bits({kAddressOffset, kAlternateRegister, kAlternateGroup, kFields, kField});
    case SvdKind::kField:
      return kArray | kEffects |
             Bits({kAccess, kBitOffset, kBitWidth, kLsb, kMsb, kBitRange, kEnumeratedValues});
    case SvdKind::kEnumeration:
      return Bits({kHeaderEnumName, kUsage, kEnumeratedValue});
  }
  return 0;
}

}  // namespace borvanusb
