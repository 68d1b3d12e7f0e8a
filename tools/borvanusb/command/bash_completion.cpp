#include <algorithm>

#include "base/joined.h"
#include "command/completion_scripts.h"

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
  std::string pattern = "\"";
  pattern += Joined(command.words);
  pattern += ' ';
  pattern += rest;
  pattern += '"';
  return pattern;
}

// What bash is to offer for a value: a list, files, or nothing.
std::string Offer(const OptionDescription& option) {
  if (!option.choices.empty()) {
    return "_borvanusb_words \"" + Joined(option.choices) + "\"";
  }
  return option.takes_file ? "_borvanusb_files" : ":";
}

// The branch of a `case` that offers an option's values.
std::string ValueBranch(const std::string& pattern, const OptionDescription& option) {
  return "    " + pattern + ") " + Offer(option) + "; return ;;\n";
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
        second += (second.empty() ? "" : " ") + other.words[1];
      }
    }
    if (!second.empty()) {
      branches += "    \"" + first.back() + "\") _borvanusb_words \"" + second + "\"; return ;;\n";
    }
  }
  return "    \"\") _borvanusb_words \"" + Joined(first) + "\"; return ;;\n" + branches;
}

std::string Groups(const ToolDescription& tool) {
  std::string groups;
  for (const CommandDescription& command : tool.commands) {
    const std::string& word = command.words.front();
    if (command.words.size() > 1 && !groups.ends_with(word)) {
      groups += (groups.empty() ? "" : "|") + word;
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
    pattern += (pattern.empty() ? "" : "|") + name;
  }
  return pattern;
}

std::string OptionValueBranches(const ToolDescription& tool) {
  std::string branches;
  for (const OptionDescription& option : tool.common) {
    if (!option.value.empty()) {
      branches += ValueBranch("*\" \"" + option.names.back(), option);
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
      branches += "    \"";
      branches += Joined(command.words);
      branches += "\") options=\"";
      branches += own;
      branches += own.empty() ? "" : " ";
      branches += common;
      branches += "\" ;;\n";
    }
  }
  return branches;
}

constexpr const char* kHelpers = R"(# bash completion of borvanusb.

_borvanusb_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current")
}

_borvanusb_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$current")
}

)";

// bash takes --option=value apart into three words, and vid:pid likewise.
constexpr const char* kPreviousWord = R"(  if [ "$current" = "=" ]; then
    current=""
  elif [ "$previous" = "=" ] && [ "$COMP_CWORD" -ge 2 ]; then
    previous="${COMP_WORDS[COMP_CWORD-2]}"
  fi
)";

}  // namespace

std::string BashCompletion(const ToolDescription& tool) {
  std::string script = kHelpers;
  script +=
      "_borvanusb() {\n"
      "  local current=\"${COMP_WORDS[COMP_CWORD]}\" previous=\"${COMP_WORDS[COMP_CWORD-1]}\"\n"
      "  local command=\"\" complete=\"\" arguments=0 skip=\"\" word place options\n"
      "  COMPREPLY=()\n";
  script += kPreviousWord;
  script +=
      "  for ((place = 1; place < COMP_CWORD; ++place)); do\n"
      "    word=\"${COMP_WORDS[place]}\"\n"
      "    if [ \"$word\" = \"=\" ] || [ \"$word\" = \":\" ]; then\n"
      "      skip=yes\n"
      "    elif [ -n \"$skip\" ]; then\n"
      "      skip=\"\"\n"
      "    else\n"
      "      case \"$word\" in\n"
      "        " +
      PatternOfOptionsWithValues(tool) +
      ") skip=yes ;;\n"
      "        -*) ;;\n"
      "        *)\n"
      "          if [ -n \"$complete\" ]; then\n"
      "            arguments=$((arguments + 1))\n"
      "          else\n"
      "            command=\"${command:+$command }$word\"\n"
      "            case \"$command\" in\n"
      "              " +
      Groups(tool) +
      ") ;;\n"
      "              *) complete=yes ;;\n"
      "            esac\n"
      "          fi\n"
      "          ;;\n"
      "      esac\n"
      "    fi\n"
      "  done\n"
      "  case \"$command $previous\" in\n" +
      OptionValueBranches(tool) +
      "  esac\n"
      "  if [[ \"$current\" == -* ]]; then\n"
      "    options=\"" +
      OptionWords(tool.common) +
      "\"\n"
      "    case \"$command\" in\n" +
      CommandOptionBranches(tool) +
      "    esac\n"
      "    _borvanusb_words \"$options\"\n"
      "    return\n"
      "  fi\n"
      "  case \"$command\" in\n" +
      NextWordBranches(tool) +
      "  esac\n"
      "  case \"$command $arguments\" in\n" +
      ArgumentBranches(tool) +
      "  esac\n"
      "}\n"
      "\n"
      "complete -F _borvanusb borvanusb borvanusb.exe\n";
  return script;
}

}  // namespace borvanusb
