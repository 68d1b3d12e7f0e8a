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

// Properties that are inherited from device to peripheral to cluster to register.
struct SvdProperties {
  std::uint64_t size = 32;
  std::uint64_t reset_value = 0;
  std::uint64_t reset_mask = 0;
  bool has_reset_mask = false;
  MapAccess access = MapAccess::kReadWrite;
  MapProtection protection = MapProtection::kNone;

  bool operator==(const SvdProperties&) const = default;
};

// How often an element is repeated.
struct SvdArray {
  bool is_array = false;  // false: a single element with its plain name
  std::uint64_t count = 1;
  std::uint64_t increment = 0;
  std::size_t mark = 0;    // position of the index placeholder in the name
  std::size_t behind = 0;  // position after the placeholder
  SvdIndexes indexes;
  // Names of indexes from dimArrayIndex, sorted by index. Usually empty.
  std::vector<std::pair<std::uint64_t, std::string_view>> names;
};

// Converts simple elements to values. An invalid element adds a doubt and counts as missing.
class SvdValues {
 public:
  SvdValues(const SvdTree& tree, const MapLimits& limits, MapStorage& storage)
      : tree_(tree), limits_(limits), storage_(storage) {}

  std::optional<std::uint64_t> Number(std::uint32_t id, SvdTag tag) const;
  // The element itself must have this child, not only inherit it.
  std::optional<std::uint64_t> OwnNumber(std::uint32_t id, SvdTag tag) const;
  std::optional<std::uint64_t> NumberIn(const SvdNode& node) const;
  bool Truth(const SvdNode& node) const;
  MapAccess Access(std::uint32_t id, MapAccess inherited) const;
  MapReadAction ReadAction(std::uint32_t id, MapReadAction inherited) const;
  MapModifiedWrite ModifiedWrite(std::uint32_t id, MapModifiedWrite inherited) const;
  MapUsage Usage(std::uint32_t id) const;
  MapWriteConstraint Constraint(std::uint32_t id) const;
  SvdProperties Properties(std::uint32_t id, const SvdProperties& inherited) const;
  // Returns null if the element can't be placed.
  const SvdArray* Array(std::uint32_t id) const;
  // Writes the text of an index into `room`.
  static constexpr std::size_t kLongestIndex = 20;
  static std::string_view IndexText(const SvdArray& array, std::uint64_t i,
                                    std::array<char, kLongestIndex>& room);
  // The same text as a view into the file or the arena, so it stays valid.
  std::string_view Index(const SvdArray& array, std::uint64_t i) const;
  // The name that dimArrayIndex gives the index. Usually empty.
  static std::string_view IndexName(const SvdArray& array, std::uint64_t i);
  // Joins `prefix` and the element's name with this index.
  std::string_view FullName(std::string_view prefix, std::uint32_t id, const SvdArray& array,
                            std::string_view index) const;
  // The child with this tag; null if there is none.
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
  // Caches arrays, because an element may be used in many places.
  mutable std::unordered_map<std::uint32_t, std::optional<SvdArray>> arrays_;
};

// Returns nothing if the sum exceeds 64 bits.
std::optional<std::uint64_t> CheckedSum(std::uint64_t left, std::uint64_t right);

}  // namespace borvanusb
