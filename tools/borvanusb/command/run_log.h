#pragma once

#include <chrono>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

namespace borvanusb {

// The file of --log: what a run of the tool says, each line with its time and kind. It is added
// to what the file holds; each line is in the file when Add returns.
class RunLog {
 public:
  enum class Kind { kRun, kOutput, kError, kEnd };
  using Clock = std::function<std::chrono::system_clock::time_point()>;

  // The name is UTF-8. Throws Failure kFile.
  RunLog(std::string name, Clock clock);

  // Adds the lines of a text. A last line without an end is one, too.
  void Add(Kind kind, std::string_view text);
  // Whether all of it was written so far.
  bool IsWhole() const { return file_.good(); }
  const std::string& Name() const { return name_; }

 private:
  std::string name_;
  Clock clock_;
  std::ofstream file_;
};

}  // namespace borvanusb
