#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "maps/read_svd.h"

namespace borvanusb {

// What CheckXml() finds of a text that passes.
struct XmlFacts {
  std::uint64_t tags = 0;
  // Whether some text is in several pieces: CDATA, or a comment in its middle.
  bool pieces = false;
};

// Holds a text to what RapidXML can be given: RapidXML calls itself for each element within an
// element, takes any end tag for the right one, passes over declarations and unknown entities.
// `text` must be followed by a zero byte. Throws SvdError.
XmlFacts CheckXml(const std::string& text, const MapLimits& limits);

// Whether a name of an element or attribute may have this character.
bool IsXmlName(char character);

// Whether a text begins with a known entity or the number of a character: "&amp;", "&#181;".
bool IsReference(std::string_view text);

// The line of a place in a text, from 1 on.
std::uint64_t LineAt(std::string_view text, std::size_t offset);

}  // namespace borvanusb
