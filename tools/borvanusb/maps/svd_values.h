#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "maps/register_map.h"
#include "maps/svd_numbers.h"
#include "maps/svd_tree.h"

namespace borvanusb {

// What is handed down from device to peripheral to cluster to register.
struct SvdProperties {
  std::uint64_t size = 32;
  std::uint64_t reset_value = 0;
  std::uint64_t reset_mask = 0;
  bool has_reset_mask = false;
  MapAccess access = MapAccess::kReadWrite;
  MapProtection protection = MapProtection::kNone;

  bool operator==(const SvdProperties&) const = default;
};

// How often an element stands there.
struct SvdArray {
  bool is_array = false;  // false: once, under its name
  std::uint64_t count = 1;
  std::uint64_t increment = 0;
  std::size_t mark = 0;    // where the index goes in the name
  std::size_t behind = 0;  // position after the mark
  SvdIndexes indexes;
  // What dimArrayIndex calls them, in the order of numbers; mostly empty.
  std::vector<std::pair<std::uint64_t, std::string_view>> names;
};

// The simple elements of elements as values. What is wrong with one becomes a doubt, and it counts
// as missing.
class SvdValues {
 public:
  SvdValues(const SvdTree& tree, const MapLimits& limits, MapStorage& storage)
      : tree_(tree), limits_(limits), storage_(storage) {}

  std::optional<std::uint64_t> Number(std::uint32_t id, SvdTag tag) const;
  // Of an element that has it itself.
  std::optional<std::uint64_t> OwnNumber(std::uint32_t id, SvdTag tag) const;
  std::optional<std::uint64_t> NumberIn(const SvdNode& node) const;
  bool Truth(const SvdNode& node) const;
  MapAccess Access(std::uint32_t id, MapAccess inherited) const;
  MapReadAction ReadAction(std::uint32_t id, MapReadAction inherited) const;
  MapModifiedWrite ModifiedWrite(std::uint32_t id, MapModifiedWrite inherited) const;
  MapUsage Usage(std::uint32_t id) const;
  MapWriteConstraint Constraint(std::uint32_t id) const;
  SvdProperties Properties(std::uint32_t id, const SvdProperties& inherited) const;
  // Null when the element can't be placed.
  const SvdArray* Array(std::uint32_t id) const;
  // The text of an index, for which there is room.
  static constexpr std::size_t kLongestIndex = 20;
  static std::string_view IndexText(const SvdArray& array, std::uint64_t i,
                                    std::array<char, kLongestIndex>& room);
  // The same as a view of the file or the arena.
  std::string_view Index(const SvdArray& array, std::uint64_t i) const;
  // The name that dimArrayIndex has for an index; mostly empty.
  static std::string_view IndexName(const SvdArray& array, std::uint64_t i);
  // `prefix` and the name for that index as one text.
  std::string_view FullName(std::string_view prefix, std::uint32_t id, const SvdArray& array,
                            std::string_view index) const;
  // A child of a node by its tag; or null.
  static const SvdNode* Child(const SvdNode& node, SvdTag tag);

  void DoubtMissing(std::uint32_t id, SvdTag tag) const;

 private:
  std::optional<SvdArray> MakeArray(std::uint32_t id) const;
  void NameIndexes(std::uint32_t id, SvdArray& array) const;
  template <typename Word>
  Word WordIn(std::uint32_t id, SvdTag tag, Word inherited) const;

  const SvdTree& tree_;
  const MapLimits& limits_;
  MapStorage& storage_;
  const SvdArray single_;
  // Those that are arrays: an element may stand in many places.
  mutable std::unordered_map<std::uint32_t, std::optional<SvdArray>> arrays_;
};

// Nothing when the sum is beyond 64 bits.
std::optional<std::uint64_t> CheckedSum(std::uint64_t left, std::uint64_t right);

}  // namespace borvanusb
