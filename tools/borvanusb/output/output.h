#pragma once

#include <string>
#include <string_view>

namespace borvanusb {

// Writes to standard output and standard error, in UTF-8. Each text is printed as one line: control
// characters in it are replaced by question marks, and in JSON by escapes. With --json, standard
// output receives only JSON and no other text.
class Output {
 public:
  Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  virtual ~Output() = default;

  // Prints a line of the command's result on standard output. Prints nothing with --json.
  virtual void Line(std::string_view text) = 0;
  // Writes bytes of the result unchanged to standard output. Writes nothing with --json.
  virtual void Bytes(std::string_view bytes) = 0;
  // Whether standard output is a terminal. Binary data must not be written to a terminal.
  virtual bool OutputIsTerminal() const { return false; }
  // Prints a line of JSON on standard output. Prints nothing without --json. Only long-running
  // commands call this, with one object per event. All others return their JSON as the result.
  virtual void JsonLine(std::string_view json) = 0;
  // Prints a remark about the result on standard error. Prints nothing with --quiet.
  virtual void Note(std::string_view text) = 0;
  // Prints a row that is redrawn repeatedly on a terminal. Otherwise like Note.
  virtual void Row(std::string_view text) { Note(text); }
  // Prints a remark on standard error, only with --verbose.
  virtual void Detail(std::string_view text) = 0;
  // Prints a line of a failure on standard error, also with --quiet.
  virtual void Error(std::string_view text) = 0;
  // Whether standard output can still be written. Returns false after a failed write; long-running
  // commands end then. The caller of the command reports the failed write.
  virtual bool TakesResults() const { return true; }
  // Returns the columns of the terminal on standard error, or 0 if standard error is no terminal.
  virtual int ErrorColumns() const = 0;
  // Moves the cursor of that terminal up by `lines`, to the start of the line.
  virtual void MoveUp(int lines) = 0;
};

}  // namespace borvanusb
