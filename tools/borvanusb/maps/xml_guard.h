#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "maps/read_svd.h"

namespace borvanusb {

// The result of CheckXml() for an accepted text.
struct XmlFacts {
  std::uint64_t tags = 0;
  // Whether a text consists of several pieces: CDATA, or a comment within the text.
  bool pieces = false;
};

// Checks that RapidXML can parse a text safely. RapidXML recurses for each nested element, accepts
// any end tag, and ignores declarations and unknown entities. `text` must be followed by a zero
// byte. Throws SvdError.
XmlFacts CheckXml(const std::string& text, const MapLimits& limits);

// Whether this character is allowed in the name of an element or attribute.
bool IsXmlName(char character);

// Whether a text begins with a known entity or a character reference: "&amp;", "&#181;".
bool IsReference(std::string_view text);

// The line of an offset in a text, from 1.
std::uint64_t LineAt(std::string_view text, std::size_t offset);

}  // namespace borvanusb
