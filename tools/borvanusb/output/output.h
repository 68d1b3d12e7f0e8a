#pragma once

#include <string>
#include <string_view>

namespace borvanusb {

// Standard output and standard error, UTF-8. Each text is one line, whatever it quotes: characters
// that a terminal obeys arrive as question marks, in JSON as escapes. With --json the text for
// people stays away, so that standard output holds JSON alone.
class Output {
 public:
  Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  virtual ~Output() = default;

  // A line of the command's own result, on standard output; nothing with --json.
  virtual void Line(std::string_view text) = 0;
  // Bytes of the result as they are, on standard output; nothing with --json.
  virtual void Bytes(std::string_view bytes) = 0;
  // Whether standard output is a terminal, which no bytes are for.
  virtual bool OutputIsTerminal() const { return false; }
  // A line of JSON on standard output; nothing without --json. Commands that go on for long print
  // one object per event; all others leave it to their result.
  virtual void JsonLine(std::string_view json) = 0;
  // A remark on standard error: what to know beside the result; nothing with --quiet.
  virtual void Note(std::string_view text) = 0;
  // The same for a row that is drawn over and over on a terminal.
  virtual void Row(std::string_view text) { Note(text); }
  // A remark for --verbose alone, on standard error.
  virtual void Detail(std::string_view text) = 0;
  // A line of a failure, on standard error, always.
  virtual void Error(std::string_view text) = 0;
  // Whether standard output still arrives: false after a failed write. Commands that go on for long
  // end then; the caller of the command tells it.
  virtual bool TakesResults() const { return true; }
  // How many columns the terminal has that standard error is; 0 when it is none.
  virtual int ErrorColumns() const = 0;
  // Puts that terminal's cursor to the start of the line so many lines further up.
  virtual void MoveUp(int lines) = 0;
};

}  // namespace borvanusb
