#include <algorithm>
#include <cstdint>
#include <functional>
#include <unordered_set>
#include <vector>

#include "maps/map_builder.h"
#include "maps/map_storage.h"

namespace borvanusb {

namespace {

constexpr std::uint32_t kFree = 0xFFFFFFFF;

class MapChecks {
 public:
  explicit MapChecks(RegisterMap& map) : map_(map), doubts_(map.storage->doubts) {}

  void Run() {
    std::unordered_set<std::string_view> names;
    for (const MapPeripheral& peripheral : map_.peripherals) {
      if (!names.insert(peripheral.name).second) {
        doubts_.Add({.kind = SvdDoubtKind::kSameName,
                     .offset = peripheral.offset,
                     .first = "peripheral",
                     .second = peripheral.name,
                     .third = "the device"});
      }
      CheckBlocks(peripheral);
      CheckNames(peripheral);
    }
    CheckAddresses();
  }

 private:
  // The address range of a peripheral's registers. Registers are sorted together only for
  // peripherals whose ranges overlap.
  struct Extent {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    std::uint32_t peripheral = 0;
  };
  struct Located {
    std::uint64_t address = 0;
    std::uint32_t index = 0;
    std::uint32_t peripheral = 0;

    bool operator<(const Located& other) const {
      return address != other.address ? address < other.address : index < other.index;
    }
  };

  void CheckBlocks(const MapPeripheral& peripheral) {
    const std::span<const MapAddressBlock> blocks =
        std::span(map_.blocks).subspan(peripheral.first_block, peripheral.block_count);
    for (const MapRegister& one : map_.RegistersOf(peripheral)) {
      const std::uint64_t offset = one.address - peripheral.base;
      const std::uint64_t units =
          (one.form->bits + map_.address_unit_bits - 1) / std::uint64_t{map_.address_unit_bits};
      const auto holds = [&](const MapAddressBlock& block) {
        const std::uint64_t place = offset - block.offset;
        return offset >= block.offset && place < block.size && units <= block.size - place;
      };
      if (!blocks.empty() && std::none_of(blocks.begin(), blocks.end(), holds)) {
        doubts_.Add({.kind = SvdDoubtKind::kOutsideBlock,
                     .offset = one.form->offset,
                     .first = one.name,
                     .number = one.address});
      }
    }
  }

  void CheckNames(const MapPeripheral& peripheral) {
    const std::span<const MapRegister> registers = map_.RegistersOf(peripheral);
    const std::size_t prefix = peripheral.name.size() + 1;
    std::size_t size = 16;
    while (size < registers.size() * 2) {
      size *= 2;
    }
    table_.assign(size, kFree);
    for (std::uint32_t i = 0; i < registers.size(); ++i) {
      const std::string_view name = registers[i].name.substr(prefix);
      std::size_t place = std::hash<std::string_view>{}(name) & (size - 1);
      while (table_[place] != kFree && registers[table_[place]].name.substr(prefix) != name) {
        place = (place + 1) & (size - 1);
      }
      // A register of an alternate group may have the name of the register that it replaces.
      if (table_[place] == kFree) {
        table_[place] = i;
      } else if (registers[i].form->alternate_group ==
                 registers[table_[place]].form->alternate_group) {
        doubts_.Add({.kind = SvdDoubtKind::kSameName,
                     .offset = registers[i].form->offset,
                     .first = "register",
                     .second = registers[i].name,
                     .third = peripheral.name});
      }
    }
  }

  void CheckAddresses() {
    std::vector<Extent> extents;
    for (std::uint32_t i = 0; i < map_.peripherals.size(); ++i) {
      const auto registers = map_.RegistersOf(map_.peripherals[i]);
      if (registers.empty()) {
        continue;
      }
      Extent extent{registers.front().address, registers.front().address, i};
      for (const MapRegister& one : registers) {
        extent.first = std::min(extent.first, one.address);
        extent.last = std::max(extent.last, one.address);
      }
      extents.push_back(extent);
    }
    std::sort(extents.begin(), extents.end(), [](const Extent& left, const Extent& right) {
      return left.first != right.first ? left.first < right.first
                                       : left.peripheral < right.peripheral;
    });
    std::uint64_t last = 0;
    for (const Extent& extent : extents) {
      if (!located_.empty() && extent.first > last) {
        CheckLocated();
      }
      last = located_.empty() ? extent.last : std::max(last, extent.last);
      const MapPeripheral& peripheral = map_.peripherals[extent.peripheral];
      for (std::size_t i = 0; i < peripheral.register_count; ++i) {
        const std::size_t index = peripheral.first_register + i;
        located_.push_back(
            {map_.registers[index].address, static_cast<std::uint32_t>(index), extent.peripheral});
      }
    }
    CheckLocated();
  }

  void CheckLocated() {
    if (!std::is_sorted(located_.begin(), located_.end())) {
      std::sort(located_.begin(), located_.end());
    }
    for (std::size_t i = 0; i < located_.size();) {
      std::size_t end = i + 1;
      while (end < located_.size() && located_[end].address == located_[i].address) {
        ++end;
      }
      if (end - i > 1) {
        CheckSameAddress(std::span(located_).subspan(i, end - i));
      }
      i = end;
    }
    located_.clear();
  }

  bool IsAlternate(const Located& located) const {
    const MapRegister& one = map_.registers[located.index];
    return one.alternate || !one.form->alternate_register.empty() ||
           !one.form->alternate_group.empty();
  }

  void CheckSameAddress(std::span<const Located> same) {
    const Located* holder = nullptr;
    for (const Located& located : same) {
      if (IsAlternate(located)) {
        continue;
      }
      if (holder == nullptr) {
        holder = &located;
        continue;
      }
      const bool one_peripheral = holder->peripheral == located.peripheral;
      if (one_peripheral || (map_.peripherals[holder->peripheral].alternate.empty() &&
                             map_.peripherals[located.peripheral].alternate.empty())) {
        doubts_.Add({.kind = SvdDoubtKind::kSameAddress,
                     .offset = map_.registers[located.index].form->offset,
                     .first = map_.registers[located.index].name,
                     .second = map_.registers[holder->index].name,
                     .number = located.address});
      }
    }
  }

  RegisterMap& map_;
  SvdDoubts& doubts_;
  std::vector<std::uint32_t> table_;
  std::vector<Located> located_;
};

}  // namespace

void CheckMap(RegisterMap& map) {
  MapChecks(map).Run();
}

}  // namespace borvanusb
