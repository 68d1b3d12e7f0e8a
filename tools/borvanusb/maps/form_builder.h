#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "maps/register_map.h"
#include "maps/svd_values.h"

namespace borvanusb {

inline constexpr std::uint64_t kWordBits = 64;
constexpr std::uint64_t LowBits(std::uint64_t count) {
  return count >= kWordBits ? std::numeric_limits<std::uint64_t>::max()
                            : (std::uint64_t{1} << count) - 1;
}

// Builds the forms of registers. All registers with equal properties share one form.
class FormBuilder {
 public:
  FormBuilder(const SvdTree& tree, const SvdValues& values, MapStorage& storage)
      : tree_(tree), values_(values), storage_(storage), places_(tree.size()) {
    made_.reserve(tree.size());
  }

  // Returns the form of a register that inherits these properties.
  const MapRegisterForm& FormOf(std::uint32_t id, const SvdProperties& inherited);

 private:
  // The objects that were built last for an element.
  struct Made {
    SvdProperties inherited;
    const MapRegisterForm* form = nullptr;
    const MapEnumeration* enumeration = nullptr;
    MapValueList* values = nullptr;
  };
  struct Place {
    std::optional<std::uint64_t> offset;
    std::optional<std::uint64_t> width;
  };

  void AddFields(std::uint32_t id, MapRegisterForm& form);
  void AddField(std::uint32_t id, const MapRegisterForm& of, MapRegisterForm& form);
  void AddEnumerations(std::uint32_t id, MapField& field);
  MapValueList* ValuesOf(std::uint32_t id);
  const MapEnumeration& EnumerationOf(std::uint32_t id);
  void AddValue(const SvdNode& node, MapValueList& list) const;
  Place PlaceOf(std::uint32_t id) const;

  // Defined in form_checks.cpp.
  void CheckValues(std::uint32_t id, const MapField& field, MapValueList& list) const;
  void CheckFields(std::uint32_t id, const MapRegisterForm& form) const;
  void CheckOverlaps(std::uint32_t id, const MapRegisterForm& form);

  // The reference stays valid: made_ has reserved memory for all elements.
  Made& MadeOf(std::uint32_t id) {
    if (places_[id] == 0) {
      made_.emplace_back();
      places_[id] = static_cast<std::uint32_t>(made_.size());
    }
    return made_[places_[id] - 1];
  }

  const SvdTree& tree_;
  const SvdValues& values_;
  MapStorage& storage_;
  std::vector<std::uint32_t> places_;  // index in made_ + 1, for each element; 0: none yet
  std::vector<Made> made_;
  std::vector<std::uint64_t> readable_;
  std::vector<std::uint64_t> writable_;
};

}  // namespace borvanusb
