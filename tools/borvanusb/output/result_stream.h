#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace borvanusb {

// Why a text could not be written.
struct WriteProblem {
  bool reader_is_gone = false;  // closed pipe: no program reads the output
  std::string why;              // the system's reason, one line
};

// Writes the whole text. Returns the problem if the write fails.
using ResultSink = std::function<std::optional<WriteProblem>(std::string_view)>;

// Writes to standard output until a write fails, and ignores all later texts. What was written is
// then the start of the output, without a gap.
class ResultStream {
 public:
  explicit ResultStream(ResultSink sink) : sink_(std::move(sink)) {}

  void Write(std::string_view text) {
    if (!problem_) {
      problem_ = sink_(text);
    }
  }
  // Returns the problem of the failed write. Returns nothing if no write has failed.
  const std::optional<WriteProblem>& Problem() const { return problem_; }

 private:
  ResultSink sink_;
  std::optional<WriteProblem> problem_;
};

}  // namespace borvanusb
