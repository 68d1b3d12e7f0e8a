#include "maps/form_builder.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "base/format.h"

namespace borvanusb {

namespace {

// Sanity limits. A larger number in a file is an error.
constexpr std::uint64_t kMostBits = 4096;
constexpr std::size_t kMostFields = 1024;

constexpr std::uint64_t kRareInFields = TagBit(SvdTag::kReadAction) |
                                        TagBit(SvdTag::kModifiedWriteValues) |
                                        TagBit(SvdTag::kWriteConstraint);
constexpr std::uint64_t kRareInRegisters =
    kRareInFields | TagBit(SvdTag::kAlternateRegister) | TagBit(SvdTag::kAlternateGroup);

}  // namespace

const MapRegisterForm& FormBuilder::FormOf(std::uint32_t id, const SvdProperties& inherited) {
  Made& made = MadeOf(id);
  if (made.form != nullptr && made.inherited == inherited) {
    return *made.form;
  }
  const SvdProperties own = values_.Properties(id, inherited);
  MapRegisterForm& form = storage_.forms.emplace_back();
  form.offset = tree_.OffsetOf(id);
  if (own.size == 0 || own.size > kWordBits) {
    storage_.doubts.Add({.kind = SvdDoubtKind::kSize,
                         .offset = form.offset,
                         .first = tree_[id].name,
                         .number = own.size});
  }
  form.bits = static_cast<std::uint32_t>(std::min(own.size, kMostBits));
  form.access = own.access;
  form.protection = own.protection;
  form.reset_value = own.reset_value & LowBits(own.size);
  form.reset_mask = own.reset_mask & LowBits(own.size);
  form.description = tree_.RawText(id, SvdTag::kDescription);
  if ((tree_.Present(id) & kRareInRegisters) != 0) {
    form.read_action = values_.ReadAction(id, MapReadAction::kNone);
    form.modified_write = values_.ModifiedWrite(id, MapModifiedWrite::kModify);
    form.constraint = values_.Constraint(id);
    form.alternate_register = tree_.SlotText(id, SvdTag::kAlternateRegister);
    form.alternate_group = tree_.SlotText(id, SvdTag::kAlternateGroup);
  }
  AddFields(id, form);
  form.entries = 1 + form.fields.size();
  for (const MapField& field : form.fields) {
    for (const MapEnumeration* const enumeration : field.enumerations) {
      form.entries += enumeration != nullptr ? enumeration->values.size() : 0;
    }
  }
  CheckFields(id, form);
  CheckOverlaps(id, form);
  made.inherited = inherited;
  made.form = &form;
  return form;
}

void FormBuilder::AddFields(std::uint32_t id, MapRegisterForm& form) {
  const SvdElement& element = tree_[id];
  if (element.base != SvdElement::kNone) {
    for (const std::uint32_t child : tree_.Children(id)) {
      AddField(child, form, form);
    }
    return;
  }
  std::size_t count = 0;
  for (std::uint32_t child = element.first_child; child != SvdElement::kNone;
       child = tree_[child].next) {
    ++count;
  }
  form.fields.reserve(count);
  for (std::uint32_t child = element.first_child; child != SvdElement::kNone;
       child = tree_[child].next) {
    AddField(child, form, form);
  }
}

FormBuilder::Place FormBuilder::PlaceOf(std::uint32_t id) const {
  const SvdElement& element = tree_[id];
  Place place = element.base == SvdElement::kNone ? Place() : PlaceOf(element.base);
  const auto has = [&](SvdTag tag) { return (element.present & TagBit(tag)) != 0; };
  if (has(SvdTag::kBitRange)) {
    const SvdNode* const range = tree_.OwnSlot(element, SvdTag::kBitRange);
    place = {};
    if (const auto bits = ParseSvdBitRange(tree_.Text(*range))) {
      place = {bits->second, bits->first - bits->second + 1};
    } else {
      storage_.doubts.Add({.kind = SvdDoubtKind::kNoWord,
                           .offset = tree_.OffsetOf(*range),
                           .first = NameOf(SvdTag::kBitRange),
                           .second = tree_.Text(*range),
                           .third = "[MSB:LSB], such as [7:4]"});
    }
    return place;
  }
  if (has(SvdTag::kLsb) && has(SvdTag::kMsb)) {
    const auto first = values_.OwnNumber(id, SvdTag::kLsb);
    const auto last = values_.OwnNumber(id, SvdTag::kMsb);
    return first && last && *first <= *last ? Place{first, *last - *first + 1} : Place();
  }
  if (has(SvdTag::kBitOffset)) {
    place.offset = values_.OwnNumber(id, SvdTag::kBitOffset);
  }
  if (has(SvdTag::kBitWidth)) {
    place.width = values_.OwnNumber(id, SvdTag::kBitWidth);
  }
  return place;
}

void FormBuilder::AddField(std::uint32_t id, const MapRegisterForm& of, MapRegisterForm& form) {
  if (tree_[id].name.empty()) {
    values_.DoubtMissing(id, SvdTag::kName);
    return;
  }
  Place place = PlaceOf(id);
  if (place.offset && !place.width) {
    storage_.doubts.Add({.kind = SvdDoubtKind::kMissingAndTaken,
                         .offset = tree_.OffsetOf(id),
                         .first = NameOf(SvdKind::kField),
                         .second = tree_[id].name,
                         .third = NameOf(SvdTag::kBitWidth),
                         .number = 1});
    place.width = 1;
  }
  if (!place.offset || *place.width == 0 || *place.offset > kMostBits || *place.width > kMostBits) {
    values_.DoubtMissing(id, SvdTag::kBitRange);
    return;
  }
  const auto array = values_.Array(id);
  if (!array) {
    return;
  }
  MapField field;
  field.bit_width = static_cast<std::uint32_t>(*place.width);
  field.description = tree_.RawText(id, SvdTag::kDescription);
  field.access = values_.Access(id, of.access);
  field.read_action = of.read_action;
  field.modified_write = of.modified_write;
  if ((tree_.Present(id) & kRareInFields) != 0) {
    field.read_action = values_.ReadAction(id, of.read_action);
    field.modified_write = values_.ModifiedWrite(id, of.modified_write);
    field.constraint = values_.Constraint(id);
  }
  field.offset = tree_.OffsetOf(id);
  AddEnumerations(id, field);
  for (std::uint64_t i = 0; i < array->count; ++i) {
    const std::uint64_t start = *place.offset + i * array->increment;
    if (array->increment > kMostBits || start > kMostBits) {
      storage_.doubts.Add({.kind = SvdDoubtKind::kTooFar,
                           .offset = field.offset,
                           .first = NameOf(SvdKind::kField),
                           .second = tree_[id].name});
      break;
    }
    if (form.fields.size() >= kMostFields) {
      tree_.Fail(*tree_[id].node, Format("the register has more than {} fields", kMostFields));
    }
    field.bit_offset = static_cast<std::uint32_t>(start);
    field.name = tree_[id].name;
    if (array->is_array) {
      field.index = values_.Index(*array, i);
      field.name = values_.FullName({}, id, *array, field.index);
    }
    form.fields.push_back(field);
  }
}

void FormBuilder::AddEnumerations(std::uint32_t id, MapField& field) {
  // An element's own enumerations replace those that it would inherit by derivedFrom.
  std::uint32_t holder = id;
  while (tree_[holder].first_child == SvdElement::kNone &&
         tree_[holder].base != SvdElement::kNone) {
    holder = tree_[holder].base;
  }
  std::size_t count = 0;
  for (std::uint32_t child = tree_[holder].first_child; child != SvdElement::kNone;
       child = tree_[child].next) {
    if (count == field.enumerations.size()) {
      storage_.doubts.Add({.kind = SvdDoubtKind::kThirdEnumeration,
                           .offset = tree_.OffsetOf(child),
                           .first = tree_[id].name});
      return;
    }
    field.enumerations.at(count++) = &EnumerationOf(child);
    if (MapValueList* const list = ValuesOf(child)) {
      CheckValues(id, field, *list);
    }
  }
}

const MapEnumeration& FormBuilder::EnumerationOf(std::uint32_t id) {
  Made& made = MadeOf(id);
  if (made.enumeration != nullptr) {
    return *made.enumeration;
  }
  MapEnumeration& enumeration = storage_.enumerations.emplace_back();
  made.enumeration = &enumeration;
  enumeration.offset = tree_.OffsetOf(id);
  enumeration.name = tree_.SlotText(id, SvdTag::kName);
  enumeration.header_name = tree_.SlotText(id, SvdTag::kHeaderEnumName);
  enumeration.usage = values_.Usage(id);
  if (const MapValueList* const list = ValuesOf(id)) {
    enumeration.values = list->values;
  } else {
    values_.DoubtMissing(id, SvdTag::kEnumeratedValue);
  }
  return enumeration;
}

// Returns the values of the nearest element in the derivation chain that has its own; null if there
// is none.
MapValueList* FormBuilder::ValuesOf(std::uint32_t id) {
  while ((tree_[id].present & TagBit(SvdTag::kEnumeratedValue)) == 0) {
    id = tree_[id].base;
    if (id == SvdElement::kNone) {
      return nullptr;
    }
  }
  MapValueList*& list = MadeOf(id).values;
  if (list == nullptr) {
    list = &storage_.value_lists.emplace_back();
    const std::string_view tag = NameOf(SvdTag::kEnumeratedValue);
    const SvdNode* const first = tree_.OwnSlot(tree_[id], SvdTag::kEnumeratedValue);
    std::size_t count = 0;
    for (const SvdNode* node = first; node != nullptr; node = node->next_sibling()) {
      ++count;
    }
    list->values.reserve(count);
    for (const SvdNode* node = first; node != nullptr;
         node = node->next_sibling(tag.data(), tag.size())) {
      AddValue(*node, *list);
    }
  }
  return list;
}

void FormBuilder::AddValue(const SvdNode& node, MapValueList& list) const {
  MapEnumeratedValue value;
  value.offset = tree_.OffsetOf(node);
  const SvdNode* number = nullptr;
  for (const SvdNode* child = node.first_node(); child != nullptr; child = child->next_sibling()) {
    if (child->type() != rapidxml::node_element) {
      continue;
    }
    switch (SvdTagOf({child->name(), child->name_size()})) {
      case SvdTag::kName:
        value.name = tree_.Text(*child);
        break;
      case SvdTag::kDescription:
        value.description = tree_.RawText(*child);
        break;
      case SvdTag::kValue:
        number = child;
        break;
      case SvdTag::kIsDefault:
        value.is_default = values_.Truth(*child);
        break;
      default:
        storage_.doubts.Add({.kind = SvdDoubtKind::kUnknownElement,
                             .offset = tree_.OffsetOf(*child),
                             .first = {child->name(), child->name_size()},
                             .second = NameOf(SvdTag::kEnumeratedValue)});
    }
  }
  const std::string_view text = number == nullptr ? std::string_view() : tree_.Text(*number);
  if (const auto pattern = ParseSvdPattern(text)) {
    value.value = pattern->value;
    value.counting = pattern->counting;
  } else if (number != nullptr || !value.is_default) {
    storage_.doubts.Add({.kind = SvdDoubtKind::kMissing,
                         .offset = value.offset,
                         .first = NameOf(SvdTag::kEnumeratedValue),
                         .second = value.name,
                         .third = NameOf(SvdTag::kValue)});
    return;
  }
  list.values.push_back(value);
}

}  // namespace borvanusb
