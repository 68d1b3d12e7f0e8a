#include <algorithm>

#include "base/format.h"
#include "base/joined.h"
#include "command/completion_scripts.h"
#include "command/templates.h"

namespace borvanusb {

namespace {

// The words of `options` that begin with a dash.
std::string OptionWords(const std::vector<OptionDescription>& options) {
  std::string words;
  for (const OptionDescription& option : options) {
    if (!option.positional) {
      words += words.empty() ? "" : " ";
      words += Joined(option.names);
    }
  }
  return words;
}

// A text in double quotes: a command's words and what follows them.
std::string Pattern(const CommandDescription& command, const std::string& rest) {
  return Format("\"{} {}\"", Joined(command.words), rest);
}

// What bash is to offer for a value: a list, files, or nothing.
std::string Offer(const OptionDescription& option) {
  if (!option.choices.empty()) {
    return Format("_borvanusb_words \"{}\"", Joined(option.choices));
  }
  return option.takes_file ? "_borvanusb_files" : ":";
}

// The branch of a `case` that offers an option's values.
std::string ValueBranch(const std::string& pattern, const OptionDescription& option) {
  return Format("    {}) {}; return ;;\n", pattern, Offer(option));
}

// The commands, then their first words: what may follow the words so far.
std::string NextWordBranches(const ToolDescription& tool) {
  std::vector<std::string> first;
  std::string branches;
  for (const CommandDescription& command : tool.commands) {
    if (std::find(first.begin(), first.end(), command.words.front()) != first.end()) {
      continue;
    }
    first.push_back(command.words.front());
    std::string second;
    for (const CommandDescription& other : tool.commands) {
      if (other.words.size() > 1 && other.words.front() == command.words.front()) {
        second += Format("{}{}", second.empty() ? "" : " ", other.words[1]);
      }
    }
    if (!second.empty()) {
      branches += Format("    \"{}\") _borvanusb_words \"{}\"; return ;;\n", first.back(), second);
    }
  }
  return Format("    \"\") _borvanusb_words \"{}\"; return ;;\n{}", Joined(first), branches);
}

std::string Groups(const ToolDescription& tool) {
  std::string groups;
  for (const CommandDescription& command : tool.commands) {
    const std::string& word = command.words.front();
    if (command.words.size() > 1 && !groups.ends_with(word)) {
      groups += Format("{}{}", groups.empty() ? "" : "|", word);
    }
  }
  return groups;
}

std::string PatternOfOptionsWithValues(const ToolDescription& tool) {
  std::vector<std::string> names;
  const auto add = [&](const std::vector<OptionDescription>& options) {
    for (const OptionDescription& option : options) {
      if (!option.positional && !option.value.empty() &&
          std::find(names.begin(), names.end(), option.names.back()) == names.end()) {
        names.push_back(option.names.back());
      }
    }
  };
  add(tool.common);
  for (const CommandDescription& command : tool.commands) {
    add(command.options);
  }
  std::string pattern;
  for (const std::string& name : names) {
    pattern += Format("{}{}", pattern.empty() ? "" : "|", name);
  }
  return pattern;
}

std::string OptionValueBranches(const ToolDescription& tool) {
  std::string branches;
  for (const OptionDescription& option : tool.common) {
    if (!option.value.empty()) {
      branches += ValueBranch(Format("*\" \"{}", option.names.back()), option);
    }
  }
  for (const CommandDescription& command : tool.commands) {
    for (const OptionDescription& option : command.options) {
      if (!option.positional && !option.value.empty()) {
        branches += ValueBranch(Pattern(command, option.names.back()), option);
      }
    }
  }
  return branches;
}

std::string ArgumentBranches(const ToolDescription& tool) {
  std::string branches;
  for (const CommandDescription& command : tool.commands) {
    int place = 0;
    for (const OptionDescription& option : command.options) {
      if (option.positional) {
        branches += ValueBranch(Pattern(command, std::to_string(place)), option);
        ++place;
      }
    }
  }
  return branches;
}

std::string CommandOptionBranches(const ToolDescription& tool) {
  std::string branches;
  for (const CommandDescription& command : tool.commands) {
    const std::string own = OptionWords(command.options);
    const bool takes_all = command.refused.empty();
    const std::string common = takes_all ? "$options" : OptionWords(CommonOptionsOf(tool, command));
    if (!own.empty() || !takes_all) {
      branches += Format("    \"{}\") options=\"{}{}{}\" ;;\n", Joined(command.words), own,
                         own.empty() ? "" : " ", common);
    }
  }
  return branches;
}

}  // namespace

// The script joins what bash takes apart: --option=value into three words, and vid:pid likewise.
std::string BashCompletion(const ToolDescription& tool) {
  return Filled(kBashCompletionTemplate, {{"OPTIONS_WITH_VALUES", PatternOfOptionsWithValues(tool)},
                                          {"GROUPS", Groups(tool)},
                                          {"OPTION_VALUES", OptionValueBranches(tool)},
                                          {"COMMON_OPTIONS", OptionWords(tool.common)},
                                          {"COMMAND_OPTIONS", CommandOptionBranches(tool)},
                                          {"NEXT_WORDS", NextWordBranches(tool)},
                                          {"ARGUMENT_VALUES", ArgumentBranches(tool)}});
}

}  // namespace borvanusb
