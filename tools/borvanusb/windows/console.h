#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "output/result_stream.h"

namespace borvanusb {

// The console and streams of the process, in UTF-8. There is one object, in main.
class Console {
 public:
  // Switches the console to UTF-8.
  Console();
  // Restores the console.
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  // Returns nothing on success. Without a standard output, as in a service, nothing is reported.
  std::optional<WriteProblem> WriteOutput(std::string_view text) const;
  // Write errors here are ignored, because there is no other place to report them.
  void WriteError(std::string_view text) const;
  bool OutputIsTerminal() const { return output_is_terminal_; }
  bool ErrorIsTerminal() const { return error_is_terminal_; }
  // The width of the terminal; 80 without a terminal.
  int Columns() const;
  // Whether a user at the terminal can answer a question.
  static bool CanAsk();
  // Moves the cursor up by this number of lines, at most to the top, and to the start of the line.
  // Uses a console function, because not all consoles support control sequences.
  void MoveUp(int lines) const;
  // A line typed at the terminal, without its line end. Empty without a terminal.
  std::string ReadLine() const;

  // Appends all bytes of standard input to `content`. Returns early if `stop` returns true. Returns
  // an empty text, or why it can't be read.
  static std::string ReadInput(std::string& content, const std::function<bool()>& stop);

  // Calls `handler` on a separate thread for each Ctrl-C or Ctrl-Break.
  static void OnStop(std::function<void()> handler);

 private:
  bool output_is_terminal_ = false;
  bool error_is_terminal_ = false;
  unsigned old_code_page_ = 0;
};

}  // namespace borvanusb
