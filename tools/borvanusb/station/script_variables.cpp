#include "station/script_variables.h"

#include <algorithm>
#include <string_view>

#include "base/failure.h"
#include "base/format.h"
#include "command/values.h"

namespace borvanusb {

namespace {

constexpr std::string_view kOpening = "${";
constexpr std::string_view kEscaped = "$${";

bool IsName(std::string_view text) {
  return !text.empty() && (text.front() < '0' || text.front() > '9') &&
         std::ranges::all_of(text, [](char character) {
           return (character >= '0' && character <= '9') ||
                  (character >= 'A' && character <= 'Z') ||
                  (character >= 'a' && character <= 'z') || character == '_';
         });
}

}  // namespace

std::vector<std::string> ScriptVariables::Expand(std::vector<std::string> words) {
  for (std::string& word : words) {
    word = Expand(word);
  }
  return words;
}

std::string ScriptVariables::Expand(const std::string& word) {
  std::string text;
  std::string_view rest = word;
  while (!rest.empty()) {
    if (rest.starts_with(kEscaped)) {
      text += kOpening;
      rest.remove_prefix(kEscaped.size());
    } else if (rest.starts_with(kOpening)) {
      const std::size_t end = rest.find('}');
      if (end == std::string_view::npos) {
        throw Failure(ExitCode::kUsage, Format("{}: ${{ is not closed", Quoted(word)),
                      "A variable is ${NAME}; write $${ for the characters ${.");
      }
      text += ValueOf(std::string(rest.substr(kOpening.size(), end - kOpening.size())));
      rest.remove_prefix(end + 1);
    } else {
      text += rest.front();
      rest.remove_prefix(1);
    }
  }
  return text;
}

const std::string& ScriptVariables::ValueOf(const std::string& name) {
  const auto value = values_.find(name);
  if (value == values_.end()) {
    throw Failure(ExitCode::kUsage, Format("the variable {} is not set", Quoted(name)),
                  "Give its value with --set NAME=VALUE; write $${ for the characters ${.");
  }
  used_.insert(name);
  return value->second;
}

std::vector<std::string> ScriptVariables::Unused() const {
  std::vector<std::string> unused;
  for (const auto& [name, value] : values_) {
    if (!used_.contains(name)) {
      unused.push_back(name);
    }
  }
  return unused;
}

std::pair<std::string, std::string> VariableValue(const std::string& text) {
  const std::size_t sign = text.find('=');
  if (sign == std::string::npos || !IsName(text.substr(0, sign))) {
    throw WrongValue(
        "is not a valid variable: NAME=VALUE, where NAME has letters, digits and _ and does not "
        "begin with a digit");
  }
  return {text.substr(0, sign), text.substr(sign + 1)};
}

}  // namespace borvanusb
