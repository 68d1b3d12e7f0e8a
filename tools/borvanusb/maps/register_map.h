#pragma once

// A register map: the peripherals, registers and fields of a device with names, addresses and
// meanings, arrays and derivations written out. Registers that are alike share one form, texts are
// those of the file: a map of many thousand registers is small.

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

// The words of the file for each of them; kNone has none.
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
  std::uint64_t minimum = 0;  // of a range, both included
  std::uint64_t maximum = 0;
};

// A text as the file has it, with escapes and line ends; PlainText() makes it readable.
struct MapText {
  std::string_view raw;
};
// Entities resolved, white space as single blanks, "%s" replaced by the index of an array's
// element.
std::string PlainText(MapText text, std::string_view index = {});

struct MapEnumeratedValue {
  std::string_view name;
  MapText description;
  std::uint64_t value = 0;
  std::uint64_t counting = ~std::uint64_t{0};  // bits that count; the others are written as x
  bool is_default = false;                     // stands for all values that have no name
  std::uint32_t offset = 0;
};

struct MapEnumeration {
  std::string_view name;         // mostly empty
  std::string_view header_name;  // in the header files of the chip's maker; mostly empty
  MapUsage usage = MapUsage::kReadWrite;
  std::span<const MapEnumeratedValue> values;
  std::uint32_t offset = 0;
};

struct MapField {
  std::string_view name;
  std::string_view index;  // of the element of an array, for PlainText()
  MapText description;
  std::uint32_t bit_offset = 0;
  std::uint32_t bit_width = 0;
  MapAccess access = MapAccess::kReadWrite;
  MapReadAction read_action = MapReadAction::kNone;
  MapModifiedWrite modified_write = MapModifiedWrite::kModify;
  MapWriteConstraint constraint;
  // One for reading and writing, or one for each; null where there is none.
  std::array<const MapEnumeration*, 2> enumerations = {};
  std::uint32_t offset = 0;
};

// All of a register but its name and address; the elements of an array share it.
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
  std::string_view alternate_register;  // has the same address, as the file says; mostly empty
  std::string_view alternate_group;
  std::vector<MapField> fields;
  std::uint64_t entries = 0;  // lines when written out: itself, fields and enumerated values
  std::uint32_t offset = 0;
};

struct MapRegister {
  std::string_view name;  // "SENSOR.CH[0].CTRL"
  std::string_view index;
  std::string_view index_name;  // the name that dimArrayIndex gives the index; mostly empty
  std::uint64_t address = 0;
  const MapRegisterForm* form = nullptr;
  bool alternate = false;  // lies in a cluster that has the addresses of another one
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
  std::string_view alternate;  // alternatePeripheral
  MapText description;
  std::uint64_t base = 0;
  std::size_t first_register = 0;  // in RegisterMap::registers
  std::size_t register_count = 0;
  std::size_t first_block = 0;  // in RegisterMap::blocks
  std::size_t block_count = 0;
  std::uint32_t offset = 0;
};

struct MapStorage;

// Moves, does not copy. Its texts live as long as it does.
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
  std::vector<MapRegister> registers;  // peripheral by peripheral, each in the order of the file
  std::vector<MapAddressBlock> blocks;

  std::span<const MapRegister> RegistersOf(const MapPeripheral& peripheral) const;
  // The line of anything with an `offset`, from 1 on.
  std::uint64_t LineOf(std::uint32_t offset) const;
  // What may be wrong with the map although it can be used, in the order of lines.
  std::vector<ListProblem> Doubts() const;
  // How many doubts there are beside these; they are too many to be told.
  std::uint64_t UntoldDoubts() const;

  std::unique_ptr<MapStorage> storage;  // what all of these refer to
};

}  // namespace borvanusb
