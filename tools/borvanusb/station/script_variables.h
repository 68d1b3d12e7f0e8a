#pragma once

// Variables of scripts: ${NAME} stands for a value of the command line.

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

  // The words with ${NAME} replaced, and $${ by ${. A value never makes two words of one. Throws
  // Failure kUsage for a variable that is not set and for a ${ that is not closed.
  std::vector<std::string> Expand(std::vector<std::string> words);
  // The variables that no text used so far.
  std::vector<std::string> Unused() const;

 private:
  std::string Expand(const std::string& word);
  const std::string& ValueOf(const std::string& name);

  std::map<std::string, std::string> values_;
  std::set<std::string> used_;
};

// "NAME=VALUE" as its two parts. Throws WrongValue.
std::pair<std::string, std::string> VariableValue(const std::string& text);

}  // namespace borvanusb
