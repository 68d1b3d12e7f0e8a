#pragma once

#include <chrono>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

namespace borvanusb {

// The file of --log: the output of a run, each line with its time and kind. Lines are appended to
// an existing file. When Add returns, the lines are in the file.
class RunLog {
 public:
  enum class Kind { kRun, kOutput, kError, kEnd };
  using Clock = std::function<std::chrono::system_clock::time_point()>;

  // The name is UTF-8. Throws Failure kFile.
  RunLog(std::string name, Clock clock);

  // Adds the lines of a text. The last line need not have a line end.
  void Add(Kind kind, std::string_view text);
  // Whether everything has been written so far.
  bool IsWhole() const { return file_.good(); }
  const std::string& Name() const { return name_; }

 private:
  std::string name_;
  Clock clock_;
  std::ofstream file_;
};

}  // namespace borvanusb
