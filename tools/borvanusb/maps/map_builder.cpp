#include "maps/map_builder.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "base/format.h"
#include "maps/form_builder.h"
#include "maps/svd_values.h"

namespace borvanusb {

namespace {

constexpr std::uint32_t kDevice = 0;
constexpr std::uint64_t kByteBits = 8;
// The product of two numbers up to this one fits into 64 bits, so no division is needed to check
// it.
constexpr std::uint64_t kHalf = 0xFFFFFFFF;

// Where the registers of a peripheral or cluster are placed.
struct Place {
  std::string_view prefix;  // "SENSOR."
  std::uint64_t address = 0;
  SvdProperties properties;
  bool alternate = false;  // in a cluster that shares the addresses of another one
};

class MapBuilder {
 public:
  MapBuilder(const SvdTree& tree, const MapLimits& limits, RegisterMap& map)
      : tree_(tree),
        limits_(limits),
        map_(map),
        storage_(*map.storage),
        values_(tree, limits, storage_),
        forms_(tree, values_, storage_) {}

  void Build() {
    map_.name = tree_[kDevice].name;
    if (map_.name.empty()) {
      values_.DoubtMissing(kDevice, SvdTag::kName);
    }
    map_.description = tree_.RawText(kDevice, SvdTag::kDescription);
    const std::uint64_t unit =
        values_.Number(kDevice, SvdTag::kAddressUnitBits).value_or(kByteBits);
    map_.address_unit_bits = static_cast<std::uint32_t>(std::clamp<std::uint64_t>(unit, 1, 64));
    if (unit != kByteBits) {
      storage_.doubts.Add(
          {.kind = SvdDoubtKind::kAddressUnit, .offset = tree_.OffsetOf(kDevice), .number = unit});
    }
    const SvdProperties properties = values_.Properties(kDevice, {});
    map_.registers.reserve(ExpectedRegisters());
    for (std::uint32_t child = tree_[kDevice].first_child; child != SvdElement::kNone;
         child = tree_[child].next) {
      AddPeripherals(child, properties);
    }
  }

 private:
  // An estimate of the number of registers. Inherited and skipped registers are not considered.
  std::size_t ExpectedRegisters() const {
    std::vector<std::uint64_t> times(tree_.size(), 1);
    std::uint64_t registers = 0;
    for (std::uint32_t id = kDevice + 1; id < tree_.size(); ++id) {
      const SvdElement& element = tree_[id];
      times[id] = times[element.parent];
      if ((element.present & TagBit(SvdTag::kDim)) != 0) {
        const auto dim = ParseSvdNumber(tree_.Text(*tree_.OwnSlot(element, SvdTag::kDim)));
        times[id] *= std::clamp<std::uint64_t>(dim.value_or(1), 1, limits_.entries);
      }
      times[id] = std::min(times[id], limits_.entries);
      registers += element.kind == SvdKind::kRegister ? times[id] : 0;
    }
    return std::min({registers, limits_.entries, std::uint64_t{storage_.text.size()}});
  }

  // The address of element `i` of an array. Returns nothing if it exceeds 64 bits.
  std::optional<std::uint64_t> Address(std::uint32_t id, std::uint64_t start, const SvdArray& array,
                                       std::uint64_t i) {
    const bool fits = (i <= kHalf && array.increment <= kHalf) || i == 0 ||
                      array.increment <= std::numeric_limits<std::uint64_t>::max() / i;
    const auto address = fits ? CheckedSum(start, i * array.increment) : std::nullopt;
    if (!address) {
      DoubtTooFar(id);
    }
    return address;
  }

  void DoubtTooFar(std::uint32_t id) {
    storage_.doubts.Add({.kind = SvdDoubtKind::kTooFar,
                         .offset = tree_.OffsetOf(id),
                         .first = NameOf(tree_[id].kind),
                         .second = tree_[id].name});
  }

  // The base address or offset. Returns nothing if the element must be skipped.
  std::optional<std::uint64_t> Start(std::uint32_t id, SvdTag tag) {
    if (tree_[id].name.empty()) {
      values_.DoubtMissing(id, SvdTag::kName);
      return std::nullopt;
    }
    const auto start = values_.Number(id, tag);
    if (!start) {
      values_.DoubtMissing(id, tag);
    }
    return start;
  }

  void Count(std::uint32_t id, std::uint64_t entries) {
    entries_ += entries;
    if (entries_ > limits_.entries) {
      tree_.Fail(*tree_[id].node, Format("the map has more than {} registers, fields and "
                                         "enumerated values, which is the limit",
                                         limits_.entries));
    }
  }

  void AddPeripherals(std::uint32_t id, const SvdProperties& inherited) {
    const auto start = Start(id, SvdTag::kBaseAddress);
    const SvdArray* const array = start ? values_.Array(id) : nullptr;
    if (array == nullptr) {
      return;
    }
    MapPeripheral peripheral;
    peripheral.group = tree_.SlotText(id, SvdTag::kGroupName);
    peripheral.alternate = tree_.SlotText(id, SvdTag::kAlternatePeripheral);
    peripheral.description = tree_.RawText(id, SvdTag::kDescription);
    peripheral.offset = tree_.OffsetOf(id);
    peripheral.first_block = map_.blocks.size();
    AddBlocks(id);
    peripheral.block_count = map_.blocks.size() - peripheral.first_block;
    Place place;
    place.properties = values_.Properties(id, inherited);
    for (std::uint64_t i = 0; i < array->count; ++i) {
      const auto address = Address(id, *start, *array, i);
      if (!address) {
        break;
      }
      Count(id, 1);
      peripheral.base = *address;
      peripheral.index = values_.Index(*array, i);
      // The name with its dot. Registers use it as a prefix; the peripheral's name is the part
      // before the dot.
      const std::string_view dotted = Dotted({}, id, *array, peripheral.index);
      peripheral.name = dotted.substr(0, dotted.size() - 1);
      peripheral.first_register = map_.registers.size();
      place.prefix = dotted;
      place.address = *address;
      AddChildren(id, place);
      peripheral.register_count = map_.registers.size() - peripheral.first_register;
      map_.peripherals.push_back(peripheral);
    }
  }

  std::string_view Dotted(std::string_view prefix, std::uint32_t id, const SvdArray& array,
                          std::string_view index) {
    const std::string_view name = values_.FullName(prefix, id, array, index);
    char* const start = storage_.arena.Take(name.size() + 1);
    *std::copy(name.begin(), name.end(), start) = '.';
    return {start, name.size() + 1};
  }

  void AddBlocks(std::uint32_t id) {
    const SvdNode* node = tree_.Slot(id, SvdTag::kAddressBlock);
    const std::string_view tag = NameOf(SvdTag::kAddressBlock);
    for (; node != nullptr; node = node->next_sibling(tag.data(), tag.size())) {
      const SvdNode* const offset = SvdValues::Child(*node, SvdTag::kOffset);
      const SvdNode* const size = SvdValues::Child(*node, SvdTag::kSize);
      const SvdNode* const usage = SvdValues::Child(*node, SvdTag::kUsage);
      const auto first = offset == nullptr ? std::nullopt : values_.NumberIn(*offset);
      const auto count = size == nullptr ? std::nullopt : values_.NumberIn(*size);
      if (first && count) {
        map_.blocks.push_back(
            {*first, *count, usage == nullptr ? std::string_view() : tree_.Text(*usage)});
      } else {
        values_.DoubtMissing(id, first ? SvdTag::kSize : SvdTag::kOffset);
      }
    }
  }

  void AddChildren(std::uint32_t id, const Place& place) {
    // Without inheritance, the children form a simple list.
    if (tree_[id].base == SvdElement::kNone) {
      for (std::uint32_t child = tree_[id].first_child; child != SvdElement::kNone;
           child = tree_[child].next) {
        AddChild(child, place);
      }
      return;
    }
    for (const std::uint32_t child : tree_.Children(id)) {
      AddChild(child, place);
    }
  }

  void AddChild(std::uint32_t id, const Place& place) {
    if (tree_[id].kind == SvdKind::kRegister) {
      AddRegisters(id, place);
    } else {
      AddClusters(id, place);
    }
  }

  void AddClusters(std::uint32_t id, const Place& around) {
    const auto offset = Start(id, SvdTag::kAddressOffset);
    const SvdArray* const array = offset ? values_.Array(id) : nullptr;
    if (array == nullptr) {
      return;
    }
    const auto start = CheckedSum(around.address, *offset);
    if (!start) {
      DoubtTooFar(id);
      return;
    }
    const std::size_t open = open_.size();
    for (std::uint32_t one = id; one != SvdElement::kNone; one = tree_[one].base) {
      if (std::find(open_.begin(), open_.end(), one) != open_.end()) {
        tree_.Fail(*tree_[id].node, Format("derivedFrom \"{}\" makes {} contain itself",
                                           tree_[id].derived_from, tree_[id].name));
      }
      open_.push_back(one);
    }
    if (++depth_ > limits_.depth) {
      tree_.Fail(*tree_[id].node,
                 Format("clusters are nested deeper than {} levels", limits_.depth));
    }
    Place place = around;
    place.properties = values_.Properties(id, around.properties);
    place.alternate |= tree_.Slot(id, SvdTag::kAlternateCluster) != nullptr;
    for (std::uint64_t i = 0; i < array->count; ++i) {
      const auto address = Address(id, *start, *array, i);
      if (!address) {
        break;
      }
      Count(id, 1);
      place.address = *address;
      place.prefix = Dotted(around.prefix, id, *array, values_.Index(*array, i));
      AddChildren(id, place);
    }
    --depth_;
    open_.resize(open);
  }

  void AddRegisters(std::uint32_t id, const Place& place) {
    const auto offset = Start(id, SvdTag::kAddressOffset);
    const SvdArray* const array = offset ? values_.Array(id) : nullptr;
    if (array == nullptr) {
      return;
    }
    const auto start = CheckedSum(place.address, *offset);
    if (!start) {
      DoubtTooFar(id);
      return;
    }
    const MapRegisterForm& form = forms_.FormOf(id, place.properties);
    for (std::uint64_t i = 0; i < array->count; ++i) {
      const auto address = Address(id, *start, *array, i);
      if (!address) {
        break;
      }
      Count(id, form.entries);
      MapRegister& made = map_.registers.emplace_back();
      if (array->is_array) {
        std::array<char, SvdValues::kLongestIndex> room;
        const std::string_view index = SvdValues::IndexText(*array, i, room);
        made.name = values_.FullName(place.prefix, id, *array, index);
        made.index = made.name.substr(place.prefix.size() + array->mark, index.size());
        made.index_name = SvdValues::IndexName(*array, i);
      } else {
        made.name = values_.FullName(place.prefix, id, *array, {});
      }
      made.address = *address;
      made.form = &form;
      made.alternate = place.alternate;
    }
  }

  const SvdTree& tree_;
  const MapLimits& limits_;
  RegisterMap& map_;
  MapStorage& storage_;
  SvdValues values_;
  FormBuilder forms_;
  std::uint64_t entries_ = 0;
  std::uint32_t depth_ = 0;
  std::vector<std::uint32_t> open_;  // clusters that are being expanded
};

}  // namespace

void BuildMap(const SvdTree& tree, const MapLimits& limits, RegisterMap& map) {
  MapBuilder(tree, limits, map).Build();
}

}  // namespace borvanusb
