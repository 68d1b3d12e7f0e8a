#include "names/register_names.h"

#include <algorithm>
#include <limits>
#include <map>
#include <optional>

#include "base/failure.h"
#include "base/format.h"
#include "base/name_pattern.h"
#include "base/width_modes.h"
#include "command/nearest.h"

namespace borvanusb {

namespace {

constexpr char kDot = '.';
constexpr std::uint32_t kWidestRegister = 64;
constexpr std::size_t kMostShown = 6;  // in a message about an ambiguous name

std::uint64_t HighestAddress(const ProfileMap& map) {
  return map.on_i2c ? WidthModeOf(map.target.mode).highest_address
                    : std::numeric_limits<std::uint32_t>::max();
}

// Why a register can't be accessed by name. Empty if it can.
std::string WhyUnreachable(const ProfileMap& map, const MapRegister& in_map,
                           std::uint32_t accesses) {
  if (in_map.form->bits > kWidestRegister) {
    return Format("{} bits are more than 64", in_map.form->bits);
  }
  const std::uint64_t highest = HighestAddress(map);
  const std::uint64_t more = map.base + std::uint64_t{map.step} * (accesses - 1);
  if (more > highest || in_map.address > highest - more) {
    return Format("its address, {}, is beyond {}", Hex(in_map.address), Hex(highest));
  }
  return {};
}

// The last `parts` dot-separated parts of a name. Returns nothing if it has fewer.
std::optional<std::string_view> LastParts(std::string_view name, std::ptrdiff_t parts) {
  std::size_t begin = name.size() + 1;
  for (; parts > 0; --parts) {
    if (begin == 0) {
      return std::nullopt;
    }
    const std::size_t dot = begin == 1 ? std::string_view::npos : name.rfind(kDot, begin - 2);
    begin = dot == std::string_view::npos ? 0 : dot + 1;
  }
  return name.substr(begin);
}

std::ptrdiff_t PartsOf(std::string_view name) {
  return std::ranges::count(name, kDot) + 1;
}

bool Means(std::string_view name, std::string_view wanted) {
  const auto tail = LastParts(name, PartsOf(wanted));
  return tail && MatchesPattern(wanted, *tail, kDot);
}

std::string InSmallLetters(std::string_view text) {
  std::string small(text);
  std::ranges::transform(small, small.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return small;
}

const AccessRule& AccessRuleOf(const ProfileMap& map, const MapRegister& in_map) {
  const auto found = map.register_rules.find(in_map.name);
  return found != map.register_rules.end() ? found->second : map.rule;
}

std::string Shown(const std::vector<NamedTarget>& targets) {
  std::string text;
  for (std::size_t i = 0; i < std::min(targets.size(), kMostShown); ++i) {
    text += Format("{}{}", i == 0 ? "" : ", ", NameOf(targets[i]));
  }
  return targets.size() > kMostShown ? Format("{} and {} more", text, targets.size() - kMostShown)
                                     : text;
}

}  // namespace

std::uint64_t NamedRegister::Mask() const {
  constexpr std::uint64_t kAll = ~std::uint64_t{0};
  return Bits() >= kWidestRegister ? kAll : ~(kAll << Bits());
}

std::string NameOf(const NamedTarget& target) {
  return target.field == nullptr ? target.of->name
                                 : Format("{}.{}", target.of->name, target.field->name);
}

RegisterNames::RegisterNames(std::shared_ptr<const CameraProfile> profile)
    : profile_(std::move(profile)) {
  for (const ProfileMap& map : profile_->maps) {
    for (const MapRegister& in_map : map.map->registers) {
      const std::uint32_t accesses =
          std::max<std::uint32_t>(1, (in_map.form->bits + map.access_bits - 1) / map.access_bits);
      std::string name =
          map.prefix.empty() ? std::string(in_map.name) : Format("{}.{}", map.prefix, in_map.name);
      const std::string why = WhyUnreachable(map, in_map, accesses);
      if (!why.empty()) {
        unreachable_.push_back(Format("{}: {}", name, why));
        continue;
      }
      registers_.push_back({std::move(name), &map, &in_map, &AccessRuleOf(map, in_map),
                            static_cast<std::uint32_t>(map.base + in_map.address), accesses});
    }
  }
}

// Registers have priority: a name that matches a register does not match fields of other registers.
std::vector<NamedTarget> RegisterNames::Matches(std::string_view name) const {
  std::vector<NamedTarget> found;
  for (const NamedRegister& named : registers_) {
    if (Means(named.name, name)) {
      found.push_back({&named, nullptr});
    }
  }
  if (!found.empty()) {
    return found;
  }
  const std::size_t dot = name.rfind(kDot);
  if (dot == std::string_view::npos) {
    return found;
  }
  for (const NamedRegister& named : registers_) {
    if (!Means(named.name, name.substr(0, dot))) {
      continue;
    }
    for (const MapField& field : named.in_map->form->fields) {
      if (MatchesPattern(name.substr(dot + 1), field.name, kDot)) {
        found.push_back({&named, &field});
      }
    }
  }
  return found;
}

std::string RegisterNames::Nearest(const std::string& name) const {
  std::map<std::string, std::string> tails;  // lower-case name, and the name as written
  const std::ptrdiff_t parts = PartsOf(name);
  const auto add_tail = [&](const std::string& full) {
    if (const auto tail = LastParts(full, parts)) {
      tails.emplace(InSmallLetters(*tail), *tail);
    }
  };
  for (const NamedRegister& named : registers_) {
    add_tail(named.name);
    for (const MapField& field : named.in_map->form->fields) {
      add_tail(NameOf({&named, &field}));
    }
  }
  std::vector<std::string> known;
  known.reserve(tails.size());
  for (const auto& [small, tail] : tails) {
    known.push_back(small);
  }
  const std::string nearest = NearestWord(InSmallLetters(name), known);
  return nearest.empty() ? "" : tails[nearest];
}

NamedTarget RegisterNames::Find(const std::string& name) const {
  const std::vector<NamedTarget> found = Matches(name);
  if (found.size() == 1) {
    return found.front();
  }
  if (found.empty()) {
    const std::string nearest = Nearest(name);
    throw Failure(ExitCode::kUsage,
                  Format("the profile \"{}\" has no register or field {}{}", profile_->name, name,
                         nearest.empty() ? "" : Format("; did you mean {}?", nearest)),
                  "borvanusb reg find TEXT searches names.");
  }
  // A full name has priority over an abbreviated one.
  for (const NamedTarget& target : found) {
    if (SameName(NameOf(target), name)) {
      return target;
    }
  }
  throw Failure(ExitCode::kUsage, Format("{} is ambiguous: {}", name, Shown(found)),
                "Use a longer name.");
}

std::vector<NamedTarget> RegisterNames::Match(const std::string& pattern) const {
  std::vector<NamedTarget> found = Matches(pattern);
  if (found.empty()) {
    throw Failure(
        ExitCode::kUsage,
        Format("the profile \"{}\" has no register or field that fits {}", profile_->name, pattern),
        "borvanusb reg find TEXT searches names; * matches any characters except a dot.");
  }
  return found;
}

}  // namespace borvanusb
