#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace borvanusb {

// The elements of the schema that a map uses.
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
  // Elements that contain other elements.
  kPeripherals,
  kPeripheral,
  kRegisters,
  kCluster,
  kRegister,
  kFields,
  kField,
  kEnumeratedValues,
  // An element that is skipped with all its content.
  kSkipped,
  kUnknown,
};

// Elements that have children of their own kind and may use derivedFrom.
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
// Numbers that occur hundreds of times in most maps. They are parsed while the tree is built.
constexpr std::uint64_t kNumbersInAdvance =
    TagBit(SvdTag::kAddressOffset) | TagBit(SvdTag::kSize) | TagBit(SvdTag::kResetValue) |
    TagBit(SvdTag::kResetMask) | TagBit(SvdTag::kBitOffset) | TagBit(SvdTag::kBitWidth) |
    TagBit(SvdTag::kLsb) | TagBit(SvdTag::kMsb);

// The elements that are allowed directly in an element of this kind, or in its list (<registers>).
std::uint64_t TagsAllowedIn(SvdKind kind);

}  // namespace borvanusb
