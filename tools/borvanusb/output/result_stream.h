#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace borvanusb {

// Why a text could not be written.
struct WriteProblem {
  bool reader_is_gone = false;  // a closed pipe: nobody wants what follows
  std::string why;              // the system's reason, in a line
};

// Writes the whole text, or tells why not.
using ResultSink = std::function<std::optional<WriteProblem>(std::string_view)>;

// Standard output, until a write fails. Then it takes nothing more, so that what has arrived is the
// beginning of the whole and no part is missing in its middle.
class ResultStream {
 public:
  explicit ResultStream(ResultSink sink) : sink_(std::move(sink)) {}

  void Write(std::string_view text) {
    if (!problem_) {
      problem_ = sink_(text);
    }
  }
  // The first problem; nothing while all texts were written.
  const std::optional<WriteProblem>& Problem() const { return problem_; }

 private:
  ResultSink sink_;
  std::optional<WriteProblem> problem_;
};

}  // namespace borvanusb
