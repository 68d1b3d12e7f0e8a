#pragma once

#include <cstdint>
#include <rapidxml/rapidxml.hpp>
#include <string>

#include "maps/read_svd.h"

namespace borvanusb {

// Fast path for plain XML: RapidXML parses the text first, and the result is checked for the errors
// that RapidXML does not detect. Nearly every map is plain. xml_guard.h handles all other texts and
// produces the exact error messages.

using SvdNode = rapidxml::xml_node<char>;
using SvdDocument = rapidxml::xml_document<char>;

// What makes a text one that is not plain: something wrong, or merely rare.
struct NotPlain {};

struct PlainFacts {
  // The places of the first and the last character that is written as a reference: &amp;
  std::size_t first_reference = 1;
  std::size_t last_reference = 0;
};

// Parses a text without zero bytes that is followed by one. Throws NotPlain. What is returned still
// has to go through PlainChecker, node by node.
PlainFacts ParsePlain(std::string& text, SvdDocument& document);

// What CheckXml() holds a text to and ParsePlain() can't see.
class PlainChecker {
 public:
  explicit PlainChecker(const MapLimits& limits) : limits_(limits) {}

  // An element with a name of the schema, and how many elements it lies in. Each throws NotPlain.
  void Element(const SvdNode& node, std::uint32_t depth) {
    ++tags_;
    if (node.first_attribute() != nullptr) {
      Attributes(node);
    }
    if (depth >= limits_.depth) {
      throw NotPlain();
    }
  }
  // The same with all in it.
  void WholeElement(const SvdNode& node, std::uint32_t depth) {
    Element(node, depth);
    if (node.first_node() != nullptr) {
      Content(node, depth);
    }
  }
  // Any other node in the element <device>, and any beside it.
  void AnyNode(const SvdNode& node, std::uint32_t depth);
  static void BesideDevice(const SvdNode& node);
  // At the end.
  void Count() const {
    if (tags_ > limits_.tags) {
      throw NotPlain();
    }
  }

 private:
  static void Attributes(const SvdNode& node);
  void Content(const SvdNode& node, std::uint32_t depth);

  const MapLimits& limits_;
  std::uint64_t tags_ = 0;
};

}  // namespace borvanusb
