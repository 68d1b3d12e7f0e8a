#include "maps/svd_values.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>

#include "base/format.h"
#include "maps/short_text.h"

namespace borvanusb {

namespace {

template <typename Word>
struct Words;

template <>
struct Words<MapAccess> {
  static constexpr std::array<std::string_view, 5> kWords = {
      "read-write", "read-only", "write-only", "writeOnce", "read-writeOnce"};
  static constexpr const char* kAllowed =
      "read-only, write-only, read-write, writeOnce, read-writeOnce";
};

template <>
struct Words<MapReadAction> {
  static constexpr std::array<std::string_view, 5> kWords = {"", "clear", "set", "modify",
                                                             "modifyExternal"};
  static constexpr const char* kAllowed = "clear, set, modify, modifyExternal";
};

template <>
struct Words<MapModifiedWrite> {
  static constexpr std::array<std::string_view, 9> kWords = {
      "modify",    "oneToClear",   "oneToSet", "oneToToggle", "zeroToClear",
      "zeroToSet", "zeroToToggle", "clear",    "set"};
  static constexpr const char* kAllowed =
      "oneToClear, oneToSet, oneToToggle, zeroToClear, zeroToSet, zeroToToggle, clear, set, modify";
};

template <>
struct Words<MapProtection> {
  static constexpr std::array<std::string_view, 4> kWords = {"", "s", "n", "p"};
  static constexpr const char* kAllowed = "s, n, p";
};

template <>
struct Words<MapUsage> {
  static constexpr std::array<std::string_view, 3> kWords = {"read-write", "read", "write"};
  static constexpr const char* kAllowed = "read, write, read-write";
};

template <typename Word>
std::string_view TextOfWord(Word word) {
  return Words<Word>::kWords.at(static_cast<std::size_t>(word));
}

constexpr std::string_view kIndexMark = "%s";

}  // namespace

std::string_view WordOf(MapAccess access) {
  return TextOfWord(access);
}
std::string_view WordOf(MapReadAction action) {
  return TextOfWord(action);
}
std::string_view WordOf(MapModifiedWrite write) {
  return TextOfWord(write);
}
std::string_view WordOf(MapProtection protection) {
  return TextOfWord(protection);
}
std::string_view WordOf(MapUsage usage) {
  return TextOfWord(usage);
}

std::optional<std::uint64_t> CheckedSum(std::uint64_t left, std::uint64_t right) {
  if (right > std::numeric_limits<std::uint64_t>::max() - left) {
    return std::nullopt;
  }
  return left + right;
}

std::optional<std::uint64_t> SvdValues::NumberIn(const SvdNode& node) const {
  const std::string_view text = tree_.Text(node);
  const auto number = ParseSvdNumber(text);
  if (!number) {
    storage_.doubts.Add({.kind = SvdDoubtKind::kNoNumber,
                         .offset = tree_.OffsetOf(node),
                         .first = {node.name(), node.name_size()},
                         .second = text});
  }
  return number;
}

std::optional<std::uint64_t> SvdValues::Number(std::uint32_t id, SvdTag tag) const {
  while ((tree_[id].present & TagBit(tag)) == 0) {
    id = tree_[id].base;
    if (id == SvdElement::kNone) {
      return std::nullopt;
    }
  }
  return OwnNumber(id, tag);
}

std::optional<std::uint64_t> SvdValues::OwnNumber(std::uint32_t id, SvdTag tag) const {
  if ((TagBit(tag) & kNumbersInAdvance) != 0) {
    if (const std::uint64_t number = tree_.OwnNumber(tree_[id], tag); number != SvdTree::kNotRead) {
      return number;
    }
  }
  return NumberIn(*tree_.OwnSlot(tree_[id], tag));
}

bool SvdValues::Truth(const SvdNode& node) const {
  const auto truth = ParseSvdTruth(tree_.Text(node));
  if (!truth) {
    storage_.doubts.Add({.kind = SvdDoubtKind::kNoWord,
                         .offset = tree_.OffsetOf(node),
                         .first = {node.name(), node.name_size()},
                         .second = tree_.Text(node),
                         .third = "true, false, 1, 0; false is used"});
  }
  return truth.value_or(false);
}

template <typename Word>
Word SvdValues::WordIn(std::uint32_t id, SvdTag tag, Word inherited) const {
  const SvdNode* const node = tree_.Slot(id, tag);
  if (node == nullptr) {
    return inherited;
  }
  const std::string_view text = tree_.Text(*node);
  for (std::size_t i = 0; i < Words<Word>::kWords.size(); ++i) {
    if (IsSameText(Words<Word>::kWords[i], text) && !text.empty()) {
      return static_cast<Word>(i);
    }
  }
  storage_.doubts.Add({.kind = SvdDoubtKind::kNoWord,
                       .offset = tree_.OffsetOf(*node),
                       .first = NameOf(tag),
                       .second = text,
                       .third = Words<Word>::kAllowed});
  return inherited;
}

MapAccess SvdValues::Access(std::uint32_t id, MapAccess inherited) const {
  return WordIn(id, SvdTag::kAccess, inherited);
}

MapReadAction SvdValues::ReadAction(std::uint32_t id, MapReadAction inherited) const {
  return WordIn(id, SvdTag::kReadAction, inherited);
}

MapModifiedWrite SvdValues::ModifiedWrite(std::uint32_t id, MapModifiedWrite inherited) const {
  return WordIn(id, SvdTag::kModifiedWriteValues, inherited);
}

MapUsage SvdValues::Usage(std::uint32_t id) const {
  return WordIn(id, SvdTag::kUsage, MapUsage::kReadWrite);
}

const SvdNode* SvdValues::Child(const SvdNode& node, SvdTag tag) {
  const std::string_view name = NameOf(tag);
  return node.first_node(name.data(), name.size());
}

MapWriteConstraint SvdValues::Constraint(std::uint32_t id) const {
  MapWriteConstraint constraint;
  const SvdNode* const node = tree_.Slot(id, SvdTag::kWriteConstraint);
  if (node == nullptr) {
    return constraint;
  }
  if (const SvdNode* const range = Child(*node, SvdTag::kRange)) {
    const SvdNode* const minimum = Child(*range, SvdTag::kMinimum);
    const SvdNode* const maximum = Child(*range, SvdTag::kMaximum);
    const auto first = minimum == nullptr ? std::nullopt : NumberIn(*minimum);
    const auto last = maximum == nullptr ? std::nullopt : NumberIn(*maximum);
    if (first && last) {
      constraint = {MapWriteConstraint::Kind::kRange, *first, *last};
    } else {
      DoubtMissing(id, SvdTag::kRange);
    }
  } else if (const SvdNode* const as_read = Child(*node, SvdTag::kWriteAsRead)) {
    if (Truth(*as_read)) {
      constraint.kind = MapWriteConstraint::Kind::kWriteAsRead;
    }
  } else if (const SvdNode* const values = Child(*node, SvdTag::kUseEnumeratedValues)) {
    if (Truth(*values)) {
      constraint.kind = MapWriteConstraint::Kind::kEnumeratedValues;
    }
  }
  return constraint;
}

SvdProperties SvdValues::Properties(std::uint32_t id, const SvdProperties& inherited) const {
  SvdProperties own = inherited;
  own.size = Number(id, SvdTag::kSize).value_or(inherited.size);
  own.access = Access(id, inherited.access);
  own.protection = WordIn(id, SvdTag::kProtection, inherited.protection);
  if (const auto value = Number(id, SvdTag::kResetValue)) {
    own.reset_value = *value;
    if (!own.has_reset_mask) {
      own.reset_mask = std::numeric_limits<std::uint64_t>::max();
    }
  }
  if (const auto mask = Number(id, SvdTag::kResetMask)) {
    own.reset_mask = *mask;
    own.has_reset_mask = true;
  }
  return own;
}

void SvdValues::DoubtMissing(std::uint32_t id, SvdTag tag) const {
  storage_.doubts.Add({.kind = SvdDoubtKind::kMissing,
                       .offset = tree_.OffsetOf(id),
                       .first = NameOf(tree_[id].kind),
                       .second = tree_[id].name,
                       .third = NameOf(tag)});
}

const SvdArray* SvdValues::Array(std::uint32_t id) const {
  const SvdElement& element = tree_[id];
  if ((element.present & TagBit(SvdTag::kDim)) == 0 &&
      !HasCharacter(element.name, kIndexMark.front())) {
    return &single_;
  }
  auto found = arrays_.find(id);
  if (found == arrays_.end()) {
    found = arrays_.emplace(id, MakeArray(id)).first;
  }
  return found->second ? &*found->second : nullptr;
}

std::optional<SvdArray> SvdValues::MakeArray(std::uint32_t id) const {
  SvdArray array;
  const SvdElement& element = tree_[id];
  const bool marked = element.name.find(kIndexMark) != std::string_view::npos;
  SvdDoubt doubt{
      .offset = tree_.OffsetOf(id), .first = NameOf(element.kind), .second = element.name};
  // An element inherits an array from its base only if its own name has an index placeholder.
  const bool own_dim = (element.present & TagBit(SvdTag::kDim)) != 0;
  const SvdNode* const dim = own_dim || marked ? tree_.Slot(id, SvdTag::kDim) : nullptr;
  if (dim == nullptr) {
    if (marked) {
      doubt.kind = SvdDoubtKind::kNoDim;
      storage_.doubts.Add(doubt);
    }
    return array;
  }
  array.is_array = true;
  array.mark = std::min(element.name.find(kIndexMark), element.name.size());
  array.behind = marked ? array.mark + kIndexMark.size() : array.mark;
  array.count = NumberIn(*dim).value_or(0);
  const auto increment = Number(id, SvdTag::kDimIncrement);
  array.increment = increment.value_or(0);
  if (array.count == 0 || (!increment && array.count > 1)) {
    DoubtMissing(id, array.count == 0 ? SvdTag::kDim : SvdTag::kDimIncrement);
    return std::nullopt;
  }
  if (array.count > limits_.entries) {
    tree_.Fail(*dim, Format("{} elements; allowed are {} registers, fields and values in a map",
                            array.count, limits_.entries));
  }
  if (!marked) {
    doubt.kind = SvdDoubtKind::kNoMark;
    doubt.number = array.count;
    storage_.doubts.Add(doubt);
  }
  array.indexes.count = array.count;
  if (const SvdNode* const node = tree_.Slot(id, SvdTag::kDimIndex)) {
    const auto indexes = ParseSvdIndexes(tree_.Text(*node));
    if (indexes && indexes->count == array.count) {
      array.indexes = *indexes;
    } else {
      doubt.kind = SvdDoubtKind::kIndexCount;
      doubt.third = tree_.Text(*node);
      doubt.number = array.count;
      storage_.doubts.Add(doubt);
    }
  }
  NameIndexes(id, array);
  return array;
}

std::string_view SvdValues::IndexText(const SvdArray& array, std::uint64_t i,
                                      std::array<char, kLongestIndex>& room) {
  if (array.indexes.kind == SvdIndexes::Kind::kNames) {
    return array.indexes.names[i];
  }
  char* end = room.data() + 1;
  if (array.indexes.kind == SvdIndexes::Kind::kLetters) {
    room[0] = static_cast<char>(array.indexes.first + i);
  } else {
    end = std::to_chars(room.data(), room.data() + room.size(), array.indexes.first + i).ptr;
  }
  return {room.data(), static_cast<std::size_t>(end - room.data())};
}

std::string_view SvdValues::Index(const SvdArray& array, std::uint64_t i) const {
  if (!array.is_array) {
    return {};
  }
  std::array<char, kLongestIndex> room;
  const std::string_view text = IndexText(array, i, room);
  return array.indexes.kind == SvdIndexes::Kind::kNames ? text : storage_.arena.Copy(text);
}

void SvdValues::NameIndexes(std::uint32_t id, SvdArray& array) const {
  const SvdNode* const node = tree_.Slot(id, SvdTag::kDimArrayIndex);
  if (node == nullptr) {
    return;
  }
  const std::string_view tag = NameOf(SvdTag::kEnumeratedValue);
  for (const SvdNode* value = node->first_node(tag.data(), tag.size()); value != nullptr;
       value = value->next_sibling(tag.data(), tag.size())) {
    const SvdNode* const number = Child(*value, SvdTag::kValue);
    const SvdNode* const name = Child(*value, SvdTag::kName);
    const auto index = number == nullptr ? std::nullopt : NumberIn(*number);
    if (index && name != nullptr) {
      array.names.emplace_back(*index, tree_.Text(*name));
    }
  }
  std::stable_sort(array.names.begin(), array.names.end(),
                   [](const auto& left, const auto& right) { return left.first < right.first; });
}

std::string_view SvdValues::IndexName(const SvdArray& array, std::uint64_t i) {
  const auto found =
      std::lower_bound(array.names.begin(), array.names.end(), i,
                       [](const auto& named, std::uint64_t index) { return named.first < index; });
  return found != array.names.end() && found->first == i ? found->second : std::string_view();
}

std::string_view SvdValues::FullName(std::string_view prefix, std::uint32_t id,
                                     const SvdArray& array, std::string_view index) const {
  const std::string_view name = tree_[id].name;
  const std::string_view front = array.is_array ? name.substr(0, array.mark) : name;
  const std::string_view back = array.is_array ? name.substr(array.behind) : std::string_view();
  if (prefix.empty() && !array.is_array) {
    return name;
  }
  char* const start =
      storage_.arena.Take(prefix.size() + front.size() + index.size() + back.size());
  char* end = start;
  for (const std::string_view part : {prefix, front, index, back}) {
    end = std::copy(part.begin(), part.end(), end);
  }
  return {start, static_cast<std::size_t>(end - start)};
}

}  // namespace borvanusb
