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

// Thrown for a text that is not plain XML: it has an error or a rare construct.
struct NotPlain {};

struct PlainFacts {
  // Offsets of the first and the last reference, such as &amp;. Without references, first > last.
  std::size_t first_reference = 1;
  std::size_t last_reference = 0;
};

// Parses a text. It must not contain zero bytes and must be followed by one. Throws NotPlain. The
// caller must pass every node of the result to PlainChecker.
PlainFacts ParsePlain(std::string& text, SvdDocument& document);

// Makes the checks of CheckXml() that ParsePlain() can't make. All functions throw NotPlain.
class PlainChecker {
 public:
  explicit PlainChecker(const MapLimits& limits) : limits_(limits) {}

  // Checks an element with a name of the schema. `depth` is the number of elements around it.
  void Element(const SvdNode& node, std::uint32_t depth) {
    ++tags_;
    if (node.first_attribute() != nullptr) {
      Attributes(node);
    }
    if (depth >= limits_.depth) {
      throw NotPlain();
    }
  }
  // Checks such an element and everything in it.
  void WholeElement(const SvdNode& node, std::uint32_t depth) {
    Element(node, depth);
    if (node.first_node() != nullptr) {
      Content(node, depth);
    }
  }
  // Check any other node inside <device>, or next to it.
  void AnyNode(const SvdNode& node, std::uint32_t depth);
  static void BesideDevice(const SvdNode& node);
  // Call it last. Checks the total number of elements.
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
