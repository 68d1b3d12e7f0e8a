#include "names/completed_names.h"

#include <algorithm>

#include "base/failure.h"
#include "base/format.h"
#include "base/name_pattern.h"

namespace borvanusb {

namespace {

bool BeginsWith(std::string_view name, std::string_view word) {
  return name.size() >= word.size() && SameName(name.substr(0, word.size()), word);
}

// Adds the fields of the register if the word starts with its name and a dot.
void AddFields(const NamedRegister& named, std::string_view word, std::vector<std::string>& found) {
  if (!BeginsWith(word, Format("{}.", named.name))) {
    return;
  }
  for (const MapField& field : named.in_map->form->fields) {
    std::string name = NameOf({&named, &field});
    if (BeginsWith(name, word)) {
      found.push_back(std::move(name));
    }
  }
}

// Adds names without their leading parts, if they start with the word and only one register has
// them.
void AddLastParts(std::string_view word, const RegisterNames& names,
                  std::vector<std::string>& found) {
  for (const NamedRegister& named : names.All()) {
    const std::string_view name = named.name;
    for (std::size_t dot = name.find('.'); dot != std::string_view::npos;
         dot = name.find('.', dot + 1)) {
      const std::string_view last = name.substr(dot + 1);
      if (BeginsWith(last, word)) {
        found.emplace_back(last);
      }
    }
  }
  std::ranges::sort(found);
  // Skips names that are ambiguous.
  std::vector<std::string> clear;
  for (const std::string& name : found) {
    if (std::ranges::count(found, name) == 1) {
      clear.push_back(name);
    }
  }
  found = std::move(clear);
}

std::vector<std::string> Registers(std::string_view word, const RegisterNames& names) {
  std::vector<std::string> found;
  for (const NamedRegister& named : names.All()) {
    if (BeginsWith(named.name, word)) {
      found.push_back(named.name);
    }
    AddFields(named, word, found);
  }
  if (found.empty()) {
    AddLastParts(word, names, found);
  }
  return found;
}

std::vector<std::string> Settings(std::string_view word, const RegisterNames& names) {
  std::vector<std::string> found;
  const std::size_t sign = word.find('=');
  if (sign == std::string_view::npos) {
    found = Registers(word, names);
    for (std::string& name : found) {
      name += '=';
    }
    return found;
  }
  const std::string name(word.substr(0, sign));
  NamedTarget target;
  try {
    target = names.Find(name);
  } catch (const Failure&) {
    return found;
  }
  if (target.field == nullptr) {
    return found;
  }
  for (const MapEnumeration* const enumeration : target.field->enumerations) {
    if (enumeration == nullptr || enumeration->usage == MapUsage::kRead) {
      continue;
    }
    for (const MapEnumeratedValue& value : enumeration->values) {
      std::string setting = Format("{}={}", name, value.name);
      if (!value.is_default && BeginsWith(setting, word)) {
        found.push_back(std::move(setting));
      }
    }
  }
  return found;
}

}  // namespace

std::vector<std::string> CompletedNames(NameKind kind, std::string_view word,
                                        const RegisterNames& names) {
  switch (kind) {
    case NameKind::kRegisters:
      return Registers(word, names);
    case NameKind::kSettings:
      return Settings(word, names);
    default:
      break;
  }
  std::vector<std::string> found;
  const auto add = [&](const std::string& name) {
    if (BeginsWith(name, word)) {
      found.push_back(name);
    }
  };
  if (kind == NameKind::kRegions) {
    std::ranges::for_each(names.Profile().flash.regions, add, &FlashRegion::name);
  } else {
    std::ranges::for_each(names.Profile().presets, add, &ProfilePreset::name);
  }
  return found;
}

}  // namespace borvanusb
