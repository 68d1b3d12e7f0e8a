#pragma once

// Reads the JSON that borvanusb prints.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <locale>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace borvan {

// A value of JSON. Access as another type returns an empty value: "", 0, false, no elements.
struct Json {
  enum class Type { kNull, kBoolean, kNumber, kText, kArray, kObject };

  Type type = Type::kNull;
  bool boolean = false;
  double number = 0;
  std::string text;  // UTF-8
  std::vector<Json> elements;
  std::map<std::string, Json> members;

  bool IsNull() const { return type == Type::kNull; }
  // The member of an object; null when there is none.
  const Json& operator[](const std::string& name) const {
    static const Json nothing;
    const auto found = members.find(name);
    return found == members.end() ? nothing : found->second;
  }
  template <typename Number>
  Number As() const {
    return static_cast<Number>(number);
  }
};

namespace detail {

// Parses one text. IsGood() is false if it is not valid JSON.
class JsonReader {
 public:
  explicit JsonReader(const std::string& text) : text_(text) {}

  Json Read() {
    Json value = Value(0);
    SkipBlanks();
    good_ = good_ && at_ == text_.size();
    return value;
  }
  bool IsGood() const { return good_; }

 private:
  static constexpr int kDeepest = 32;

  void SkipBlanks() {
    at_ = text_.find_first_not_of(" \t\r\n", at_);
    at_ = at_ == std::string::npos ? text_.size() : at_;
  }
  bool Take(char sign) {
    SkipBlanks();
    if (at_ >= text_.size() || text_[at_] != sign) {
      return false;
    }
    ++at_;
    return true;
  }
  bool TakeWord(const std::string& word) {
    if (text_.compare(at_, word.size(), word) != 0) {
      return false;
    }
    at_ += word.size();
    return true;
  }

  Json Value(int depth) {
    Json value;
    if (depth > kDeepest) {
      good_ = false;
    } else if (Take('{')) {
      value.type = Json::Type::kObject;
      Elements('}', [&] {
        std::string name = Text();
        good_ = good_ && Take(':');
        value.members[std::move(name)] = Value(depth + 1);
      });
    } else if (Take('[')) {
      value.type = Json::Type::kArray;
      Elements(']', [&] { value.elements.push_back(Value(depth + 1)); });
    } else if (at_ < text_.size() && text_[at_] == '"') {
      value.type = Json::Type::kText;
      value.text = Text();
    } else {
      Scalar(value);
    }
    return value;
  }

  template <typename ReadElement>
  void Elements(char end, const ReadElement& read_element) {
    if (Take(end)) {
      return;
    }
    do {
      read_element();
    } while (good_ && Take(','));
    good_ = good_ && Take(end);
  }

  void Scalar(Json& value) {
    if (TakeWord("null")) {
      return;
    }
    if (TakeWord("true") || TakeWord("false")) {
      value.type = Json::Type::kBoolean;
      value.boolean = text_[at_ - 2] == 'u';
      return;
    }
    // Does not use strtod, because its decimal point depends on the locale.
    const std::size_t end = std::min(text_.find_first_not_of("+-.0123456789Ee", at_), text_.size());
    std::istringstream stream(text_.substr(at_, end - at_));
    stream.imbue(std::locale::classic());
    value.type = Json::Type::kNumber;
    good_ = good_ && static_cast<bool>(stream >> value.number);
    at_ = end;
  }

  std::string Text() {
    std::string text;
    if (!Take('"')) {
      good_ = false;
      return text;
    }
    while (at_ < text_.size() && text_[at_] != '"') {
      if (text_[at_] == '\\' && at_ + 1 < text_.size()) {
        ++at_;
        Escape(text);
      } else {
        text += text_[at_++];
      }
    }
    good_ = good_ && at_ < text_.size();
    ++at_;
    return text;
  }

  void Escape(std::string& text) {
    static const std::string letters = "bfnrt";
    static const std::string meanings = "\b\f\n\r\t";
    const char letter = text_[at_++];
    const std::size_t which = letters.find(letter);
    if (which != std::string::npos) {
      text += meanings[which];
    } else if (letter == 'u') {
      AppendUtf8(text, CodePoint());
    } else {
      text += letter;
    }
  }

  std::uint32_t FourDigits() {
    const std::string digits = text_.substr(at_ < text_.size() ? at_ : text_.size(), 4);
    good_ = good_ && digits.size() == 4;
    at_ += digits.size();
    return static_cast<std::uint32_t>(std::strtoul(digits.c_str(), nullptr, 16));
  }
  std::uint32_t CodePoint() {
    const std::uint32_t first = FourDigits();
    if (first < 0xD800 || first > 0xDBFF || !TakeWord("\\u")) {
      return first;
    }
    return 0x10000 + ((first - 0xD800) << 10) + (FourDigits() - 0xDC00);
  }

  static void AppendUtf8(std::string& text, std::uint32_t code) {
    const auto append = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (code < 0x80) {
      append(code);
      return;
    }
    if (code < 0x800) {
      append(0xC0 | (code >> 6));
    } else if (code < 0x10000) {
      append(0xE0 | (code >> 12));
      append(0x80 | (code >> 6 & 0x3F));
    } else {
      append(0xF0 | (code >> 18));
      append(0x80 | (code >> 12 & 0x3F));
      append(0x80 | (code >> 6 & 0x3F));
    }
    append(0x80 | (code & 0x3F));
  }

  const std::string& text_;
  std::size_t at_ = 0;
  bool good_ = true;
};

// Parses `text`. Returns false if it is not valid JSON.
inline bool ReadJson(const std::string& text, Json& value) {
  JsonReader reader(text);
  value = reader.Read();
  return reader.IsGood();
}

}  // namespace detail
}  // namespace borvan
