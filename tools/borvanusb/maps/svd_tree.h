#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <rapidxml/rapidxml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "maps/map_storage.h"
#include "maps/plain_xml.h"
#include "maps/read_svd.h"
#include "maps/short_text.h"
#include "maps/svd_numbers.h"
#include "maps/svd_tags.h"
#include "maps/xml_guard.h"

namespace borvanusb {

// An element of the file that has children or may use derivedFrom.
struct SvdElement {
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  SvdKind kind = SvdKind::kDevice;
  std::uint32_t parent = kNone;
  std::uint32_t first_child = kNone;
  std::uint32_t next = kNone;       // next element of the same parent
  std::uint32_t same_hash = kNone;  // next element in the same hash bucket
  std::uint32_t base = kNone;       // element named by derivedFrom
  std::uint32_t first_slot = 0;
  std::uint64_t present = 0;  // simple elements in it, as bits of SvdTag
  std::string_view name;
  std::string_view derived_from;
  const SvdNode* node = nullptr;
};

// The elements of a file, with what each one inherits by derivedFrom.
class SvdTree {
 public:
  // Builds the tree from `storage.text`, after CheckXml() accepted it. Throws SvdError.
  SvdTree(const SvdNode& document, const XmlFacts& facts, const MapLimits& limits,
          MapStorage& storage);
  // Builds the tree from the result of ParsePlain(). Throws SvdError and NotPlain.
  SvdTree(const SvdNode& document, const PlainFacts& facts, const MapLimits& limits,
          MapStorage& storage);

  const SvdElement& operator[](std::uint32_t id) const { return elements_[id]; }
  std::size_t size() const { return elements_.size(); }

  // A simple element: the element's own one, else the inherited one. Returns null if there is none.
  const SvdNode* Slot(std::uint32_t id, SvdTag tag) const {
    do {
      const SvdElement& element = elements_[id];
      if ((element.present & TagBit(tag)) != 0) {
        return OwnSlot(element, tag);
      }
      id = element.base;
    } while (id != SvdElement::kNone);
    return nullptr;
  }
  // The number in the element's own simple element, if it was parsed in advance. Otherwise
  // kNotRead.
  static constexpr std::uint64_t kNotRead = ~std::uint64_t{0};
  std::uint64_t OwnNumber(const SvdElement& element, SvdTag tag) const {
    return numbers_[element.first_slot + CountBits(element.present & (TagBit(tag) - 1))];
  }

  // All simple elements of an element, own and inherited, as bits of SvdTag.
  std::uint64_t Present(std::uint32_t id) const {
    std::uint64_t present = 0;
    do {
      present |= elements_[id].present;
      id = elements_[id].base;
    } while (id != SvdElement::kNone);
    return present;
  }
  const SvdNode* OwnSlot(const SvdElement& element, SvdTag tag) const {
    return slots_[element.first_slot + CountBits(element.present & (TagBit(tag) - 1))];
  }
  // The text of an element, without leading and trailing blanks.
  std::string_view Text(const SvdNode& node) const {
    const std::string_view text = TrimmedSvd(
        pieces_ ? TextInPieces(node) : std::string_view(node.value(), node.value_size()));
    return MayHaveReferences(text) && HasCharacter(text, '&') ? WithoutReferences(text) : text;
  }
  std::string_view SlotText(std::uint32_t id, SvdTag tag) const;
  // The text of an element, unchanged.
  MapText RawText(const SvdNode& node) const;
  MapText RawText(std::uint32_t id, SvdTag tag) const;

  // The inherited children, then the own ones. An own child replaces an inherited one of the same
  // name.
  std::vector<std::uint32_t> Children(std::uint32_t id) const;

  std::uint32_t OffsetOf(const SvdNode& node) const {
    return static_cast<std::uint32_t>(node.name() - storage_.text.data());
  }
  std::uint32_t OffsetOf(std::uint32_t id) const { return OffsetOf(*elements_[id].node); }
  [[noreturn]] void Fail(const SvdNode& node, const std::string& why) const;

 private:
  // Used instead of std::popcount(), which is a function call unless the build targets a processor
  // that has the instruction.
  static constexpr std::uint32_t CountBits(std::uint64_t bits) {
    bits -= bits >> 1U & 0x5555555555555555U;
    bits = (bits & 0x3333333333333333U) + (bits >> 2U & 0x3333333333333333U);
    bits = (bits + (bits >> 4U)) & 0x0F0F0F0F0F0F0F0FU;
    return static_cast<std::uint32_t>(bits * 0x0101010101010101U >> 56U);
  }
  bool MayHaveReferences(std::string_view text) const {
    return references_anywhere_ ||
           (text.data() <= last_reference_ && text.data() + text.size() > first_reference_);
  }
  std::string_view TextInPieces(const SvdNode& node) const;
  std::string_view WithoutReferences(std::string_view text) const;

  struct Pending {
    const SvdNode* node = nullptr;
    SvdTag tag = SvdTag::kUnknown;
    std::uint32_t depth = 0;  // nesting depth of its children
  };

  void Build(const SvdNode& document);
  std::uint32_t Add(SvdKind kind, const SvdNode& node, std::uint32_t parent, std::uint32_t depth);
  void TakeChildren(SvdKind kind, const SvdNode& node, std::uint64_t allowed, std::uint32_t depth);
  void DoubtTwice(SvdKind kind, SvdTag tag, const SvdNode& node);

  // Defined in svd_derivation.cpp.
  void Derive();
  void FindBase(std::uint32_t id, const std::vector<std::uint32_t>& heads, std::uint64_t& steps);
  bool LiesOnPath(std::uint32_t id, std::string_view path) const;
  std::uint32_t Nearness(std::uint32_t id, std::uint32_t other) const;
  void RefuseCircles(std::uint32_t id) const;

  bool pieces_ = false;
  // Where the text contains references such as &amp;.
  bool references_anywhere_ = false;
  const char* first_reference_ = nullptr;
  const char* last_reference_ = nullptr;
  bool derives_ = false;
  std::optional<PlainChecker> checker_;
  const MapLimits& limits_;
  MapStorage& storage_;
  std::vector<SvdElement> elements_;
  std::vector<const SvdNode*> slots_;
  std::vector<std::uint64_t> numbers_;  // the numbers in slots_, or kNotRead
  // State of the element that is being read.
  std::vector<Pending> pending_;
  std::array<const SvdNode*, 64> found_;
  std::array<std::uint64_t, 64> found_numbers_;
  std::uint64_t present_ = 0;
};

// The name without its index placeholder: "CH" for "CH[%s]".
std::string_view NameWithoutIndex(std::string_view name);

}  // namespace borvanusb
