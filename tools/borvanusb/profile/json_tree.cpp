#include "profile/json_tree.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <nlohmann/json.hpp>

#include "base/format.h"

namespace borvanusb {

namespace {

constexpr std::size_t kDeepest = 32;
constexpr std::size_t kMostMembers = 4096;  // of one object

// An iterator over the characters of a text that counts lines up to the last character read.
class LineCounting {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  LineCounting(const char* at, std::uint64_t* line) : at_(at), line_(line) {}

  const char& operator*() const { return *at_; }
  LineCounting& operator++() {
    // A line end still belongs to its line: the parser reads one character ahead after a number.
    if (line_ != nullptr) {
      *line_ += ended_ ? 1 : 0;
    }
    ended_ = *at_ == '\n';
    ++at_;
    return *this;
  }
  LineCounting operator++(int) {
    LineCounting before = *this;
    ++*this;
    return before;
  }
  bool operator==(const LineCounting& other) const { return at_ == other.at_; }

 private:
  const char* at_;
  std::uint64_t* line_;
  bool ended_ = false;  // the previous character was a line end
};

// Builds the tree from the events of the parser.
class TreeBuilder : public nlohmann::json_sax<nlohmann::json> {
 public:
  explicit TreeBuilder(const std::uint64_t& line) : line_(line) {}

  JsonNode Take() { return std::move(root_); }

  bool null() override {
    Add(JsonNode::Kind::kNull);
    return true;
  }
  bool boolean(bool value) override {
    Add(JsonNode::Kind::kBoolean).boolean = value;
    return true;
  }
  bool number_integer(number_integer_t value) override {
    Add(JsonNode::Kind::kNumber).text = Format("{}", value);
    return true;
  }
  bool number_unsigned(number_unsigned_t value) override {
    JsonNode& node = Add(JsonNode::Kind::kNumber);
    node.whole = true;
    node.number = value;
    node.text = Format("{}", value);
    return true;
  }
  bool number_float(number_float_t /*value*/, const string_t& text) override {
    Add(JsonNode::Kind::kNumber).text = text;
    return true;
  }
  bool string(string_t& value) override {
    Add(JsonNode::Kind::kText).text = std::move(value);
    return true;
  }
  bool binary(binary_t& /*value*/) override { return false; }
  bool start_object(std::size_t /*size*/) override { return Open(JsonNode::Kind::kObject); }
  bool end_object() override { return Close(); }
  bool start_array(std::size_t /*size*/) override { return Open(JsonNode::Kind::kList); }
  bool end_array() override { return Close(); }
  bool key(string_t& value) override {
    if (open_.back()->Find(value) != nullptr) {
      throw JsonTextError(line_, Format("{}: is there twice", PlaceOf(*open_.back(), value)));
    }
    if (open_.back()->members.size() == kMostMembers) {
      throw JsonTextError(line_,
                          Format("{}: has more than {} keys", open_.back()->place, kMostMembers));
    }
    key_ = std::move(value);
    key_line_ = line_;
    return true;
  }
  bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                   const nlohmann::json::exception& error) override {
    // Removes the library's own prefix. What remains says what it expected and what it found.
    std::string why = error.what();
    const std::size_t begin = why.find(": ");
    why = begin == std::string::npos ? why : why.substr(begin + 2);
    throw JsonTextError(line_, Format("is not valid JSON: {}", why));
  }

 private:
  static std::string PlaceOf(const JsonNode& parent, const std::string& key) {
    return parent.place.empty() ? key : Format("{}.{}", parent.place, key);
  }

  JsonNode& Add(JsonNode::Kind kind) {
    JsonNode node;
    node.kind = kind;
    node.line = line_;
    if (open_.empty()) {
      root_ = std::move(node);
      return root_;
    }
    JsonNode& parent = *open_.back();
    if (parent.kind == JsonNode::Kind::kList) {
      node.place = Format("{}[{}]", parent.place, parent.items.size());
      return parent.items.emplace_back(std::move(node));
    }
    node.place = PlaceOf(parent, key_);
    node.line = key_line_;
    return parent.members.emplace_back(JsonMember{std::move(key_), std::move(node)}).value;
  }

  bool Open(JsonNode::Kind kind) {
    if (open_.size() == kDeepest) {
      throw JsonTextError(line_, Format("is nested deeper than {} levels", kDeepest));
    }
    open_.push_back(&Add(kind));
    return true;
  }

  bool Close() {
    open_.pop_back();
    return true;
  }

  const std::uint64_t& line_;
  JsonNode root_;
  std::vector<JsonNode*> open_;  // lists with an open item do not grow, so pointers stay valid
  std::string key_;
  std::uint64_t key_line_ = 0;
};

}  // namespace

const JsonNode* JsonNode::Find(std::string_view key) const {
  const auto found = std::ranges::find(members, key, &JsonMember::key);
  return found != members.end() ? &found->value : nullptr;
}

JsonNode ReadJsonTree(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) {
    text.remove_prefix(kByteOrderMark.size());
  }
  std::uint64_t line = 1;
  TreeBuilder builder(line);
  const char* const end = text.data() + text.size();
  if (!nlohmann::json::sax_parse(LineCounting(text.data(), &line), LineCounting(end, nullptr),
                                 &builder)) {
    throw JsonTextError(line, "is not valid JSON");
  }
  return builder.Take();
}

}  // namespace borvanusb
