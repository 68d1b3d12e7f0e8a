#include "workbench/word_rules.h"

#include <algorithm>
#include <array>

#include "base/failure.h"
#include "base/format.h"
#include "base/joined.h"
#include "command/values.h"
#include "command/word_sorter.h"
#include "workbench/file_names.h"

namespace borvanusb {

namespace {

using enum CommandEffect;

constexpr std::size_t kMostWords = 2000;
// Windows limits a command line to 32767 characters. The workbench needs some for the words that it
// adds.
constexpr std::size_t kMostBytes = 30000;

constexpr std::array kCommands = std::to_array<PageCommand>({
    {"list", kReads},
    {"info", kReads},
    {"selftest", kReads},
    {"doctor", kReads},
    {"reg read", kReads},
    {"reg write", kWrites},
    {"reg dump", kReads},
    {"reg load", kWrites},
    {"reg diff", kReads},
    {"reg find", kReads},
    {"reg show", kReads},
    {"preset list", kReads},
    {"preset apply", kWrites},
    {"preset save", kWrites},
    {"preset diff", kReads},
    {"i2c read", kReads},
    {"i2c write", kWrites},
    {"i2c dump", kReads},
    {"i2c load", kWrites},
    {"i2c diff", kReads},
    {"i2c scan", kReads},
    {"flash read", kReads},
    {"flash word", kWritesWithValue},
    {"flash erase", kWrites},
    {"flash map", kReads},
    {"flash program", kWritesUnlessDryRun},
    {"flash verify", kReads},
    {"map check", kReads},
    {"profile list", kReads},
    {"profile show", kReads},
    {"profile check", kReads},
    {"profile names", kReads},
    {"watch", kReads, true},
    {"bench", kReads},
});

// Common options that are allowed: they only affect the command itself.
constexpr std::array<std::string_view, 3> kCommonAllowed = {"--timeout", "--verbose", "--wait"};
// Options that a page can't use: commands run for each camera separately, and events already report
// cameras that are connected or disconnected.
constexpr std::array<std::string_view, 2> kOwnRefused = {"--all", "--watch"};

Failure Refusal(const std::string& message, const std::string& hint) {
  return {ExitCode::kUsage, message, hint};
}

void CheckSizes(const std::vector<std::string>& words) {
  std::size_t bytes = 0;
  for (const std::string& word : words) {
    bytes += word.size() + 3;
    if (std::ranges::any_of(word, [](char c) { return static_cast<unsigned char>(c) < 0x20U; })) {
      throw Refusal("a word has a control character", "Remove it.");
    }
  }
  if (words.size() > kMostWords || bytes > kMostBytes) {
    throw Refusal(Format("the command line is too long: at most {} words and {} bytes are possible",
                         kMostWords, kMostBytes),
                  "Do it in several parts.");
  }
}

const PageCommand& PageCommandOf(const std::string& words) {
  const auto* const found =
      std::ranges::find(kCommands, std::string_view(words), &PageCommand::words);
  if (found == kCommands.end()) {
    throw Refusal(words.empty() ? std::string("unknown workbench command")
                                : Format("{}: is not possible in the workbench", words),
                  "Run it on the command line.");
  }
  return *found;
}

std::string NameOf(const OptionDescription& option) {
  return option.names.back();
}

void CheckPlain(const OptionDescription& option, std::string_view value) {
  if (const std::string problem = ProblemOfPlainName(value); !problem.empty()) {
    throw Refusal(Format("{}: {} {}", NameOf(option), Quoted(value), problem),
                  "Only files in the workbench's folder are allowed; upload the file first.");
  }
}

// Checks "boot.bin@0x40000" or "config.bin@region:config": a file name and its position.
void CheckPart(const OptionDescription& option, const std::string& value) {
  constexpr std::string_view kAllowed =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_.:+-";
  const std::size_t sign = value.find('@');
  CheckPlain(option, std::string_view(value).substr(0, sign));
  if (sign != std::string::npos &&
      value.find_first_not_of(kAllowed, sign + 1) != std::string::npos) {
    throw Refusal(Format("{}: {} has another character than letters, digits and _ . : + - after @",
                         NameOf(option), Quoted(value)),
                  "Give the place as a number or as region:NAME.");
  }
}

// Checks an operand of `reg diff`: a file name, or another source with a prefix.
void CheckSource(const OptionDescription& option, const std::string& value) {
  constexpr std::string_view kPreset = "preset:";
  if (value == "camera" || value == "reset" || value.starts_with("camera:")) {
    return;
  }
  CheckPlain(option, value.starts_with(kPreset) ? std::string_view(value).substr(kPreset.size())
                                                : std::string_view(value));
}

void CheckJournal(const OptionDescription& option, const std::string& value,
                  const WordLimits& limits) {
  const std::string& folder = limits.journal_folder;
  const bool in_folder =
      !folder.empty() && value.size() > folder.size() + 1 && value.starts_with(folder) &&
      (value[folder.size()] == '/' || value[folder.size()] == '\\') &&
      ProblemOfPlainName(std::string_view(value).substr(folder.size() + 1)).empty();
  if (value != "none" && !in_folder) {
    throw Refusal(Format("{}: {} is not in the folder of journals", NameOf(option), Quoted(value)),
                  "Give the name that the message shows, or none.");
  }
}

void CheckValue(const std::string& command, const OptionDescription& option,
                const std::string& value, const WordLimits& limits) {
  const std::string name = NameOf(option);
  if (name == "--journal") {
    CheckJournal(option, value, limits);
    // NOLINTNEXTLINE(bugprone-branch-clone): each case has a reason of its own
  } else if (command.starts_with("preset ") && name == "NAME") {
    CheckPlain(option, value);
  } else if (command.ends_with(" diff") && (name == "A" || name == "B")) {
    CheckSource(option, value);
  } else if (option.takes_file && option.positional && command.starts_with("flash ")) {
    CheckPart(option, value);
  } else if (option.takes_file) {
    CheckPlain(option, value);
  }
}

bool IsGiven(const SortedWords& words, std::string_view name) {
  const auto& options = words.described->options;
  for (std::size_t i = 0; i < options.size(); ++i) {
    if (std::ranges::find(options[i].names, name) != options[i].names.end()) {
      return !words.own[i].empty();
    }
  }
  return false;
}

bool Writes(const PageCommand& command, const SortedWords& words) {
  switch (command.effect) {
    case kReads:
      return false;
    case kWritesWithValue:
      return IsGiven(words, "VALUE");
    case kWritesUnlessDryRun:
      return !IsGiven(words, "--dry-run");
    case kWrites:
      break;
  }
  return true;
}

bool Takes(const CommandDescription& command, std::string_view option) {
  return std::ranges::none_of(command.refused,
                              [&](const RefusedOption& refused) { return refused.name == option; });
}

void CheckCommon(const ToolDescription& tool, const SortedWords& words) {
  for (std::size_t i = 0; i < tool.common.size(); ++i) {
    const std::string name = NameOf(tool.common[i]);
    if (!words.common[i].empty() &&
        std::ranges::find(kCommonAllowed, name) == kCommonAllowed.end()) {
      throw Refusal(Format("{}: the workbench does not take this option from a page", name),
                    "Remove it; the workbench sets it.");
    }
  }
}

}  // namespace

std::span<const PageCommand> PageCommands() {
  return kCommands;
}

AcceptedWords AcceptWords(const ToolDescription& tool, const std::vector<std::string>& words,
                          const WordLimits& limits) {
  CheckSizes(words);
  const SortedWords sorted = SortWords(tool, words);
  const std::string name = Joined(sorted.command);
  const PageCommand& command = PageCommandOf(name);
  CheckCommon(tool, sorted);
  if (sorted.described == nullptr) {
    throw Refusal(Format("{}: is not possible in the workbench", name),
                  "Run it on the command line.");
  }
  const auto& options = sorted.described->options;
  for (std::size_t i = 0; i < options.size(); ++i) {
    if (!sorted.own[i].empty() &&
        std::ranges::find(kOwnRefused, NameOf(options[i])) != kOwnRefused.end()) {
      throw Refusal(Format("{}: {} is not possible in the workbench", name, NameOf(options[i])),
                    "Run the command once for each camera.");
    }
    for (const std::string& value : sorted.own[i]) {
      CheckValue(name, options[i], value, limits);
    }
  }
  if (limits.read_only && Writes(command, sorted)) {
    throw Refusal(
        Format("{}: the workbench was started with --read-only; nothing is written", name),
        "Start it without --read-only.");
  }
  AcceptedWords accepted;
  accepted.streams = command.streams;
  accepted.takes_camera = Takes(*sorted.described, "--camera");
  accepted.takes_profile = Takes(*sorted.described, "--profile");
  accepted.added.emplace_back("--json");
  if (Takes(*sorted.described, "--progress")) {
    accepted.added.insert(accepted.added.end(), {"--progress", "json"});
  }
  return accepted;
}

}  // namespace borvanusb
