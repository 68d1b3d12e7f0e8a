#include "command/word_sorter.h"
#include "base/joined.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>

#include "base/failure.h"

namespace borvanusb {

namespace {

constexpr const char* kHint = "borvanusb --help tells more.";

std::string HelpHint(const CommandDescription* command) {
  return command != nullptr ? "borvanusb " + Joined(command->words) + " --help tells more." : kHint;
}

CLI::Option* AddTo(CLI::App& app, const OptionDescription& option, std::size_t place) {
  if (option.positional) {
    // The name that people read may hold brackets, which is no name here.
    return app.add_option("argument" + std::to_string(place));
  }
  if (option.value.empty()) {
    return app.add_flag(Joined(option.names, ","))->disable_flag_override();
  }
  return app.add_option(Joined(option.names, ","))
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false);
}

std::vector<CLI::Option*> AddAll(CLI::App& app, const std::vector<OptionDescription>& options) {
  std::vector<CLI::Option*> added;
  for (std::size_t place = 0; place < options.size(); ++place) {
    added.push_back(AddTo(app, options[place], place));
  }
  return added;
}

std::vector<std::vector<std::string>> ValuesOf(const std::vector<CLI::Option*>& options) {
  std::vector<std::vector<std::string>> values;
  values.reserve(options.size());
  for (const CLI::Option* const option : options) {
    values.push_back(option->results());
  }
  return values;
}

const OptionDescription* FindOption(const std::vector<OptionDescription>& options,
                                    const std::string& name) {
  for (const OptionDescription& option : options) {
    if (std::find(option.names.begin(), option.names.end(), name) != option.names.end()) {
      return &option;
    }
  }
  return nullptr;
}

const OptionDescription* FindOption(const ToolDescription& tool, const std::string& name) {
  const OptionDescription* option = FindOption(tool.common, name);
  for (const CommandDescription& command : tool.commands) {
    option = option != nullptr ? option : FindOption(command.options, name);
  }
  return option;
}

// The parser gives the next word to an option that is followed by = and nothing. An option that
// there isn't is told as such, by what comes later.
void RefuseEmptyAfterSign(const ToolDescription& tool, const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    if (word == "--") {
      return;
    }
    const std::string name = word.substr(0, word.find('='));
    const OptionDescription* const option = FindOption(tool, name);
    if (word == name + "=" && option != nullptr) {
      const char* const why =
          option->value.empty() ? ": takes no value" : ": a value is missing after the =";
      throw Failure(ExitCode::kUsage, name + why, kHint);
    }
  }
}

// The parser's complaints name the option first. Options of one name mean other things to other
// commands, so the command that is given counts.
[[noreturn]] void Complain(const ToolDescription& tool, const CommandDescription* command,
                           const std::string& complaint) {
  std::string name = complaint.substr(0, complaint.find_first_of(": ,="));
  if (!name.starts_with('-')) {
    name = "--" + name;
  }
  const OptionDescription* option =
      command != nullptr ? FindOption(command->options, name) : nullptr;
  if (option == nullptr) {
    option = FindOption(tool.common, name);
  }
  const std::string hint = HelpHint(command);
  if (option == nullptr) {
    throw Failure(ExitCode::kUsage, complaint, hint);
  }
  const std::string why = option->value.empty()
                              ? ": takes no value"
                              : ": " + option->value + " is missing: " + option->text;
  throw Failure(ExitCode::kUsage, name + why, hint);
}

// The words of the command that the parser has seen.
std::vector<std::string> CommandOf(const CLI::App& root) {
  std::vector<std::string> words;
  const CLI::App* app = &root;
  while (!app->get_subcommands().empty()) {
    app = app->get_subcommands().front();
    words.push_back(app->get_name());
  }
  return words;
}

const CommandDescription* FindCommand(const ToolDescription& tool,
                                      const std::vector<std::string>& words) {
  const auto command =
      std::find_if(tool.commands.begin(), tool.commands.end(),
                   [&](const CommandDescription& known) { return known.words == words; });
  return command != tool.commands.end() ? &*command : nullptr;
}

}  // namespace

SortedWords SortWords(const ToolDescription& tool, const std::vector<std::string>& words) {
  RefuseEmptyAfterSign(tool, words);
  CLI::App root;
  root.set_help_flag();
  root.allow_windows_style_options(false);
  root.allow_extras();
  root.fallthrough();
  root.require_subcommand(0, 1);
  const std::vector<CLI::Option*> common = AddAll(root, tool.common);
  std::vector<std::vector<CLI::Option*>> own;
  std::map<std::string, CLI::App*> groups;
  for (const CommandDescription& command : tool.commands) {
    CLI::App* app = &root;
    std::string path;
    for (const std::string& word : command.words) {
      path += " " + word;
      CLI::App*& deeper = groups[path];
      if (deeper == nullptr) {
        deeper = app->add_subcommand(word)->require_subcommand(0, 1);
      }
      app = deeper;
    }
    own.push_back(AddAll(*app, command.options));
  }
  try {
    root.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::ParseError& error) {
    Complain(tool, FindCommand(tool, CommandOf(root)), error.what());
  }
  SortedWords sorted;
  sorted.command = CommandOf(root);
  sorted.described = FindCommand(tool, sorted.command);
  if (sorted.described != nullptr) {
    sorted.own = ValuesOf(own[static_cast<std::size_t>(sorted.described - tool.commands.data())]);
  }
  sorted.common = ValuesOf(common);
  sorted.strange = root.remaining(true);
  // The mark that only arguments follow.
  const auto mark = std::find(sorted.strange.begin(), sorted.strange.end(), "--");
  if (mark != sorted.strange.end()) {
    sorted.strange.erase(mark);
  }
  return sorted;
}

}  // namespace borvanusb
