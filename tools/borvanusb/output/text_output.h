#pragma once

#include <functional>
#include <string_view>

#include "output/output.h"

namespace borvanusb {

// Output over two sinks that write UTF-8 texts as they are.
struct TextOutputOptions {
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  // Whether `out` still arrives; empty when it always does.
  std::function<bool()> takes_results{};
  bool output_is_terminal = false;
  // Where bytes and rows go; empty: where lines and notes do.
  std::function<void(std::string_view)> bytes{};
  std::function<void(std::string_view)> rows{};
  // Of the terminal that standard error is; both empty when it is none.
  std::function<int()> columns{};
  std::function<void(int)> move_up{};
};

class TextOutput : public Output {
 public:
  using Sink = std::function<void(std::string_view)>;
  TextOutput(Sink out, Sink err, TextOutputOptions options);

  void Line(std::string_view text) override;
  void Bytes(std::string_view bytes) override;
  bool OutputIsTerminal() const override { return options_.output_is_terminal; }
  void JsonLine(std::string_view json) override;
  void Note(std::string_view text) override;
  void Row(std::string_view text) override;
  void Detail(std::string_view text) override;
  void Error(std::string_view text) override;
  bool TakesResults() const override;
  int ErrorColumns() const override;
  void MoveUp(int lines) override;

 private:
  Sink out_;
  Sink err_;
  TextOutputOptions options_;
};

}  // namespace borvanusb
