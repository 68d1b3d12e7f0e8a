#pragma once

// Variables of scripts: ${NAME} is replaced by a value from the command line.

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace borvanusb {

class ScriptVariables {
 public:
  ScriptVariables() = default;
  explicit ScriptVariables(const std::vector<std::pair<std::string, std::string>>& values)
      : values_(values.begin(), values.end()) {}

  // Replaces ${NAME}, and $${ by ${, in the words. A value never splits a word. Throws Failure
  // kUsage for an undefined variable or an unclosed ${.
  std::vector<std::string> Expand(std::vector<std::string> words);
  // The variables that have not been used so far.
  std::vector<std::string> Unused() const;

 private:
  std::string Expand(const std::string& word);
  const std::string& ValueOf(const std::string& name);

  std::map<std::string, std::string> values_;
  std::set<std::string> used_;
};

// Splits "NAME=VALUE". Throws WrongValue.
std::pair<std::string, std::string> VariableValue(const std::string& text);

}  // namespace borvanusb
