#include "profile/value_reader.h"

#include <algorithm>

#include "base/format.h"
#include "base/numbers.h"

namespace borvanusb {

namespace {

using Kind = JsonNode::Kind;

constexpr std::size_t kMostItems = 4096;  // of one list

std::string List(std::initializer_list<std::string_view> words) {
  std::string list;
  for (const std::string_view word : words) {
    list += Format("{}{}", list.empty() ? "" : ", ", word);
  }
  return list;
}

}  // namespace

void ValueReader::Wrong(const JsonNode& node, const std::string& why) {
  errors_.push_back({node.line, node.place.empty() ? why : Format("{}: {}", node.place, why)});
}

bool ValueReader::IsObject(const JsonNode& node, std::initializer_list<std::string_view> keys) {
  if (node.kind != Kind::kObject) {
    Wrong(node, "must be an object: {…}");
    return false;
  }
  for (const auto& [key, value] : node.members) {
    if (std::ranges::find(keys, key) == keys.end()) {
      Wrong(value, Format("is not a valid key; allowed are {}", List(keys)));
    }
  }
  return true;
}

const std::vector<JsonNode>& ValueReader::Items(const JsonNode* node) {
  static const std::vector<JsonNode> kNone;
  if (node == nullptr) {
    return kNone;
  }
  if (node->kind != Kind::kList) {
    Wrong(*node, "must be a list: […]");
    return kNone;
  }
  if (node->items.size() > kMostItems) {
    Wrong(*node, Format("has more than {} items", kMostItems));
    return kNone;
  }
  return node->items;
}

std::optional<std::string> ValueReader::Text(const JsonNode& object, std::string_view key) {
  const JsonNode* const node = object.Find(key);
  if (node == nullptr) {
    return std::nullopt;
  }
  if (node->kind != Kind::kText || node->text.empty()) {
    Wrong(*node, "must be a text that is not empty");
    return std::nullopt;
  }
  return node->text;
}

std::string ValueReader::NeededText(const JsonNode& object, std::string_view key) {
  if (object.Find(key) == nullptr) {
    Wrong(object, Format("the key \"{}\" is missing", key));
  }
  return Text(object, key).value_or("");
}

bool ValueReader::Flag(const JsonNode& object, std::string_view key, bool otherwise) {
  const JsonNode* const node = object.Find(key);
  if (node == nullptr) {
    return otherwise;
  }
  if (node->kind != Kind::kBoolean) {
    Wrong(*node, "must be true or false");
    return otherwise;
  }
  return node->boolean;
}

std::optional<std::uint64_t> ValueReader::Number(const JsonNode& object, std::string_view key,
                                                 std::uint64_t highest) {
  const JsonNode* const node = object.Find(key);
  return node != nullptr ? Number(*node, highest) : std::nullopt;
}

std::optional<std::uint64_t> ValueReader::Number(const JsonNode& node, std::uint64_t highest) {
  std::optional<std::uint64_t> number;
  if (node.kind == Kind::kNumber && node.whole) {
    number = node.number;
  } else if (node.kind == Kind::kText) {
    number = ParseSize(node.text);
  }
  if (!number || *number > highest) {
    Wrong(node, Format("must be a number from 0 to {}, or a text such as \"0x6c\"", Hex(highest)));
    return std::nullopt;
  }
  return number;
}

std::optional<std::size_t> ValueReader::Choice(const JsonNode& object, std::string_view key,
                                               std::initializer_list<std::string_view> words) {
  const JsonNode* const node = object.Find(key);
  if (node == nullptr) {
    return std::nullopt;
  }
  const auto* const found = std::ranges::find(words, std::string_view(node->text));
  if (node->kind != Kind::kText || found == words.end()) {
    Wrong(*node, Format("must be one of {}", List(words)));
    return std::nullopt;
  }
  return static_cast<std::size_t>(found - words.begin());
}

std::vector<std::string> ValueReader::Texts(const JsonNode& object, std::string_view key) {
  std::vector<std::string> texts;
  for (const JsonNode& item : Items(object.Find(key))) {
    if (item.kind == Kind::kText && !item.text.empty()) {
      texts.push_back(item.text);
    } else {
      Wrong(item, "must be a text that is not empty");
    }
  }
  return texts;
}

}  // namespace borvanusb
