#pragma once

#include <deque>

#include "base/terminal.h"
#include "windows/console.h"

namespace borvanusb {

// Keyboard input from the console for the prompt. While a line is edited, the console delivers all
// keys, including Ctrl-C. Otherwise it works normally.
class ConsoleTerminal : public Terminal {
 public:
  // `console` must outlive this object.
  explicit ConsoleTerminal(const Console& console) : console_(console) {}
  ConsoleTerminal(const ConsoleTerminal&) = delete;
  ConsoleTerminal& operator=(const ConsoleTerminal&) = delete;
  ~ConsoleTerminal() override;

  void BeginEditing() override;
  void EndEditing() override;
  Key ReadKey() override;
  void ShowLine(std::string_view line, std::string_view before) override;
  void EndLine(std::string_view text) override;
  int Columns() const override { return console_.Columns(); }

 private:
  const Console& console_;
  bool editing_ = false;
  unsigned long old_mode_ = 0;
  std::deque<Key> keys_;
  wchar_t high_surrogate_ = 0;  // first half of a UTF-16 character
  std::size_t shown_columns_ = 0;
  std::string shown_;
};

}  // namespace borvanusb
