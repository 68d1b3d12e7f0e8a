#include "maps/svd_tags.h"

#include <algorithm>
#include <utility>

#include "maps/short_text.h"

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

constexpr std::size_t kShortestName = 3;
constexpr std::size_t kSlots = 256;
constexpr std::uint8_t kFree = 0xFF;

// The factors are such that no two tags meet; whoever adds one may have to look for others.
constexpr std::size_t SlotOf(std::string_view name) {
  const auto third = static_cast<unsigned char>(name[2]);
  const auto last_but_two = static_cast<unsigned char>(name[name.size() - 3]);
  return (third * 110U + last_but_two * 255U + name.size() * 181U) % kSlots;
}

constexpr std::array<std::uint8_t, kSlots> MakeSlots() {
  std::array<std::uint8_t, kSlots> slots = {};
  slots.fill(kFree);
  for (std::size_t i = 0; i < kTags.size(); ++i) {
    slots[SlotOf(kTags[i].first)] = static_cast<std::uint8_t>(i);
  }
  return slots;
}
constexpr std::array<std::uint8_t, kSlots> kTagOfSlot = MakeSlots();
static_assert(kSlots - std::count(kTagOfSlot.begin(), kTagOfSlot.end(), kFree) == kTags.size(),
              "two tags have the same slot");

constexpr std::array<std::string_view, static_cast<std::size_t>(kSkipped)> MakeNames() {
  std::array<std::string_view, static_cast<std::size_t>(kSkipped)> names = {};
  for (const NamedTag& tag : kTags) {
    if (tag.second != kSkipped) {
      names[static_cast<std::size_t>(tag.second)] = tag.first;
    }
  }
  return names;
}
constexpr auto kTagNames = MakeNames();

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
  if (name.size() < kShortestName) {
    return kUnknown;
  }
  const std::size_t place = kTagOfSlot[SlotOf(name)];
  return place != kFree && IsSameText(kTags[place].first, name) ? kTags[place].second : kUnknown;
}

std::string_view NameOf(SvdTag tag) {
  const auto place = static_cast<std::size_t>(tag);
  return place < kTagNames.size() ? kTagNames[place] : "";
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
