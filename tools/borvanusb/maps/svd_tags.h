#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace borvanusb {

// The elements of the schema that say something of a map.
enum class SvdTag : std::uint8_t {
  kName,
  kDescription,
  kGroupName,
  kBaseAddress,
  kAddressOffset,
  kAddressUnitBits,
  kAddressBlock,
  kSize,
  kAccess,
  kProtection,
  kResetValue,
  kResetMask,
  kDim,
  kDimIncrement,
  kDimIndex,
  kDimArrayIndex,
  kAlternateRegister,
  kAlternateGroup,
  kAlternateCluster,
  kAlternatePeripheral,
  kReadAction,
  kModifiedWriteValues,
  kWriteConstraint,
  kBitOffset,
  kBitWidth,
  kLsb,
  kMsb,
  kBitRange,
  kHeaderEnumName,
  kUsage,
  kValue,
  kIsDefault,
  kOffset,
  kRange,
  kMinimum,
  kMaximum,
  kWriteAsRead,
  kUseEnumeratedValues,
  kEnumeratedValue,
  // Those that hold others.
  kPeripherals,
  kPeripheral,
  kRegisters,
  kCluster,
  kRegister,
  kFields,
  kField,
  kEnumeratedValues,
  // What a map does not need, with all in it.
  kSkipped,
  kUnknown,
};

// The elements that have children of their own kind and can be derived.
enum class SvdKind : std::uint8_t {
  kDevice,
  kPeripheral,
  kCluster,
  kRegister,
  kField,
  kEnumeration,
};

SvdTag SvdTagOf(std::string_view name);
std::string_view NameOf(SvdTag tag);
// "register"
std::string_view NameOf(SvdKind kind);

constexpr std::uint64_t TagBit(SvdTag tag) {
  return std::uint64_t{1} << static_cast<unsigned>(tag);
}
// The numbers that most maps have hundreds of.
constexpr std::uint64_t kNumbersInAdvance =
    TagBit(SvdTag::kAddressOffset) | TagBit(SvdTag::kSize) | TagBit(SvdTag::kResetValue) |
    TagBit(SvdTag::kResetMask) | TagBit(SvdTag::kBitOffset) | TagBit(SvdTag::kBitWidth) |
    TagBit(SvdTag::kLsb) | TagBit(SvdTag::kMsb);

// The elements that may stand directly in one of a kind, or in the list in it (<registers>).
std::uint64_t TagsAllowedIn(SvdKind kind);

}  // namespace borvanusb
