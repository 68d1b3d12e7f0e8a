#include "profile_commands/check_profile.h"

#include <algorithm>
#include <map>
#include <optional>

#include "base/failure.h"
#include "base/format.h"
#include "base/name_pattern.h"
#include "camera/camera.h"
#include "i2c/i2c_list.h"
#include "names/register_names.h"
#include "names/register_setting.h"
#include "profile/json_tree.h"
#include "profile_commands/check_options.h"
#include "profile_commands/profile_text.h"
#include "registers/register_list.h"

namespace borvanusb {

namespace {

constexpr std::size_t kMostTold = 20;  // messages of one kind

std::string InSmallLetters(std::string_view text) {
  std::string small(text);
  std::ranges::transform(small, small.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return small;
}

class Checker {
 public:
  Checker(const JsonNode& root, std::shared_ptr<const CameraProfile> profile,
          const ProfileFileReader& read, const CommandRules& rules)
      : root_(root), profile_(*profile), names_(std::move(profile)), read_(read), rules_(rules) {}

  ProfileFindings Check() {
    CheckNames();
    CheckMaps();
    CheckRegions();
    CheckPresets();
    CheckOptions();
    SortByLine(findings_.errors);
    SortByLine(findings_.remarks);
    return std::move(findings_);
  }

 private:
  // A list item of the file. It was read without errors, so all keys on the way exist.
  const JsonNode& Item(std::string_view key, std::size_t index) const {
    return root_.Find(key)->items[index];
  }

  static ListProblem At(const JsonNode& node, const std::string& why) {
    return {node.line, Format("{}: {}", node.place, why)};
  }
  void Wrong(const JsonNode& node, const std::string& why) {
    findings_.errors.push_back(At(node, why));
  }
  void Remark(const JsonNode& node, const std::string& why) {
    findings_.remarks.push_back(At(node, why));
  }

  const JsonNode& NodeOf(const ProfileMap& map) const {
    return Item("maps", static_cast<std::size_t>(&map - profile_.maps.data()));
  }

  // If two registers have the same name, the second one can't be accessed by it.
  void CheckNames() {
    std::map<std::string, const NamedRegister*> first;
    std::map<const ProfileMap*, std::size_t> told;
    for (const NamedRegister& named : names_.All()) {
      const auto [found, is_new] = first.emplace(InSmallLetters(named.name), &named);
      if (is_new) {
        continue;
      }
      const std::size_t number = ++told[named.map];
      if (number <= kMostTold) {
        const ProfileMap& other = *found->second->map;
        Wrong(NodeOf(*named.map),
              &other == named.map
                  ? Format("{} has two registers {}", BareName(other.file), named.name)
                  : Format("{} is also a register of {}; give one of the maps a \"prefix\"",
                           named.name, BareName(other.file)));
      }
    }
    for (const auto& [map, number] : told) {
      if (number > kMostTold) {
        Wrong(NodeOf(*map), Format("{} more names are there twice", number - kMostTold));
      }
    }
  }

  void CheckMaps() {
    for (const ProfileMap& map : profile_.maps) {
      const std::uint64_t doubts = map.map->Doubts().size() + map.map->UntoldDoubts();
      if (doubts > 0) {
        Remark(NodeOf(map), Format("{} has {} doubt{}; borvanusb map check {} shows them",
                                   BareName(map.file), doubts, doubts == 1 ? "" : "s", map.file));
      }
      if (map.map->registers.empty()) {
        Remark(NodeOf(map), Format("{} has no registers", BareName(map.file)));
      }
    }
    const auto unreachable = names_.Unreachable();
    for (std::size_t i = 0; i < std::min(unreachable.size(), kMostTold); ++i) {
      Remark(*root_.Find("maps"), Format("this register can't be used: {}", unreachable[i]));
    }
    if (unreachable.size() > kMostTold) {
      Remark(*root_.Find("maps"),
             Format("{} more registers can't be used", unreachable.size() - kMostTold));
    }
  }

  void CheckRegions() {
    const JsonNode* const flash = root_.Find("flash");
    const JsonNode* const regions = flash != nullptr ? flash->Find("regions") : nullptr;
    if (regions == nullptr) {
      return;
    }
    std::map<std::string, std::string> patterns;  // lower case, with the names of their regions
    for (const JsonNode& item : regions->items) {
      const FlashRegion& region = *profile_.flash.Find(item.Find("name")->text);
      if (region.range.first % kSectorSize != 0 ||
          (std::uint64_t{region.range.last} + 1) % kSectorSize != 0) {
        Remark(*item.Find("range"),
               Format("{} does not consist of whole sectors of 4096 bytes: an erase of the region "
                      "also affects its neighbours",
                      Text(region.range)));
      }
      CheckPatterns(item, region, patterns);
    }
  }

  void CheckPatterns(const JsonNode& item, const FlashRegion& region,
                     std::map<std::string, std::string>& patterns) {
    for (std::size_t i = 0; i < region.files.size(); ++i) {
      const JsonNode& node = item.Find("files")->items[i];
      const std::string& pattern = region.files[i];
      if (pattern.find_first_of("/\\") != std::string::npos) {
        Wrong(node, Format("\"{}\" fits no file: it is compared with names without their folder",
                           pattern));
      }
      const auto [found, is_new] = patterns.emplace(InSmallLetters(pattern), region.name);
      if (!is_new) {
        Remark(node, Format("\"{}\" is also in region {}; a file name that matches both does not "
                            "select a region",
                            pattern, found->second));
      }
    }
  }

  void CheckPresets() {
    for (std::size_t i = 0; i < profile_.presets.size(); ++i) {
      const ProfilePreset& preset = profile_.presets[i];
      const JsonNode& item = Item("presets", i);
      if (preset.file.empty()) {
        CheckSettings(item, preset);
      } else {
        CheckList(*item.Find("file"), preset);
      }
    }
  }

  void CheckSettings(const JsonNode& item, const ProfilePreset& preset) {
    const JsonNode& list = *item.Find("settings");
    std::vector<RegisterSetting> settings;
    for (std::size_t i = 0; i < preset.settings.size(); ++i) {
      try {
        settings.push_back(ParseSetting(preset.settings[i], &names_, {}));
      } catch (const Failure& failure) {
        Wrong(list.items[i], failure.Message());
      }
    }
    if (preset.settings.empty()) {
      Remark(list, "has no settings");
    }
    if (settings.size() < preset.settings.size()) {
      return;  // an invalid setting may be the one that would set the missing field
    }
    for (const RegisterSetting& setting : MergeSettings(std::move(settings), false)) {
      try {
        CheckSetting(setting);
      } catch (const Failure& failure) {
        Wrong(list, Format("{} {}", failure.Message(), failure.Hint()));
      }
    }
  }

  void CheckList(const JsonNode& node, const ProfilePreset& preset) {
    ListText list;
    try {
      const std::string text = read_(preset.file);
      if (preset.on_i2c) {
        const CheckedI2cList checked = CheckI2cList(text, std::nullopt);
        if (!checked.opens_itself) {
          Wrong(node, Format("{} does not begin with 0xfff8 and 0xfffe, so it does not name its "
                             "device; put the two lines at its beginning",
                             BareName(preset.file)));
          return;
        }
        list = checked.list;
      } else {
        list = CheckRegisterList(text).list;
      }
    } catch (const Failure& failure) {
      Wrong(node, failure.Message());
      return;
    }
    const auto told = [&](const ListProblem& problem) {
      return At(node, Format("{}{}: {}", BareName(preset.file),
                             problem.line == 0 ? "" : Format(":{}", problem.line), problem.text));
    };
    for (const ListProblem& problem : list.problems) {
      findings_.errors.push_back(told(problem));
    }
    for (const ListProblem& remark : list.remarks) {
      findings_.remarks.push_back(told(remark));
    }
  }

  void CheckOptions() {
    for (std::size_t i = 0; i < profile_.options.size(); ++i) {
      const auto& [name, value] = profile_.options[i];
      const std::string problem = DefaultProblem(name, value, rules_);
      if (!problem.empty()) {
        Wrong(root_.Find("options")->members[i].value, problem);
      }
    }
  }

  const JsonNode& root_;
  const CameraProfile& profile_;
  const RegisterNames names_;
  const ProfileFileReader& read_;
  const CommandRules& rules_;
  ProfileFindings findings_;
};

}  // namespace

ProfileFindings CheckProfile(std::string_view text,
                             const std::shared_ptr<const ProfileReading>& reading,
                             const ProfileFileReader& read, const CommandRules& rules) {
  if (!reading->errors.empty()) {
    return {reading->errors, {}};
  }
  const JsonNode root = ReadJsonTree(text);
  return Checker(root, {reading, &reading->profile}, read, rules).Check();
}

}  // namespace borvanusb
