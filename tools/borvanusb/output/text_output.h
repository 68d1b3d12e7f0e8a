#pragma once

#include <functional>
#include <string_view>

#include "output/output.h"

namespace borvanusb {

// Options of TextOutput.
struct TextOutputOptions {
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  // Returns whether `out` can still be written. Empty: it always can.
  std::function<bool()> takes_results{};
  bool output_is_terminal = false;
  // Sinks for Bytes and Row. Empty: Bytes uses the sink of lines, Row that of notes.
  std::function<void(std::string_view)> bytes{};
  std::function<void(std::string_view)> rows{};
  // Width and cursor of the terminal on standard error. Both are empty if there is no terminal.
  std::function<int()> columns{};
  std::function<void(int)> move_up{};
};

// Implements Output with two sinks, which must write UTF-8 texts unchanged.
//   out  standard output
//   err  standard error
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
