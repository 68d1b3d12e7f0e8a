// Any command line: the result is a command, a text for a terminal, or a one-line error that names
// the argument. In the input, words are separated by zero bytes.

#include "command/command_line.h"

#include <algorithm>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "base/failure.h"
#include "command/values.h"
#include "support/check.h"
#include "support/terminal_text.h"

namespace {
using namespace borvanusb;

using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;
using borvan_fuzz::CheckOneLine;

using Words = std::vector<std::string>;

constexpr std::size_t kColumns = 80;

const ToolDescription& Tool() {
  static const auto& tool = *new ToolDescription(DescribeTool());
  return tool;
}

Words WordsOf(const std::string& text) {
  Words words;
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find('\0', begin), text.size());
    words.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return words;
}

void CheckText(const std::string& text) {
  Check(text.ends_with('\n'), "a text ends in the middle of a line");
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = text.find('\n', begin);
    const std::string line = text.substr(begin, end - begin);
    if (!line.empty()) {
      CheckOneLine(line, "a line of a text");
    }
    Check(line.size() <= kColumns, "a text is wider than 80 columns: " + line);
    begin = end + 1;
  }
}

// All names that a message may start with.
Words Names() {
  Words names;
  const auto add = [&](const std::vector<OptionDescription>& options) {
    for (const OptionDescription& option : options) {
      names.insert(names.end(), option.names.begin(), option.names.end());
    }
  };
  add(Tool().common);
  for (const CommandDescription& command : Tool().commands) {
    names.push_back(command.words.front());
    add(command.options);
  }
  return names;
}

bool NamesAnArgument(const std::string& message, const Words& words) {
  static const auto& names = *new Words(Names());
  const auto stands_in_it = [&](const std::string& name) {
    return message.find(name) != std::string::npos;
  };
  if (words.empty()) {
    return stands_in_it("a command is missing");
  }
  return std::any_of(names.begin(), names.end(), stands_in_it) ||
         std::any_of(words.begin(), words.end(), [&](const std::string& word) {
           return stands_in_it(Quoted(word)) ||
                  stands_in_it(Quoted(word.substr(0, word.find('='))));
         });
}

void CheckFailure(const Failure& failure, const Words& words) {
  CheckEqual(static_cast<std::uint64_t>(failure.Code()),
             static_cast<std::uint64_t>(ExitCode::kUsage), "the code of a wrong command line");
  CheckOneLine(failure.Message(), "the message");
  // One line for each suggestion.
  std::istringstream hint(failure.Hint());
  for (std::string line; std::getline(hint, line);) {
    CheckOneLine(line, "a line of the hint");
  }
  Check(!failure.Hint().empty(), "the hint is empty");
  Check(NamesAnArgument(failure.Message(), words),
        "the message names no argument: " + failure.Message());
}

// Options of all commands may be given before and after the command's words.
void CheckPlaceOfCommonOptions(Words words, const Arguments& arguments) {
  if (std::find(words.begin(), words.end(), "--") != words.end()) {
    return;
  }
  for (const bool in_front : {true, false}) {
    Words more = words;
    more.insert(in_front ? more.begin() : more.end(), "--json");
    const auto outcome = ParseCommandLine(more);
    const auto* const same = std::get_if<Arguments>(&outcome);
    Check(same != nullptr && same->common.json, "--json is not taken");
    CheckEqual(same->words, arguments.words, "--json changes the command");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Words words = WordsOf(std::string(data, data + size));
  try {
    const auto outcome = ParseCommandLine(words);
    if (const auto* const answer = std::get_if<TextAnswer>(&outcome)) {
      CheckText(answer->text);
      return 0;
    }
    const auto& arguments = std::get<Arguments>(outcome);
    const std::string& command = arguments.words;
    Check(std::any_of(Tool().commands.begin(), Tool().commands.end(),
                      [&](const CommandDescription& known) {
                        return command.starts_with(known.words.front());
                      }),
          "a command that the tool does not have");
    Check(arguments.common.timeout.count() > 0, "a timeout that is over at once");
    CheckPlaceOfCommonOptions(words, arguments);
  } catch (const Failure& failure) {
    CheckFailure(failure, words);
  }
  return 0;
}
