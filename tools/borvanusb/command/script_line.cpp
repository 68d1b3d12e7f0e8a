// Splits a line into words, and joins words to a line.
#include <algorithm>
#include <string_view>

#include "base/failure.h"
#include "base/format.h"
#include "command/command_line.h"
#include "command/values.h"

namespace borvanusb {

std::vector<std::string> SplitLine(const std::string& line) {
  std::vector<std::string> words;
  std::string word;
  bool in_word = false;
  bool in_quotes = false;
  std::size_t quote = 0;
  for (std::size_t place = 0; place < line.size(); ++place) {
    const char character = line[place];
    const bool blank =
        character == ' ' || character == '\t' || character == '\r' || character == '\n';
    if (character == '"') {
      // "" is an empty word.
      in_word = true;
      in_quotes = !in_quotes;
      quote = place;
    } else if (in_quotes || (!blank && (in_word || character != '#'))) {
      in_word = true;
      word += character;
    } else if (in_word) {
      words.push_back(word);
      word.clear();
      in_word = false;
    }
    if (character == '#' && !in_word) {
      break;
    }
  }
  if (in_quotes) {
    throw Failure(ExitCode::kUsage,
                  Format("the quote before {} is never closed", Quoted(line.substr(quote + 1))),
                  "Close it with another \"; a quoted text can't contain a quote.");
  }
  if (in_word) {
    words.push_back(word);
  }
  return words;
}

std::string CommandLineText(const std::vector<std::string>& words) {
  return Format("borvanusb{}{}", words.empty() ? "" : " ", LineText(words));
}

std::string LineText(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    const bool plain = !word.empty() && std::ranges::all_of(word, [](char character) {
      return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
             (character >= 'a' && character <= 'z') ||
             std::string_view("-_./:,+").find(character) != std::string_view::npos;
    });
    text += Format("{}{}{}{}", text.empty() ? "" : " ", plain ? "" : "\"", word, plain ? "" : "\"");
  }
  return text;
}

}  // namespace borvanusb
