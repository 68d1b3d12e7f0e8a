#include "maps/read_svd.h"

#include <memory>
#include <optional>
#include <rapidxml/rapidxml.hpp>
#include <utility>

#include "base/format.h"
#include "base/numbers.h"
#include "maps/map_builder.h"
#include "maps/map_storage.h"
#include "maps/plain_xml.h"
#include "maps/svd_tree.h"
#include "maps/xml_guard.h"

namespace borvanusb {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
// The text must stay unchanged, because the map refers to it and lines are counted in it.
constexpr int kInPieces = rapidxml::parse_non_destructive;
constexpr int kWhole = rapidxml::parse_non_destructive | rapidxml::parse_no_data_nodes;

void CheckText(std::string& text, const MapLimits& limits) {
  if (text.size() > limits.bytes) {
    throw SvdError(0, Format("the file has {}; allowed are up to {}", SizeText(text.size()),
                             SizeText(limits.bytes)));
  }
  const std::string_view start = std::string_view(text).substr(0, 4);
  if (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF") ||
      start == std::string_view("<\0?\0", 4) || start == std::string_view("\0<\0?", 4)) {
    throw SvdError(0, "the file is UTF-16, which can't be read: save it as UTF-8");
  }
  if (const std::size_t zero = text.find('\0'); zero != std::string::npos) {
    throw SvdError(LineAt(text, zero), "the file has a zero byte; it must be UTF-8 text");
  }
  if (text.starts_with(kUtf8Mark)) {
    // Replaced by blanks, so that all offsets stay the same.
    text.replace(0, kUtf8Mark.size(), kUtf8Mark.size(), ' ');
  }
}

void DoubtEncoding(MapStorage& storage) {
  std::string_view text = storage.text;
  const std::size_t end = text.find("?>");
  const std::size_t start = end == std::string_view::npos ? end : text.rfind("<?xml", end);
  if (start == std::string_view::npos) {
    return;
  }
  text = text.substr(0, end);
  const std::size_t place = text.find("encoding=", start);
  if (place == std::string_view::npos) {
    return;
  }
  text.remove_prefix(place + std::string_view("encoding=").size());
  const char quote = text.empty() ? '"' : text.front();
  const std::string_view name = text.substr(1, text.find(quote, 1) - 1);
  for (const std::string_view known :
       {"UTF-8", "utf-8", "Utf-8", "US-ASCII", "us-ascii", "ASCII"}) {
    if (name == known) {
      return;
    }
  }
  storage.doubts.Add({.kind = SvdDoubtKind::kEncoding,
                      .offset = static_cast<std::uint32_t>(place),
                      .first = name});
}

void Parse(std::string& text, bool pieces, SvdDocument& document) {
  try {
    if (pieces) {
      document.parse<kInPieces>(text.data());
    } else {
      document.parse<kWhole>(text.data());
    }
  } catch (const rapidxml::parse_error& error) {
    const auto offset = static_cast<std::size_t>(error.where<char>() - text.data());
    throw SvdError(
        LineAt(text, offset),
        Format("invalid XML: {}; the file must have one element <device> and may have comments",
               error.what()));
  }
}

// The XML document of a text, and its elements.
struct Parsed {
  std::unique_ptr<SvdDocument> document = std::make_unique<SvdDocument>();
  std::unique_ptr<const SvdTree> tree;
};

// The fast path. Returns nothing if the text is not plain XML or has an error.
std::optional<Parsed> ParseQuickly(const MapLimits& limits, MapStorage& storage) {
  Parsed parsed;
  try {
    const PlainFacts facts = ParsePlain(storage.text, *parsed.document);
    DoubtEncoding(storage);
    parsed.tree = std::make_unique<SvdTree>(*parsed.document, facts, limits, storage);
  } catch (const NotPlain&) {
    return std::nullopt;
  } catch (const SvdError&) {
    // The careful parser may find another error earlier in the file, so it produces the message.
    return std::nullopt;
  }
  return parsed;
}

Parsed ParseCarefully(const MapLimits& limits, MapStorage& storage) {
  Parsed parsed;
  storage.doubts = {};
  const XmlFacts facts = CheckXml(storage.text, limits);
  Parse(storage.text, facts.pieces, *parsed.document);
  DoubtEncoding(storage);
  parsed.tree = std::make_unique<SvdTree>(*parsed.document, facts, limits, storage);
  return parsed;
}

}  // namespace

RegisterMap ReadSvd(std::string text, const MapLimits& limits) {
  RegisterMap map;
  MapStorage& storage = *map.storage;
  storage.text = std::move(text);
  CheckText(storage.text, limits);
  std::optional<Parsed> parsed = ParseQuickly(limits, storage);
  if (!parsed) {
    parsed = ParseCarefully(limits, storage);
  }
  BuildMap(*parsed->tree, limits, map);
  CheckMap(map);
  return map;
}

}  // namespace borvanusb
