#include "names/register_words.h"

#include <algorithm>
#include <cctype>

#include "base/failure.h"
#include "base/format.h"
#include "base/name_pattern.h"
#include "base/numbers.h"
#include "base/width_modes.h"
#include "command/camera_work.h"
#include "command/values.h"
#include "profile/profile_choice.h"
#include "profile/profile_folder.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kMostRegisters = std::uint64_t{1} << 20U;

RegisterAccess NumberAccess(std::uint32_t address, const NumberMeaning& numbers) {
  if (!numbers.target) {
    return ChipAccess(address, numbers.wide);
  }
  const WidthMode& mode = WidthModeOf(numbers.target->mode);
  if (address > mode.highest_address) {
    throw Failure(
        ExitCode::kUsage,
        Format("{} is too big for an address of width mode {}", Hex(address), mode.name),
        Format("Addresses go up to {}; --mode chooses another width.", Hex(mode.highest_address)));
  }
  return I2cAccess(*numbers.target, address);
}

void AddNumbers(const Range& range, const NumberMeaning& numbers,
                std::vector<WordTarget>& targets) {
  if (targets.size() + range.Size() > kMostRegisters) {
    throw Failure(ExitCode::kUsage,
                  Format("{} has {}; the limit for one command is {}", Text(range),
                         Count(range.Size(), "register"), kMostRegisters),
                  "Use a smaller range.");
  }
  for (std::uint64_t address = range.first; address <= range.last; ++address) {
    targets.push_back({NumberAccess(static_cast<std::uint32_t>(address), numbers), {}});
  }
}

[[noreturn]] void ThrowNoProfile(const std::string& message, const Context& context) {
  const std::string folder = ProfileFolder(context.host);
  throw Failure(ExitCode::kUsage, message,
                Format("Give the profile with --profile FILE{}.",
                       folder.empty() ? "" : Format(", or put it into {}", folder)));
}

}  // namespace

std::shared_ptr<const RegisterNames> NamesFor(const CameraIdentity& camera, Context& context) {
  auto profile = ProfileFor(camera, context);
  if (profile == nullptr) {
    return nullptr;
  }
  return std::make_shared<const RegisterNames>(std::move(profile));
}

std::shared_ptr<const RegisterNames> NamesNeeded(const CameraIdentity& camera, Context& context) {
  auto names = NamesFor(camera, context);
  if (names == nullptr) {
    ThrowNoProfile(Format("camera {} has no profile", camera.name), context);
  }
  return names;
}

std::shared_ptr<const RegisterNames> NamesNeededFor(const std::string& word,
                                                    const CameraIdentity& camera,
                                                    Context& context) {
  auto names = NamesFor(camera, context);
  if (names == nullptr) {
    ThrowNoProfile(Format("{}: is not a number, and camera {} has no profile that could name it",
                          word, camera.name),
                   context);
  }
  return names;
}

bool IsNumberWord(const std::string& word) {
  return ParseRange(word).has_value();
}

std::vector<RegisterAccess> AccessesOf(std::span<const WordTarget> targets) {
  std::vector<RegisterAccess> accesses;
  accesses.reserve(targets.size());
  for (const WordTarget& target : targets) {
    accesses.push_back(target.access);
  }
  return accesses;
}

std::string FirstName(const std::vector<std::string>& words) {
  const auto found = std::ranges::find_if_not(words, IsNumberWord);
  return found != words.end() ? *found : "";
}

bool MayBeName(const std::string& text) {
  return !text.empty() && (std::isalpha(static_cast<unsigned char>(text.front())) != 0 ||
                           text.front() == '_' || IsPattern(text.substr(0, 1)));
}

std::string RegisterWord(const std::string& text) {
  if (!MayBeName(text)) {
    RangeValue(text);
  }
  return text;
}

bool HasNames(const std::vector<std::string>& words) {
  return !std::ranges::all_of(words, IsNumberWord);
}

std::vector<WordTarget> TargetsOf(const std::vector<std::string>& words, const RegisterNames* names,
                                  const NumberMeaning& numbers) {
  std::vector<WordTarget> targets;
  for (const std::string& word : words) {
    if (const auto range = ParseRange(word)) {
      AddNumbers(*range, numbers, targets);
      continue;
    }
    const std::vector<NamedTarget> meant =
        IsPattern(word) ? names->Match(word) : std::vector{names->Find(word)};
    for (const NamedTarget& target : meant) {
      // A pattern skips registers that change when they are read.
      const RegisterAccess access = AccessOf(*target.of);
      if (!IsPattern(word) || (!access.read_once && CanRead(target.of->in_map->form->access))) {
        targets.push_back({access, target});
      }
    }
  }
  return targets;
}

}  // namespace borvanusb
