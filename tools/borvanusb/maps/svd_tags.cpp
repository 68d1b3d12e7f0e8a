#include "maps/svd_tags.h"

#include <algorithm>
#include <utility>

#include "maps/short_text.h"

namespace borvanusb {

namespace {

using NamedTag = std::pair<std::string_view, SvdTag>;
using enum SvdTag;
using short_text::PartAt;

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
    // Not needed: names for the vendor's header files, processor data, legal texts.
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
constexpr std::size_t kLongestName = 23;
constexpr std::size_t kWord = 8;
constexpr unsigned kSlotShift = 56;

// Up to eight characters of a name, starting at `place`.
constexpr std::uint64_t WordOf(std::string_view name, std::size_t place) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < kWord && place + i < name.size(); ++i) {
    word |= std::uint64_t{static_cast<unsigned char>(name[place + i])} << (kWord * i);
  }
  return word;
}

// The factor avoids collisions between all tags. A new tag may require a different factor.
constexpr std::size_t SlotOf(std::uint64_t word, std::size_t size) {
  return (word + size) * 0xb08e2bdca1d8d2d1U >> kSlotShift;
}

// A tag in the lookup table. Comparing whole words is faster than calling memcmp().
struct TagSlot {
  std::uint64_t first = 0;
  std::uint64_t last = 0;    // the last eight characters, if the name has at least eight
  std::uint64_t middle = 0;  // the characters between the first and the last word
  std::size_t size = 0;
  SvdTag tag = kUnknown;
};

constexpr std::array<TagSlot, 256> MakeSlots() {
  std::array<TagSlot, 256> slots = {};
  for (const auto& [name, tag] : kTags) {
    const std::uint64_t first = WordOf(name, 0);
    const std::uint64_t last = name.size() < kWord ? 0 : WordOf(name, name.size() - kWord);
    const std::uint64_t middle = name.size() > 2 * kWord ? WordOf(name, kWord) : 0;
    slots[SlotOf(first, name.size())] = {first, last, middle, name.size(), tag};
  }
  return slots;
}
constexpr std::array<TagSlot, 256> kSlots = MakeSlots();
static_assert(std::all_of(kTags.begin(), kTags.end(),
                          [](const NamedTag& tag) {
                            const TagSlot& slot =
                                kSlots[SlotOf(WordOf(tag.first, 0), tag.first.size())];
                            return slot.tag == tag.second && slot.size == tag.first.size();
                          }),
              "two tags have the same slot");
static_assert(std::all_of(kTags.begin(), kTags.end(),
                          [](const NamedTag& tag) {
                            return tag.first.size() >= kShortestName &&
                                   tag.first.size() <= kLongestName;
                          }),
              "a name has another length");

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
  const std::size_t size = name.size();
  if (size < kShortestName || size > kLongestName) {
    return kUnknown;
  }
  if (size >= kWord) {
    const auto first = PartAt<std::uint64_t>(name, 0);
    const auto last = PartAt<std::uint64_t>(name, size - kWord);
    const TagSlot& slot = kSlots[SlotOf(first, size)];
    const bool same = slot.first == first && slot.last == last && slot.size == size;
    const bool same_middle = size <= 2 * kWord || slot.middle == PartAt<std::uint64_t>(name, kWord);
    return same && same_middle ? slot.tag : kUnknown;
  }
  constexpr std::size_t kHalf = 4;
  const std::uint64_t first = size >= kHalf
                                  ? PartAt<std::uint32_t>(name, 0) |
                                        std::uint64_t{PartAt<std::uint32_t>(name, size - kHalf)}
                                            << (kWord * (size - kHalf))
                                  : WordOf(name, 0);
  const TagSlot& slot = kSlots[SlotOf(first, size)];
  return slot.first == first && slot.size == size ? slot.tag : kUnknown;
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
