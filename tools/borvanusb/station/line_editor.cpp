#include "station/line_editor.h"

#include <algorithm>
#include <utility>

#include "output/columns.h"

namespace borvanusb {

namespace {

bool IsContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::size_t NextCharacter(const std::string& text, std::size_t place) {
  if (place < text.size()) {
    ++place;
  }
  while (place < text.size() && IsContinuation(text[place])) {
    ++place;
  }
  return place;
}

}  // namespace

LineEditor::Outcome LineEditor::Press(const Key& key) {
  switch (key.kind) {
    case Key::Kind::kText:
      text_.insert(cursor_, key.text);
      cursor_ += key.text.size();
      break;
    case Key::Kind::kEnter:
      return Outcome::kLine;
    case Key::Kind::kBackspace:
      Erase(Before(cursor_), cursor_);
      break;
    case Key::Kind::kDelete:
      Erase(cursor_, Behind(cursor_));
      break;
    case Key::Kind::kLeft:
      cursor_ = Before(cursor_);
      break;
    case Key::Kind::kRight:
      cursor_ = Behind(cursor_);
      break;
    case Key::Kind::kWordLeft:
      cursor_ = WordBefore();
      break;
    case Key::Kind::kWordRight:
      cursor_ = WordBehind();
      break;
    case Key::Kind::kHome:
      cursor_ = 0;
      break;
    case Key::Kind::kEnd:
      cursor_ = text_.size();
      break;
    case Key::Kind::kUp:
      ShowOlder();
      break;
    case Key::Kind::kDown:
      ShowNewer();
      break;
    case Key::Kind::kTab:
      return Outcome::kComplete;
    case Key::Kind::kClearLine:
      Erase(0, cursor_);
      break;
    case Key::Kind::kCancel:
      return Outcome::kCancelled;
    case Key::Kind::kEndOfInput:
      return Outcome::kEnd;
  }
  return Outcome::kEditing;
}

void LineEditor::Complete(std::size_t begin, const std::string& text) {
  text_.replace(begin, cursor_ - begin, text);
  cursor_ = begin + text.size();
}

std::string LineEditor::Take() {
  std::string line = std::exchange(text_, {});
  const bool blank = line.find_first_not_of(" \t") == std::string::npos;
  if (!blank && (history_.empty() || history_.back() != line)) {
    history_.push_back(line);
  }
  Clear();
  return line;
}

void LineEditor::Clear() {
  text_.clear();
  new_line_.clear();
  cursor_ = 0;
  shown_ = history_.size();
}

std::size_t LineEditor::Before(std::size_t place) const {
  do {
    place -= place > 0 ? 1 : 0;
  } while (place > 0 && IsContinuation(text_[place]));
  return place;
}

std::size_t LineEditor::Behind(std::size_t place) const {
  return NextCharacter(text_, place);
}

std::size_t LineEditor::WordBefore() const {
  std::size_t place = cursor_;
  while (place > 0 && text_[place - 1] == ' ') {
    --place;
  }
  while (place > 0 && text_[place - 1] != ' ') {
    --place;
  }
  return place;
}

std::size_t LineEditor::WordBehind() const {
  std::size_t place = cursor_;
  while (place < text_.size() && text_[place] != ' ') {
    ++place;
  }
  while (place < text_.size() && text_[place] == ' ') {
    ++place;
  }
  return place;
}

void LineEditor::Erase(std::size_t begin, std::size_t end) {
  text_.erase(begin, end - begin);
  cursor_ = begin;
}

void LineEditor::ShowOlder() {
  if (shown_ == 0) {
    return;
  }
  if (shown_ == history_.size()) {
    new_line_ = text_;
  }
  --shown_;
  Show(history_[shown_]);
}

void LineEditor::ShowNewer() {
  if (shown_ == history_.size()) {
    return;
  }
  ++shown_;
  Show(shown_ == history_.size() ? std::string(new_line_) : history_[shown_]);
}

void LineEditor::Show(const std::string& text) {
  text_ = text;
  cursor_ = text_.size();
}

VisibleLine VisiblePart(const std::string& prompt, const std::string& text, std::size_t cursor,
                        std::size_t columns) {
  // Removes characters on the left until the cursor is visible, including its position after the
  // last character.
  std::size_t begin = 0;
  const auto before = [&] { return prompt + text.substr(begin, cursor - begin); };
  while (begin < cursor && ColumnsOf(before()) + 1 > columns) {
    begin = NextCharacter(text, begin);
  }
  std::string line = before();
  std::size_t end = cursor;
  while (end < text.size()) {
    const std::size_t next = NextCharacter(text, end);
    const std::string longer = line + text.substr(end, next - end);
    if (ColumnsOf(longer) > columns) {
      break;
    }
    line = longer;
    end = next;
  }
  return {std::move(line), before()};
}

}  // namespace borvanusb
