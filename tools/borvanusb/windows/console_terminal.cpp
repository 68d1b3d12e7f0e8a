#include "windows/console_terminal.h"

#include <windows.h>

#include <algorithm>
#include <optional>
#include <string>

#include "base/format.h"
#include "output/columns.h"
#include "windows/text.h"

namespace borvanusb {

namespace {

constexpr wchar_t kFirstVisible = 0x20;

bool HasControl(const KEY_EVENT_RECORD& event) {
  constexpr DWORD kControl = LEFT_CTRL_PRESSED | RIGHT_CTRL_PRESSED;
  return (event.dwControlKeyState & kControl) != 0;
}

// Keys that do not produce a character.
std::optional<Key::Kind> KindOf(const KEY_EVENT_RECORD& event) {
  switch (event.wVirtualKeyCode) {
    case VK_RETURN:
      return Key::Kind::kEnter;
    case VK_BACK:
      return Key::Kind::kBackspace;
    case VK_DELETE:
      return Key::Kind::kDelete;
    case VK_LEFT:
      return HasControl(event) ? Key::Kind::kWordLeft : Key::Kind::kLeft;
    case VK_RIGHT:
      return HasControl(event) ? Key::Kind::kWordRight : Key::Kind::kRight;
    case VK_HOME:
      return Key::Kind::kHome;
    case VK_END:
      return Key::Kind::kEnd;
    case VK_UP:
      return Key::Kind::kUp;
    case VK_DOWN:
      return Key::Kind::kDown;
    case VK_TAB:
      return Key::Kind::kTab;
    default:
      return std::nullopt;
  }
}

// Control characters. Some terminals send them without a key.
std::optional<Key::Kind> KindOfCharacter(wchar_t character) {
  switch (character) {
    case 0x01:  // Ctrl-A
      return Key::Kind::kHome;
    case 0x03:  // Ctrl-C
      return Key::Kind::kCancel;
    case 0x04:  // Ctrl-D
    case 0x1A:  // Ctrl-Z
      return Key::Kind::kEndOfInput;
    case 0x05:  // Ctrl-E
      return Key::Kind::kEnd;
    case 0x08:
    case 0x7F:
      return Key::Kind::kBackspace;
    case 0x09:
      return Key::Kind::kTab;
    case 0x0A:
    case 0x0D:
      return Key::Kind::kEnter;
    case 0x15:  // Ctrl-U
      return Key::Kind::kClearLine;
    default:
      return std::nullopt;
  }
}

}  // namespace

ConsoleTerminal::~ConsoleTerminal() {
  ConsoleTerminal::EndEditing();
}

void ConsoleTerminal::BeginEditing() {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  DWORD mode = 0;
  if (editing_ || GetConsoleMode(input, &mode) == FALSE) {
    return;
  }
  old_mode_ = mode;
  constexpr DWORD kCooked = ENABLE_LINE_INPUT | ENABLE_ECHO_INPUT | ENABLE_PROCESSED_INPUT;
  SetConsoleMode(input, mode & ~kCooked);
  editing_ = true;
}

void ConsoleTerminal::EndEditing() {
  if (editing_) {
    SetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), old_mode_);
    editing_ = false;
  }
}

Key ConsoleTerminal::ReadKey() {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  while (keys_.empty()) {
    INPUT_RECORD record{};
    DWORD count = 0;
    if (ReadConsoleInputW(input, &record, 1, &count) == FALSE) {
      return {Key::Kind::kEndOfInput};
    }
    if (count == 0 || record.EventType != KEY_EVENT || record.Event.KeyEvent.bKeyDown == FALSE) {
      continue;
    }
    const KEY_EVENT_RECORD& event = record.Event.KeyEvent;
    const wchar_t character = event.uChar.UnicodeChar;
    std::optional<Key> key;
    if (character >= kFirstVisible && character != 0x7F) {
      std::wstring text(1, character);
      if (IS_HIGH_SURROGATE(character)) {
        high_surrogate_ = character;
        continue;
      }
      if (IS_LOW_SURROGATE(character)) {
        text.insert(text.begin(), high_surrogate_);
      }
      key = Key{Key::Kind::kText, ToUtf8(text)};
    } else if (const auto of_character = KindOfCharacter(character)) {
      key = Key{*of_character};
    } else if (const auto of_key = KindOf(event)) {
      key = Key{*of_key};
    }
    for (WORD i = 0; key && i < std::max<WORD>(event.wRepeatCount, 1); ++i) {
      keys_.push_back(*key);
    }
  }
  Key key = keys_.front();
  keys_.pop_front();
  return key;
}

// Draws the whole row, then its beginning again to position the cursor. This requires no control
// sequences.
void ConsoleTerminal::ShowLine(std::string_view line, std::string_view before) {
  const std::size_t columns = ColumnsOf(line);
  const std::string blanks(shown_columns_ > columns ? shown_columns_ - columns : 0, ' ');
  shown_columns_ = columns;
  shown_ = line;
  static_cast<void>(console_.WriteOutput(Format("\r{}{}\r{}", line, blanks, before)));
}

void ConsoleTerminal::EndLine(std::string_view text) {
  shown_columns_ = 0;
  static_cast<void>(console_.WriteOutput(Format("\r{}\r\n{}", shown_, text)));
  shown_.clear();
}

}  // namespace borvanusb
