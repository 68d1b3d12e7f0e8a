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
    kEndOfInput  // Ctrl-D, Ctrl-Z, or the terminal was closed
  };
  Kind kind = Kind::kText;
  std::string text = {};  // kText only: UTF-8, one character or pasted text
};

// A terminal where the user edits lines.
class Terminal {
 public:
  Terminal() = default;
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  virtual ~Terminal() = default;

  // The program receives single keys between BeginEditing and EndEditing. Outside of them the
  // terminal handles the keys itself.
  virtual void BeginEditing() = 0;
  virtual void EndEditing() = 0;
  // Waits for the next key.
  virtual Key ReadKey() = 0;
  // Shows `line` and replaces the line that the previous call showed. The cursor is placed after
  // `before`, which is the beginning of `line`. Both are UTF-8.
  virtual void ShowLine(std::string_view line, std::string_view before) = 0;
  // Ends the shown line and writes `text` below it. `text` ends with \n or is empty.
  virtual void EndLine(std::string_view text) = 0;
  virtual int Columns() const = 0;
};

}  // namespace borvanusb
