#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/terminal.h"

namespace borvanusb {

// A line that a user edits, and the lines before it. Knows nothing of a terminal: keys in, text and
// cursor out. Texts are UTF-8; the cursor never stands within a character.
class LineEditor {
 public:
  enum class Outcome {
    kEditing,   // the line or the cursor may have changed
    kLine,      // Enter: the line is complete
    kComplete,  // Tab: what stands before the cursor is to be completed
    kCancelled,
    kEnd  // of input
  };

  Outcome Press(const Key& key);

  const std::string& Text() const { return text_; }
  std::size_t Cursor() const { return cursor_; }  // in bytes
  std::string BeforeCursor() const { return text_.substr(0, cursor_); }

  // Replaces what stands from `begin` to the cursor.
  void Complete(std::size_t begin, const std::string& text);
  // Returns the line, remembers it unless it is blank or the last one again, and begins a new one.
  std::string Take();
  // Begins a new line and forgets this one.
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
  std::size_t shown_ = 0;  // place in the history; its size: the new line
  std::string new_line_;   // kept while an older one is shown
};

// The part of a line that fits into `columns`, with the cursor in it.
struct VisibleLine {
  std::string line;
  std::string before_cursor;
};
VisibleLine VisiblePart(const std::string& prompt, const std::string& text, std::size_t cursor,
                        std::size_t columns);

}  // namespace borvanusb
