#include "command/complete_line.h"

#include <algorithm>
#include <utility>

#include "base/files.h"
#include "base/folders.h"
#include "base/format.h"
#include "command/completion_branches.h"

namespace borvanusb {

namespace {

using WordList = std::vector<std::string>;

// The words before the last one, and the last one, which may be empty.
struct SplitUp {
  WordList before;
  std::string last;
  std::size_t begin = 0;
};

SplitUp Split(const std::string& line) {
  SplitUp split;
  bool in_word = false;
  bool in_quotes = false;
  split.begin = line.size();
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char character = line[i];
    const bool blank = character == ' ' || character == '\t';
    if (blank && !in_quotes) {
      if (in_word) {
        split.before.push_back(std::exchange(split.last, {}));
      }
      in_word = false;
      split.begin = line.size();
      continue;
    }
    split.begin = in_word ? split.begin : i;
    in_word = true;
    if (character == '"') {
      in_quotes = !in_quotes;
    } else {
      split.last += character;
    }
  }
  return split;
}

// Formats a word for a line. For a folder, the quote stays open, because a file name follows.
std::string InLine(const std::string& word) {
  if (word.find_first_of(" \t#") == std::string::npos) {
    return word;
  }
  return Format("\"{}{}", word, word.ends_with('/') ? "" : "\"");
}

WordList BeginningWith(const std::string& text, const WordList& words) {
  WordList found;
  for (const std::string& word : words) {
    if (word.starts_with(text) && std::ranges::find(found, word) == found.end()) {
      found.push_back(word);
    }
  }
  return found;
}

WordList Files(const std::string& text) {
  const std::size_t slash = text.find_last_of("/\\");
  const std::string folder = slash == std::string::npos ? "" : text.substr(0, slash + 1);
  WordList files;
  for (const std::string& name : FilesIn(folder.empty() ? "." : folder)) {
    files.push_back(Format("{}{}{}", folder, name, IsFolder(folder + name) ? "/" : ""));
  }
  return BeginningWith(text, files);
}

// The state after parsing the line so far.
class Reader {
 public:
  Reader(const ToolDescription& tool, const NameSource& names)
      : tool_(tool), names_(names), options_(tool.common) {}

  void Take(const std::string& word) {
    if (waiting_ != nullptr) {
      waiting_ = nullptr;
    } else if (word.size() > 1 && word.starts_with('-')) {
      const OptionDescription* const option = FindOption(options_, word);
      waiting_ = option != nullptr && !option->value.empty() ? option : nullptr;
    } else if (command_ == nullptr) {
      words_.push_back(word);
      FindCommand();
    } else {
      ++arguments_;
    }
  }

  WordList Candidates(const std::string& text) const {
    if (waiting_ != nullptr) {
      return Values(*waiting_, text);
    }
    if (text.starts_with('-')) {
      return OptionWords(text);
    }
    return command_ == nullptr ? NextWords(text) : Argument(text);
  }

 private:
  WordList Values(const OptionDescription& option, const std::string& text) const {
    if (!option.choices.empty()) {
      return BeginningWith(text, option.choices);
    }
    const std::string kind = NamesTakenBy(option);
    WordList values = names_ && !kind.empty() ? names_(kind, text) : WordList();
    if (option.takes_file) {
      const WordList files = Files(text);
      values.insert(values.end(), files.begin(), files.end());
    }
    return values;
  }

  void FindCommand() {
    for (const CommandDescription& command : tool_.commands) {
      if (command.words == words_) {
        command_ = &command;
        options_ = command.options;
        const std::vector<OptionDescription> common = CommonOptionsOf(tool_, command);
        options_.insert(options_.end(), common.begin(), common.end());
      }
    }
  }

  WordList OptionWords(const std::string& text) const {
    const std::size_t sign = text.find('=');
    if (sign != std::string::npos) {
      const OptionDescription* const option = FindOption(options_, text.substr(0, sign));
      WordList values = option != nullptr ? Values(*option, text.substr(sign + 1)) : WordList();
      for (std::string& value : values) {
        value.insert(0, text, 0, sign + 1);
      }
      return values;
    }
    WordList names;
    for (const OptionDescription& option : options_) {
      if (!option.positional) {
        names.insert(names.end(), option.names.begin(), option.names.end());
      }
    }
    return BeginningWith(text, names);
  }

  WordList NextWords(const std::string& text) const {
    WordList next;
    for (const CommandDescription& command : tool_.commands) {
      if (command.words.size() > words_.size() &&
          std::equal(words_.begin(), words_.end(), command.words.begin())) {
        next.push_back(command.words[words_.size()]);
      }
    }
    return BeginningWith(text, next);
  }

  WordList Argument(const std::string& text) const {
    std::size_t place = 0;
    for (const OptionDescription& option : command_->options) {
      if (option.positional && (place++ == arguments_ || option.repeated)) {
        return Values(option, text);
      }
    }
    return {};
  }

  const ToolDescription& tool_;
  const NameSource& names_;
  WordList words_;
  const CommandDescription* command_ = nullptr;
  std::vector<OptionDescription> options_;
  const OptionDescription* waiting_ = nullptr;  // the option that expects a value next
  std::size_t arguments_ = 0;
};

}  // namespace

bool LineCompletion::IsOpen(const std::string& candidate) {
  return candidate.ends_with('/') || candidate.ends_with('=');
}

LineCompletion CompleteLine(const ToolDescription& tool, const std::string& line,
                            const NameSource& names) {
  const SplitUp split = Split(line);
  Reader reader(tool, names);
  for (const std::string& word : split.before) {
    reader.Take(word);
  }
  LineCompletion completion{split.begin, reader.Candidates(split.last)};
  std::ranges::sort(completion.candidates);
  for (std::string& candidate : completion.candidates) {
    candidate = InLine(candidate);
  }
  return completion;
}

std::string CommonBeginning(const std::vector<std::string>& texts) {
  if (texts.empty()) {
    return {};
  }
  std::size_t length = texts.front().size();
  for (const std::string& text : texts) {
    const auto differ = std::ranges::mismatch(texts.front(), text);
    length =
        std::min<std::size_t>(length, static_cast<std::size_t>(differ.in1 - texts.front().begin()));
  }
  const auto in_character = [&] {
    return length > 0 && length < texts.front().size() &&
           (static_cast<unsigned char>(texts.front()[length]) & 0xC0U) == 0x80U;
  };
  while (in_character()) {
    --length;
  }
  return texts.front().substr(0, length);
}

}  // namespace borvanusb
