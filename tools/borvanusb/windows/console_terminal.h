#pragma once

#include <deque>

#include "base/terminal.h"
#include "windows/console.h"

namespace borvanusb {

// The console's keys for the prompt. While a line is edited the console hands over every key,
// Ctrl-C included; in between it works as before.
class ConsoleTerminal : public Terminal {
 public:
  // It must outlive this.
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
  wchar_t high_surrogate_ = 0;  // the first half of a character
  std::size_t shown_columns_ = 0;
  std::string shown_;
};

}  // namespace borvanusb
