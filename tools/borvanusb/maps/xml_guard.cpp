#include "maps/xml_guard.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "base/format.h"

namespace borvanusb {

namespace {

constexpr std::string_view kCommentMark = "!--";
constexpr std::string_view kCharacterData = "![CDATA[";
constexpr std::size_t kLongestReference = 10;  // "&#x10FFFF;"
constexpr std::size_t kLongestTag = 40;

constexpr std::array<bool, 256> NameCharacters() {
  std::array<bool, 256> table = {};
  for (std::size_t i = 0; i < table.size(); ++i) {
    const bool letter = (i >= 'A' && i <= 'Z') || (i >= 'a' && i <= 'z');
    const bool mark = i == '_' || i == '-' || i == '.' || i == ':';
    table[i] = letter || mark || (i >= '0' && i <= '9') || i >= 0x80;
  }
  return table;
}
constexpr std::array<bool, 256> kNameCharacters = NameCharacters();

bool IsBlank(char character) {
  return character == ' ' || character == '\n' || character == '\r' || character == '\t';
}

class XmlGuard {
 public:
  XmlGuard(const std::string& text, const MapLimits& limits) : text_(text), limits_(limits) {}

  XmlFacts Run() {
    next_reference_ = Find('&', 0);
    for (std::size_t start = Find('<', 0); start != kEnd; start = Find('<', place_)) {
      CheckReferences(start);
      const char first = text_[start + 1];
      if (first == '/') {
        EndTag(start + 2);
      } else if (first == '!') {
        Declaration(start);
      } else if (first == '?') {
        SkipTo("?>", start, start + 2, "a processing instruction has no end: ?> is missing");
      } else {
        StartTag(start + 1);
      }
    }
    CheckReferences(text_.size());
    if (!open_.empty()) {
      Fail(open_.back().offset,
           Format("<{}> has no end: </{}> is missing", open_.back().name, open_.back().name));
    }
    return facts_;
  }

 private:
  static constexpr std::size_t kEnd = std::string::npos;
  struct Open {
    std::string_view name;
    std::size_t offset = 0;
  };

  [[noreturn]] void Fail(std::size_t offset, std::string why) const {
    throw SvdError(LineAt(text_, offset), std::move(why));
  }

  // The innermost open element at the current position, for messages.
  std::string Around() const { return open_.empty() ? "" : Format("in <{}>: ", open_.back().name); }

  std::size_t Find(char character, std::size_t from) const { return text_.find(character, from); }

  // Checks all references before `end`.
  void CheckReferences(std::size_t end) {
    while (next_reference_ < end) {
      const std::string_view rest = std::string_view(text_).substr(next_reference_);
      if (!IsReference(rest)) {
        Fail(next_reference_, Format("{}& is not the start of a known entity; allowed are &amp; "
                                     "&lt; &gt; &quot; &apos; and numbers such as &#181;",
                                     Around()));
      }
      next_reference_ = Find('&', next_reference_ + 1);
    }
  }

  // Skips a comment, CDATA section or the like. References in it are not checked.
  void SkipTo(std::string_view mark, std::size_t start, std::size_t from, const char* why) {
    const std::size_t end = text_.find(mark, from);
    if (end == kEnd) {
      Fail(start, Format("{}{}", Around(), why));
    }
    place_ = end + mark.size();
    if (next_reference_ < place_) {
      next_reference_ = Find('&', place_);
    }
    const auto before = std::string_view(text_).substr(0, start).find_last_not_of(" \t\r\n");
    const auto behind = text_.find_first_not_of(" \t\r\n", place_);
    facts_.pieces |=
        (before != kEnd && text_[before] != '>') || (behind != kEnd && text_[behind] != '<');
  }

  void Declaration(std::size_t start) {
    const std::string_view rest = std::string_view(text_).substr(start + 1);
    if (rest.starts_with(kCommentMark)) {
      SkipTo("-->", start, start + 1 + kCommentMark.size(), "a comment has no end: --> is missing");
    } else if (rest.starts_with(kCharacterData)) {
      SkipTo("]]>", start, start + 1 + kCharacterData.size(),
             "a CDATA section has no end: ]]> is missing");
      facts_.pieces = true;
    } else {
      Fail(start, Format("{}<! begins a DOCTYPE or another declaration; allowed are elements, "
                         "comments and CDATA",
                         Around()));
    }
  }

  std::string_view Name(std::size_t start) {
    std::size_t end = start;
    while (IsXmlName(text_[end])) {
      ++end;
    }
    return {text_.data() + start, end - start};
  }

  void SkipBlanks() {
    while (IsBlank(text_[place_])) {
      ++place_;
    }
  }

  void EndTag(std::size_t start) {
    const std::string_view name = Name(start);
    if (open_.empty()) {
      Fail(start, Format("</{}> ends an element that was not begun", name));
    }
    if (name != open_.back().name) {
      Fail(start,
           Format("</{}> ends <{}> of line {}; allowed is </{}>", name.substr(0, kLongestTag),
                  open_.back().name, LineAt(text_, open_.back().offset), open_.back().name));
    }
    place_ = start + name.size();
    SkipBlanks();
    if (text_[place_] != '>') {
      Fail(start, Format("</{}> has no >", name));
    }
    ++place_;
    open_.pop_back();
  }

  void StartTag(std::size_t start) {
    const std::string_view name = Name(start);
    if (name.empty()) {
      Fail(start, Format("{}< is not followed by an element name; a character < in a text is "
                         "written as &lt;",
                         Around()));
    }
    if (++facts_.tags > limits_.tags) {
      Fail(start, Format("<{}>: the file has more than {} elements", name, limits_.tags));
    }
    place_ = start + name.size();
    if (text_[place_] != '>') {
      Attributes(name, start);
    }
    if (text_[place_] == '/') {
      place_ += 2;
      return;
    }
    ++place_;
    open_.push_back({name, start});
    if (open_.size() > limits_.depth) {
      Fail(start, Format("<{}> is nested in {} elements; allowed are {}", name, open_.size() - 1,
                         limits_.depth - 1));
    }
  }

  // Reads attributes up to > or />.
  void Attributes(std::string_view name, std::size_t start) {
    for (;;) {
      const bool apart = IsBlank(text_[place_]);
      SkipBlanks();
      if (text_[place_] == '>' || (text_[place_] == '/' && text_[place_ + 1] == '>')) {
        return;
      }
      const std::string_view attribute = Name(place_);
      place_ += attribute.size();
      SkipBlanks();
      if (!apart || attribute.empty() || text_[place_] != '=') {
        break;
      }
      ++place_;
      SkipBlanks();
      const char quote = text_[place_];
      const std::size_t end = quote == '"' || quote == '\'' ? Find(quote, place_ + 1) : kEnd;
      if (end == kEnd || std::string_view(text_).substr(place_, end - place_).find('<') != kEnd) {
        break;
      }
      CheckReferences(end);
      place_ = end + 1;
    }
    Fail(start, Format("<{}>: only attributes are allowed after the name, such as "
                       "derivedFrom=\"NAME\", then > or />",
                       name));
  }

  const std::string& text_;
  const MapLimits& limits_;
  std::size_t place_ = 0;
  std::size_t next_reference_ = 0;
  std::vector<Open> open_;
  XmlFacts facts_;
};

}  // namespace

bool IsXmlName(char character) {
  return kNameCharacters[static_cast<unsigned char>(character)];
}

bool IsReference(std::string_view text) {
  for (const std::string_view entity : {"&amp;", "&lt;", "&gt;", "&quot;", "&apos;"}) {
    if (text.starts_with(entity)) {
      return true;
    }
  }
  const std::size_t end = text.substr(0, kLongestReference).find(';');
  if (!text.starts_with("&#") || end == std::string_view::npos) {
    return false;
  }
  const bool hex = text[2] == 'x';
  const std::string_view digits = text.substr(hex ? 3 : 2, end - (hex ? 3 : 2));
  const std::string_view allowed = hex ? "0123456789abcdefABCDEF" : "0123456789";
  return !digits.empty() && digits.find_first_not_of(allowed) == std::string_view::npos;
}

XmlFacts CheckXml(const std::string& text, const MapLimits& limits) {
  return XmlGuard(text, limits).Run();
}

std::uint64_t LineAt(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  return 1 + static_cast<std::uint64_t>(std::count(before.begin(), before.end(), '\n'));
}

}  // namespace borvanusb
