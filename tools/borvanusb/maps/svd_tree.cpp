#include "maps/svd_tree.h"

#include <algorithm>
#include <bit>
#include <string>

#include "base/format.h"
#include "maps/svd_numbers.h"
#include "maps/xml_guard.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kLists =
    TagBit(SvdTag::kPeripherals) | TagBit(SvdTag::kRegisters) | TagBit(SvdTag::kFields);
constexpr std::uint64_t kWithChildren = TagBit(SvdTag::kPeripheral) | TagBit(SvdTag::kCluster) |
                                        TagBit(SvdTag::kRegister) | TagBit(SvdTag::kField) |
                                        TagBit(SvdTag::kEnumeratedValues);
// Typical sizes of an element in the file, to reserve memory.
constexpr std::size_t kBytesOfElement = 256;
constexpr std::size_t kBytesOfSlot = 64;

// Elements that may occur several times.
constexpr std::uint64_t kRepeated =
    TagBit(SvdTag::kAddressBlock) | TagBit(SvdTag::kEnumeratedValue);

std::string_view NameText(const SvdNode& node) {
  return {node.name(), node.name_size()};
}

SvdKind KindOf(SvdTag tag) {
  switch (tag) {
    case SvdTag::kPeripheral:
      return SvdKind::kPeripheral;
    case SvdTag::kCluster:
      return SvdKind::kCluster;
    case SvdTag::kRegister:
      return SvdKind::kRegister;
    case SvdTag::kField:
      return SvdKind::kField;
    default:
      return SvdKind::kEnumeration;
  }
}

// The elements that are allowed in a list.
std::uint64_t TagsInList(SvdTag list) {
  switch (list) {
    case SvdTag::kPeripherals:
      return TagBit(SvdTag::kPeripheral);
    case SvdTag::kRegisters:
      return TagBit(SvdTag::kRegister) | TagBit(SvdTag::kCluster);
    default:
      return TagBit(SvdTag::kField);
  }
}

}  // namespace

SvdTree::SvdTree(const SvdNode& document, const XmlFacts& facts, const MapLimits& limits,
                 MapStorage& storage)
    : pieces_(facts.pieces), references_anywhere_(true), limits_(limits), storage_(storage) {
  Build(document);
}

SvdTree::SvdTree(const SvdNode& document, const PlainFacts& facts, const MapLimits& limits,
                 MapStorage& storage)
    : first_reference_(storage.text.data() + facts.first_reference),
      last_reference_(storage.text.data() + facts.last_reference),
      checker_(limits),
      limits_(limits),
      storage_(storage) {
  Build(document);
  checker_->Count();
}

void SvdTree::Build(const SvdNode& document) {
  // Enough for most maps, and small compared with the text of any other.
  elements_.reserve(storage_.text.size() / kBytesOfElement);
  slots_.reserve(storage_.text.size() / kBytesOfSlot);
  numbers_.reserve(storage_.text.size() / kBytesOfSlot);
  const SvdNode* root = nullptr;
  for (const SvdNode* node = document.first_node(); node != nullptr; node = node->next_sibling()) {
    if (node->type() != rapidxml::node_element) {
      if (checker_) {
        checker_->BesideDevice(*node);
      }
      continue;
    }
    if (root != nullptr || NameText(*node) != "device") {
      Fail(*node, "a register map in CMSIS-SVD is one element <device>");
    }
    root = node;
  }
  if (root == nullptr) {
    throw SvdError(0, "the file has no element; a CMSIS-SVD file has one element <device>");
  }
  if (checker_) {
    checker_->Element(*root, 0);
  }
  Add(SvdKind::kDevice, *root, SvdElement::kNone, 1);
  if (elements_.front().first_child == SvdElement::kNone) {
    Fail(*root, "no <peripherals> with a <peripheral> in it");
  }
  if (derives_) {
    Derive();
  }
}

void SvdTree::Fail(const SvdNode& node, const std::string& why) const {
  const std::string_view name = NameText(node);
  throw SvdError(LineAt(storage_.text, OffsetOf(node)),
                 Format("<{}>: {}", name.substr(0, std::size_t{40}), why));
}

// `depth` is the nesting depth of the element's children.
std::uint32_t SvdTree::Add(SvdKind kind, const SvdNode& node, std::uint32_t parent,
                           std::uint32_t depth) {
  const auto id = static_cast<std::uint32_t>(elements_.size());
  SvdElement& element = elements_.emplace_back();
  const std::size_t first_pending = pending_.size();
  present_ = 0;
  TakeChildren(kind, node, TagsAllowedIn(kind), depth);

  element.kind = kind;
  element.node = &node;
  element.parent = parent;
  element.present = present_;
  element.first_slot = static_cast<std::uint32_t>(slots_.size());
  for (std::uint64_t rest = present_; rest != 0; rest &= rest - 1) {
    const auto tag = static_cast<std::size_t>(std::countr_zero(rest));
    slots_.push_back(found_[tag]);
    numbers_.push_back(found_numbers_[tag]);
  }
  if ((present_ & TagBit(SvdTag::kName)) != 0) {
    element.name = Text(*found_[static_cast<std::size_t>(SvdTag::kName)]);
  }
  for (const auto* attribute = node.first_attribute(); attribute != nullptr;
       attribute = attribute->next_attribute()) {
    if (std::string_view(attribute->name(), attribute->name_size()) == "derivedFrom") {
      element.derived_from = TrimmedSvd({attribute->value(), attribute->value_size()});
      derives_ = true;
    }
  }

  // Adding children may move `element` in memory, so it is not used below this line.
  std::uint32_t last_child = SvdElement::kNone;
  for (std::size_t i = first_pending; i < pending_.size(); ++i) {
    const Pending child = pending_[i];
    const std::uint32_t child_id = Add(KindOf(child.tag), *child.node, id, child.depth);
    (last_child == SvdElement::kNone ? elements_[id].first_child : elements_[last_child].next) =
        child_id;
    last_child = child_id;
  }
  pending_.resize(first_pending);
  return id;
}

void SvdTree::TakeChildren(SvdKind kind, const SvdNode& node, std::uint64_t allowed,
                           std::uint32_t depth) {
  PlainChecker* const checker = checker_ ? &*checker_ : nullptr;
  for (const SvdNode* child = node.first_node(); child != nullptr; child = child->next_sibling()) {
    const bool is_element = child->type() == rapidxml::node_element;
    const SvdTag tag = is_element ? SvdTagOf(NameText(*child)) : SvdTag::kUnknown;
    const std::uint64_t bit = TagBit(tag) & allowed;
    if (checker != nullptr) {
      if (bit == 0) {
        checker->AnyNode(*child, depth);
      } else if ((bit & (kWithChildren | kLists)) != 0) {
        checker->Element(*child, depth);
      } else {
        checker->WholeElement(*child, depth);
      }
    }
    if ((bit & kWithChildren) != 0) {
      pending_.push_back({child, tag, depth + 1});
    } else if ((bit & kLists) != 0) {
      TakeChildren(kind, *child, TagsInList(tag), depth + 1);
    } else if (bit == 0 && is_element) {
      storage_.doubts.Add({.kind = SvdDoubtKind::kUnknownElement,
                           .offset = OffsetOf(*child),
                           .first = NameText(*child),
                           .second = NameText(node)});
    } else if (bit != 0 && tag != SvdTag::kSkipped) {
      if ((present_ & bit) == 0) {
        present_ |= bit;
        found_[static_cast<std::size_t>(tag)] = child;
        if ((bit & kNumbersInAdvance) != 0) {
          const std::string_view text(child->value(), child->value_size());
          found_numbers_[static_cast<std::size_t>(tag)] =
              pieces_ ? kNotRead : ParseShortSvdNumber(text).value_or(kNotRead);
        }
      } else if ((bit & kRepeated) == 0) {
        DoubtTwice(kind, tag, *child);
      }
    }
  }
}

void SvdTree::DoubtTwice(SvdKind kind, SvdTag tag, const SvdNode& node) {
  const bool named = (present_ & TagBit(SvdTag::kName)) != 0;
  storage_.doubts.Add(
      {.kind = SvdDoubtKind::kTwice,
       .offset = OffsetOf(node),
       .first = NameOf(tag),
       .second = NameOf(kind),
       .third = named ? Text(*found_[static_cast<std::size_t>(SvdTag::kName)]) : ""});
}

std::string_view SvdTree::TextInPieces(const SvdNode& node) const {
  if (node.first_node() == nullptr) {
    return {node.value(), node.value_size()};
  }
  if (node.first_node() == node.last_node()) {
    const SvdNode& only =
        node.first_node()->type() == rapidxml::node_cdata ? *node.first_node() : node;
    return {only.value(), only.value_size()};
  }
  std::string whole;
  for (const SvdNode* part = node.first_node(); part != nullptr; part = part->next_sibling()) {
    if (part->type() == rapidxml::node_data || part->type() == rapidxml::node_cdata) {
      whole.append(part->value(), part->value_size());
    }
  }
  return storage_.arena.Copy(whole);
}

std::string_view SvdTree::WithoutReferences(std::string_view text) const {
  return storage_.arena.Copy(PlainText({text}));
}

std::string_view SvdTree::SlotText(std::uint32_t id, SvdTag tag) const {
  const SvdNode* const node = Slot(id, tag);
  return node == nullptr ? std::string_view() : Text(*node);
}

MapText SvdTree::RawText(std::uint32_t id, SvdTag tag) const {
  const SvdNode* const node = Slot(id, tag);
  return node == nullptr ? MapText() : RawText(*node);
}

MapText SvdTree::RawText(const SvdNode& node) const {
  if (!pieces_) {
    return {{node.value(), node.value_size()}};
  }
  // CDATA has no references, so & is escaped.
  std::string whole;
  for (const SvdNode* part = node.first_node(); part != nullptr; part = part->next_sibling()) {
    const std::string_view text = {part->value(), part->value_size()};
    if (part->type() == rapidxml::node_data) {
      whole += text;
    } else if (part->type() == rapidxml::node_cdata) {
      for (const char character : text) {
        whole += character == '&' ? std::string("&amp;") : std::string(1, character);
      }
    }
  }
  return {storage_.arena.Copy(whole)};
}

}  // namespace borvanusb
