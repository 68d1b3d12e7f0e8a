#include "command/completion_branches.h"

#include <algorithm>

#include "base/format.h"
#include "base/joined.h"

namespace borvanusb {

namespace {

// The action that offers an option's values: a list, files, names in a profile, or nothing.
std::string Offer(const OptionDescription& option) {
  if (!option.choices.empty()) {
    return Format("_borvanusb_words \"{}\"", Joined(option.choices));
  }
  const std::string names = NamesTakenBy(option);
  if (!names.empty()) {
    return Format("_borvanusb_names {}", names);
  }
  return option.takes_file ? "_borvanusb_files" : ":";
}

std::string Words(const CommandDescription& command, const std::string& rest) {
  return Format("{} {}", Joined(command.words), rest);
}

}  // namespace

std::string NamesTakenBy(const OptionDescription& option) {
  // In every command, --region takes a region's name.
  return option.names.back() == "--region" ? "regions" : option.completes;
}

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

std::string OptionsWithValues(const ToolDescription& tool, const std::string& between) {
  std::vector<std::string> names;
  const auto add = [&](const std::vector<OptionDescription>& options) {
    for (const OptionDescription& option : options) {
      if (!option.positional && !option.value.empty() &&
          std::ranges::find(names, option.names.back()) == names.end()) {
        names.push_back(option.names.back());
      }
    }
  };
  add(tool.common);
  for (const CommandDescription& command : tool.commands) {
    add(command.options);
  }
  return Joined(names, between);
}

std::string Groups(const ToolDescription& tool, const std::string& between) {
  std::vector<std::string> groups;
  for (const CommandDescription& command : tool.commands) {
    const std::string& word = command.words.front();
    if (command.words.size() > 1 && std::ranges::find(groups, word) == groups.end()) {
      groups.push_back(word);
    }
  }
  return Joined(groups, between);
}

std::string NextWordBranches(const ToolDescription& tool, const BranchForm& form) {
  std::vector<std::string> first;
  std::string branches;
  for (const CommandDescription& command : tool.commands) {
    if (std::ranges::find(first, command.words.front()) != first.end()) {
      continue;
    }
    first.push_back(command.words.front());
    std::vector<std::string> second;
    for (const CommandDescription& other : tool.commands) {
      if (other.words.size() > 1 && other.words.front() == command.words.front()) {
        second.push_back(other.words[1]);
      }
    }
    if (!second.empty()) {
      branches += form.branch(form.pattern(first.back()),
                              Format("_borvanusb_words \"{}\"", Joined(second)));
    }
  }
  return form.branch(form.pattern(""), Format("_borvanusb_words \"{}\"", Joined(first))) + branches;
}

std::string OptionValueBranches(const ToolDescription& tool, const BranchForm& form) {
  std::string branches;
  for (const OptionDescription& option : tool.common) {
    if (!option.value.empty()) {
      branches += form.branch(form.pattern(Format("* {}", option.names.back())), Offer(option));
    }
  }
  for (const CommandDescription& command : tool.commands) {
    for (const OptionDescription& option : command.options) {
      if (!option.positional && !option.value.empty()) {
        branches += form.branch(form.pattern(Words(command, option.names.back())), Offer(option));
      }
    }
  }
  return branches;
}

std::string ArgumentBranches(const ToolDescription& tool, const BranchForm& form) {
  std::string branches;
  for (const CommandDescription& command : tool.commands) {
    int place = 0;
    for (const OptionDescription& option : command.options) {
      if (option.positional) {
        const std::string where = option.repeated ? "*" : std::to_string(place);
        branches += form.branch(form.pattern(Words(command, where)), Offer(option));
        ++place;
      }
    }
  }
  return branches;
}

std::string CommandOptionBranches(const ToolDescription& tool, const BranchForm& form) {
  std::string branches;
  for (const CommandDescription& command : tool.commands) {
    const std::string own = OptionWords(command.options);
    const bool takes_all = command.refused.empty();
    const std::string common = takes_all ? "$options" : OptionWords(CommonOptionsOf(tool, command));
    if (!own.empty() || !takes_all) {
      branches += form.assign(form.pattern(Joined(command.words)),
                              Format("{}{}{}", own, own.empty() ? "" : " ", common));
    }
  }
  return branches;
}

}  // namespace borvanusb
