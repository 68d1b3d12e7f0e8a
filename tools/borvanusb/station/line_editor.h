#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/terminal.h"

namespace borvanusb {

// Edits a line, with a history of earlier lines. It is independent of the terminal: keys go in,
// text and cursor come out. Texts are UTF-8. The cursor is never inside a character.
class LineEditor {
 public:
  enum class Outcome {
    kEditing,   // the line or the cursor may have changed
    kLine,      // Enter: the line is complete
    kComplete,  // Tab: complete the text before the cursor
    kCancelled,
    kEnd  // end of input
  };

  Outcome Press(const Key& key);

  const std::string& Text() const { return text_; }
  std::size_t Cursor() const { return cursor_; }  // in bytes
  std::string BeforeCursor() const { return text_.substr(0, cursor_); }

  // Replaces the text from `begin` to the cursor.
  void Complete(std::size_t begin, const std::string& text);
  // Returns the line and starts a new one. Adds the line to the history unless it is blank or equal
  // to the last one.
  std::string Take();
  // Discards the line and starts a new one.
  void Clear();

 private:
  std::size_t Before(std::size_t place) const;
  std::size_t Behind(std::size_t place) const;
  std::size_t WordBefore() const;
  std::size_t WordBehind() const;
  void Erase(std::size_t begin, std::size_t end);
  void ShowOlder();
  void ShowNewer();
  void Show(const std::string& text);

  std::string text_;
  std::size_t cursor_ = 0;
  std::vector<std::string> history_;
  std::size_t shown_ = 0;  // index in the history; equal to its size: the new line
  std::string new_line_;   // kept while a line of the history is shown
};

// The part of a line around the cursor that fits into `columns`.
struct VisibleLine {
  std::string line;
  std::string before_cursor;
};
VisibleLine VisiblePart(const std::string& prompt, const std::string& text, std::size_t cursor,
                        std::size_t columns);

}  // namespace borvanusb
