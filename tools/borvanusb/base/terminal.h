#pragma once

#include <string>
#include <string_view>

namespace borvanusb {

// A key that a user pressed while editing a line.
struct Key {
  enum class Kind {
    kText,
    kEnter,
    kBackspace,
    kDelete,
    kLeft,
    kRight,
    kWordLeft,
    kWordRight,
    kHome,
    kEnd,
    kUp,
    kDown,
    kTab,
    kClearLine,  // Ctrl-U
    kCancel,     // Ctrl-C
    kEndOfInput  // Ctrl-D, Ctrl-Z, or the terminal is gone
  };
  Kind kind = Kind::kText;
  std::string text = {};  // of kText: UTF-8, one character or pasted ones
};

// Where a user types lines that the program edits.
class Terminal {
 public:
  Terminal() = default;
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  virtual ~Terminal() = default;

  // Takes the keys from the terminal until EndEditing, and gives them back then.
  virtual void BeginEditing() = 0;
  virtual void EndEditing() = 0;
  // Waits for the next key.
  virtual Key ReadKey() = 0;
  // Shows `line` in place of what this has shown before, with the cursor after `before`, the
  // line's beginning. Both are UTF-8.
  virtual void ShowLine(std::string_view line, std::string_view before) = 0;
  // Ends the line that was shown, and writes `text`, which ends with \n or is empty, below it.
  virtual void EndLine(std::string_view text) = 0;
  virtual int Columns() const = 0;
};

}  // namespace borvanusb
