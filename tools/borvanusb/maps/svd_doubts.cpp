#include "maps/svd_doubts.h"

#include <algorithm>

#include "base/format.h"
#include "base/numbers.h"

namespace borvanusb {

namespace {

constexpr std::size_t kMostDoubts = 10'000;
constexpr std::size_t kLongestQuote = 60;

std::string Shown(std::string_view text) {
  return text.size() <= kLongestQuote ? std::string(text)
                                      : Format("{}...", text.substr(0, kLongestQuote));
}

// The text of a doubt about the syntax of the file.
std::string ElementText(const SvdDoubt& doubt) {
  const std::string first = Shown(doubt.first);
  const std::string second = Shown(doubt.second);
  const std::string third = Shown(doubt.third);
  switch (doubt.kind) {
    case SvdDoubtKind::kUnknownElement:
      return Format("<{}> is not known in <{}>; it is skipped", first, second);
    case SvdDoubtKind::kTwice:
      return Format("<{}> occurs twice in <{}> {}; the first one is used", first, second, third);
    case SvdDoubtKind::kMissing:
      return Format("<{}> {} has no usable <{}>; it is skipped", first, second, third);
    case SvdDoubtKind::kMissingAndTaken:
      return Format("<{}> {} has no usable <{}>; {} is used", first, second, third, doubt.number);
    case SvdDoubtKind::kNoNumber:
      return Format(
          "<{}> \"{}\" is not a valid number of up to 64 bits; allowed are 419, 0x1a3, #1101 and "
          "0b1101",
          first, second);
    case SvdDoubtKind::kNoWord:
      return Format("<{}> \"{}\" is not known; allowed: {}", first, second, doubt.third);
    case SvdDoubtKind::kNoBase:
      return Format("<{}> derivedFrom \"{}\": there is no such element; nothing is inherited",
                    first, second);
    case SvdDoubtKind::kSeveralBases:
      return Format(
          "<{}> derivedFrom \"{}\": several elements have this name, equally near; the first one "
          "is used",
          first, second);
    case SvdDoubtKind::kThirdEnumeration:
      return Format(
          "<field> {} has more <enumeratedValues> than one for reading and one for "
          "writing; the others are ignored",
          first);
    case SvdDoubtKind::kEncoding:
      return Format(
          "the file says its encoding is {}; it is read as UTF-8, other characters in "
          "descriptions are shown as question marks",
          first);
    case SvdDoubtKind::kAddressUnit:
      return Format("<addressUnitBits> is {}: addresses count units of {} bits, not bytes",
                    doubt.number, doubt.number);
    default:
      return {};
  }
}

// The text of a doubt about the meaning of the map.
std::string MapDoubtText(const SvdDoubt& doubt) {
  const std::string first = Shown(doubt.first);
  const std::string second = Shown(doubt.second);
  const std::string third = Shown(doubt.third);
  switch (doubt.kind) {
    case SvdDoubtKind::kOverlap:
      return Format("field {} of register {} overlaps field {}", first, second, third);
    case SvdDoubtKind::kBeyondRegister:
      return Format("field {}, bits {} to {}, exceeds register {}", first, doubt.number,
                    doubt.other, second);
    case SvdDoubtKind::kSameAddress:
      return Format(
          "register {} has the same address {} as register {}, and neither is an "
          "alternate",
          first, Hex(doubt.number, 8), second);
    case SvdDoubtKind::kOutsideBlock:
      return Format("register {} at {} lies outside the address blocks of its peripheral", first,
                    Hex(doubt.number, 8));
    case SvdDoubtKind::kSameName:
      return Format("<{}> {}: the name occurs twice in {}", first, second, third);
    case SvdDoubtKind::kValueTooBig:
      return Format("enumerated value {} = {} does not fit into field {} of {} {}", first,
                    Hex(doubt.number), second, doubt.other, doubt.other == 1 ? "bit" : "bits");
    case SvdDoubtKind::kNoDim:
      return Format("<{}> {}: the name has %s, but there is no <dim>", first, second);
    case SvdDoubtKind::kNoMark:
      return Format("<{}> {}: <dim> is {}, but the name has no %s; indexes are added at its end",
                    first, second, doubt.number);
    case SvdDoubtKind::kIndexCount:
      return Format(
          "<{}> {}: <dimIndex> \"{}\" does not define {} indexes; indexes from 0 are used", first,
          second, third, doubt.number);
    case SvdDoubtKind::kTooFar:
      return Format("<{}> {}: the address is beyond 64 bits; it is skipped", first, second);
    case SvdDoubtKind::kSize:
      return Format("<register> {}: <size> is {}; allowed are 1 to 64 bits", first, doubt.number);
    default:
      return {};
  }
}

}  // namespace

std::string TextOf(const SvdDoubt& doubt) {
  std::string text = ElementText(doubt);
  if (text.empty()) {
    text = MapDoubtText(doubt);
  }
  if (doubt.more > 0) {
    text += Format(" (and {} more from this line)", doubt.more);
  }
  return text;
}

void SvdDoubts::Add(const SvdDoubt& doubt) {
  if (doubts_.size() * 2 >= table_.size()) {
    Grow();
  }
  std::uint32_t& place = Find(doubt.kind, doubt.offset);
  if (place != 0) {
    ++doubts_[place - 1].more;
  } else if (doubts_.size() < kMostDoubts) {
    doubts_.push_back(doubt);
    place = static_cast<std::uint32_t>(doubts_.size());
  } else {
    ++untold_;
  }
}

std::uint32_t& SvdDoubts::Find(SvdDoubtKind kind, std::uint32_t offset) {
  constexpr std::uint32_t kFactor = 0x9E3779B1;
  const std::uint32_t hash = (offset + static_cast<std::uint32_t>(kind)) * kFactor;
  std::size_t entry = hash;
  for (;; ++entry) {
    std::uint32_t& place = table_[entry & (table_.size() - 1)];
    if (place == 0 || (doubts_[place - 1].offset == offset && doubts_[place - 1].kind == kind)) {
      return place;
    }
  }
}

void SvdDoubts::Grow() {
  constexpr std::size_t kLeast = 64;
  table_.assign(std::max(kLeast, table_.size() * 2), 0);
  for (std::uint32_t i = 0; i < doubts_.size(); ++i) {
    Find(doubts_[i].kind, doubts_[i].offset) = i + 1;
  }
}

}  // namespace borvanusb
