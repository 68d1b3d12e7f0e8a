#pragma once

// A register map: the peripherals, registers and fields of a device with names, addresses and
// meanings. Arrays and derivations are expanded. Equal registers share one form, and texts are
// views into the file, so a map of many thousand registers stays small.

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_lines.h"

namespace borvanusb {

enum class MapAccess : std::uint8_t {
  kReadWrite,
  kReadOnly,
  kWriteOnly,
  kWriteOnce,
  kReadWriteOnce,
};
enum class MapReadAction : std::uint8_t { kNone, kClear, kSet, kModify, kModifyExternal };
enum class MapModifiedWrite : std::uint8_t {
  kModify,
  kOneToClear,
  kOneToSet,
  kOneToToggle,
  kZeroToClear,
  kZeroToSet,
  kZeroToToggle,
  kClear,
  kSet,
};
enum class MapProtection : std::uint8_t { kNone, kSecure, kNonSecure, kPrivileged };
enum class MapUsage : std::uint8_t { kReadWrite, kRead, kWrite };

// The words that the file uses for these values. kNone has no word.
std::string_view WordOf(MapAccess access);
std::string_view WordOf(MapReadAction action);
std::string_view WordOf(MapModifiedWrite write);
std::string_view WordOf(MapProtection protection);
std::string_view WordOf(MapUsage usage);

constexpr bool CanRead(MapAccess access) {
  return access != MapAccess::kWriteOnly && access != MapAccess::kWriteOnce;
}
constexpr bool CanWrite(MapAccess access) {
  return access != MapAccess::kReadOnly;
}

// Which values may be written.
struct MapWriteConstraint {
  enum class Kind : std::uint8_t { kNone, kWriteAsRead, kEnumeratedValues, kRange };
  Kind kind = Kind::kNone;
  std::uint64_t minimum = 0;  // for kRange; both ends are allowed
  std::uint64_t maximum = 0;
};

// A text as it stands in the file, with escapes and line ends. PlainText() converts it.
struct MapText {
  std::string_view raw;
};
// Replaces entities and "%s" (by the index of the array element), and joins white space to single
// blanks.
std::string PlainText(MapText text, std::string_view index = {});

struct MapEnumeratedValue {
  std::string_view name;
  MapText description;
  std::uint64_t value = 0;
  std::uint64_t counting = ~std::uint64_t{0};  // significant bits; the others are written as x
  bool is_default = false;                     // applies to all values without a name of their own
  std::uint32_t offset = 0;
};

struct MapEnumeration {
  std::string_view name;         // usually empty
  std::string_view header_name;  // name for the vendor's header files; usually empty
  MapUsage usage = MapUsage::kReadWrite;
  std::span<const MapEnumeratedValue> values;
  std::uint32_t offset = 0;
};

struct MapField {
  std::string_view name;
  std::string_view index;  // index of the array element, for PlainText()
  MapText description;
  std::uint32_t bit_offset = 0;
  std::uint32_t bit_width = 0;
  MapAccess access = MapAccess::kReadWrite;
  MapReadAction read_action = MapReadAction::kNone;
  MapModifiedWrite modified_write = MapModifiedWrite::kModify;
  MapWriteConstraint constraint;
  // One enumeration for reading and writing, or one for each. Unused entries are null.
  std::array<const MapEnumeration*, 2> enumerations = {};
  std::uint32_t offset = 0;
};

// Everything about a register except its name and address. The elements of an array share it.
struct MapRegisterForm {
  std::uint32_t bits = 0;
  MapAccess access = MapAccess::kReadWrite;
  MapProtection protection = MapProtection::kNone;
  MapReadAction read_action = MapReadAction::kNone;
  MapModifiedWrite modified_write = MapModifiedWrite::kModify;
  MapWriteConstraint constraint;
  std::uint64_t reset_value = 0;
  std::uint64_t reset_mask = 0;  // bits whose reset value is known
  MapText description;
  std::string_view alternate_register;  // the register at the same address, if the file names one
  std::string_view alternate_group;
  std::vector<MapField> fields;
  std::uint64_t entries = 0;  // lines when printed: register, fields, enumerated values
  std::uint32_t offset = 0;
};

struct MapRegister {
  std::string_view name;  // "SENSOR.CH[0].CTRL"
  std::string_view index;
  std::string_view index_name;  // the index's name from dimArrayIndex; usually empty
  std::uint64_t address = 0;
  const MapRegisterForm* form = nullptr;
  bool alternate = false;  // in a cluster that shares the addresses of another one
};

struct MapAddressBlock {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
  std::string_view usage;
};

struct MapPeripheral {
  std::string_view name;
  std::string_view index;
  std::string_view group;
  std::string_view alternate;  // value of <alternatePeripheral>
  MapText description;
  std::uint64_t base = 0;
  std::size_t first_register = 0;  // index in RegisterMap::registers
  std::size_t register_count = 0;
  std::size_t first_block = 0;  // index in RegisterMap::blocks
  std::size_t block_count = 0;
  std::uint32_t offset = 0;
};

struct MapStorage;

// Can be moved, not copied. Its texts are valid as long as the map exists.
struct RegisterMap {
  RegisterMap();
  RegisterMap(const RegisterMap&) = delete;
  RegisterMap& operator=(const RegisterMap&) = delete;
  RegisterMap(RegisterMap&&) noexcept;
  RegisterMap& operator=(RegisterMap&&) noexcept;
  ~RegisterMap();

  std::string_view name;
  MapText description;
  std::uint32_t address_unit_bits = 8;
  std::vector<MapPeripheral> peripherals;
  std::vector<MapRegister> registers;  // by peripheral, each in the order of the file
  std::vector<MapAddressBlock> blocks;

  std::span<const MapRegister> RegistersOf(const MapPeripheral& peripheral) const;
  // The line in the file, from 1, of anything that has an `offset`.
  std::uint64_t LineOf(std::uint32_t offset) const;
  // Possible errors in a usable map, sorted by line.
  std::vector<ListProblem> Doubts() const;
  // The number of further doubts, beyond the limit of Doubts().
  std::uint64_t UntoldDoubts() const;

  std::unique_ptr<MapStorage> storage;  // owns everything that the members above refer to
};

}  // namespace borvanusb
