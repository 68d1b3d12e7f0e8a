#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "output/result_stream.h"

namespace borvanusb {

// The process's console and streams, in UTF-8. One object, in main.
class Console {
 public:
  // Switches the console to UTF-8.
  Console();
  // The console is the caller's again, as it was.
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  // A process without a standard output, such as a service, loses nothing.
  std::optional<WriteProblem> WriteOutput(std::string_view text) const;
  // What can't be written is lost: there is no other place to tell it.
  void WriteError(std::string_view text) const;
  bool OutputIsTerminal() const { return output_is_terminal_; }
  bool ErrorIsTerminal() const { return error_is_terminal_; }
  // Columns of the terminal; 80 without one.
  int Columns() const;
  // Whether somebody sits at the terminal to answer a question.
  static bool CanAsk();
  // Puts the terminal's cursor to the start of the line so many lines further up, at most to the
  // top: through the console's own function, since not every console obeys control sequences.
  void MoveUp(int lines) const;
  // A line typed at the terminal, without its end; empty without a terminal.
  std::string ReadLine() const;

  // Appends all of standard input to `content`, byte for byte; ends early when `stop` returns true.
  // Returns why it can't be read; empty when it can.
  static std::string ReadInput(std::string& content, const std::function<bool()>& stop);

  // Calls `handler` on a thread of its own at each Ctrl-C or Ctrl-Break.
  static void OnStop(std::function<void()> handler);

 private:
  bool output_is_terminal_ = false;
  bool error_is_terminal_ = false;
  unsigned old_code_page_ = 0;
};

}  // namespace borvanusb
