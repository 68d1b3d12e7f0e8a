#include "maps/plain_xml.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#if defined(_MSC_VER)
#include <intrin.h>
#endif

#include "maps/svd_tags.h"
#include "maps/xml_guard.h"

namespace borvanusb {

namespace {

constexpr int kFlags = rapidxml::parse_fastest | rapidxml::parse_validate_closing_tags |
                       rapidxml::parse_declaration_node | rapidxml::parse_pi_nodes;
constexpr std::string_view kDeclaration = "<?xml";
constexpr std::string_view kComment = "<!--";
constexpr std::string_view kBlanks = " \t\r\n";

// RapidXML recurses for each nested element, without a limit. Each call needs a node, and nodes are
// allocated in blocks of some hundred by TakeBlock(), which checks the depth of the stack. So
// excessive nesting is detected before the stack overflows.
constexpr std::uintptr_t kMostStack = std::uintptr_t{128} << 10U;
thread_local std::uintptr_t g_stack_start = 0;

std::uintptr_t StackPlace() {
#if defined(_MSC_VER)
  return reinterpret_cast<std::uintptr_t>(_AddressOfReturnAddress());
#else
  return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
#endif
}

void* TakeBlock(std::size_t size) {
  const std::uintptr_t place = StackPlace();
  if (std::max(place, g_stack_start) - std::min(place, g_stack_start) > kMostStack) {
    throw NotPlain();
  }
  return ::operator new(size);
}

void ReturnBlock(void* block) {
  ::operator delete(block);
}

// Finds the comments and references in a text.
class Scan {
 public:
  explicit Scan(std::string_view text) : text_(text) {}

  PlainFacts Run() {
    SkipDeclaration();
    PlainFacts facts;
    std::size_t reference = Find('&', place_);
    for (std::size_t mark = Find('!', place_);; mark = Find('!', place_)) {
      while (reference < mark) {
        if (!IsReference(text_.substr(reference))) {
          throw NotPlain();
        }
        facts.first_reference = facts.last_reference == 0 ? reference : facts.first_reference;
        facts.last_reference = reference;
        reference = Find('&', reference + 1);
      }
      if (mark == text_.size()) {
        return facts;
      }
      place_ = mark + 1;
      if (mark > 0 && text_[mark - 1] == '<') {
        SkipComment(mark - 1);
        if (reference < place_) {
          reference = Find('&', place_);
        }
      }
    }
  }

 private:
  // Returns the end of the text if the character is not found.
  std::size_t Find(char character, std::size_t from) const {
    const auto* const found =
        static_cast<const char*>(std::memchr(text_.data() + from, character, text_.size() - from));
    return found == nullptr ? text_.size() : static_cast<std::size_t>(found - text_.data());
  }

  void SkipDeclaration() {
    const std::size_t start = std::min(text_.find_first_not_of(kBlanks), text_.size());
    if (text_.substr(start).starts_with(kDeclaration)) {
      place_ = std::min(text_.find("?>", start), text_.size());
    }
  }

  // Skips a comment between elements. A comment within a text would split that text into pieces,
  // which is not plain.
  void SkipComment(std::size_t start) {
    const std::size_t end = text_.substr(start).starts_with(kComment)
                                ? text_.find("-->", start + kComment.size())
                                : std::string_view::npos;
    if (end == std::string_view::npos) {
      throw NotPlain();
    }
    place_ = end + 3;
    const std::size_t before = text_.substr(0, start).find_last_not_of(kBlanks);
    const std::size_t behind = text_.find_first_not_of(kBlanks, place_);
    if ((before != std::string_view::npos && text_[before] != '>') ||
        (behind != std::string_view::npos && text_[behind] != '<')) {
      throw NotPlain();
    }
  }

  std::string_view text_;
  std::size_t place_ = 0;
};

}  // namespace

PlainFacts ParsePlain(std::string& text, SvdDocument& document) {
  const PlainFacts facts = Scan(text).Run();
  document.set_allocator(TakeBlock, ReturnBlock);
  g_stack_start = StackPlace();
  try {
    document.parse<kFlags>(text.data());
  } catch (const rapidxml::parse_error&) {
    throw NotPlain();
  }
  return facts;
}

void PlainChecker::AnyNode(const SvdNode& node, std::uint32_t depth) {
  const std::string_view name(node.name(), node.name_size());
  const bool is_name =
      SvdTagOf(name) != SvdTag::kUnknown || std::all_of(name.begin(), name.end(), IsXmlName);
  if (node.type() != rapidxml::node_element || !is_name) {
    throw NotPlain();
  }
  WholeElement(node, depth);
}

// Only the declaration <?xml ...?> at the beginning is plain. RapidXML ends it after its
// attributes, other parsers at the first ?>.
void PlainChecker::BesideDevice(const SvdNode& node) {
  if (node.type() != rapidxml::node_declaration || node.previous_sibling() != nullptr) {
    throw NotPlain();
  }
  Attributes(node);
  for (const auto* one = node.first_attribute(); one != nullptr; one = one->next_attribute()) {
    if (std::string_view(one->value(), one->value_size()).find("?>") != std::string_view::npos) {
      throw NotPlain();
    }
  }
}

void PlainChecker::Content(const SvdNode& node, std::uint32_t depth) {
  for (const SvdNode* child = node.first_node(); child != nullptr; child = child->next_sibling()) {
    AnyNode(*child, depth + 1);
  }
}

void PlainChecker::Attributes(const SvdNode& node) {
  for (const auto* one = node.first_attribute(); one != nullptr; one = one->next_attribute()) {
    const std::string_view name(one->name(), one->name_size());
    const std::string_view value(one->value(), one->value_size());
    const bool apart = kBlanks.find(one->name()[-1]) != std::string_view::npos;
    if (!apart || !std::all_of(name.begin(), name.end(), IsXmlName) ||
        value.find('<') != std::string_view::npos) {
      throw NotPlain();
    }
  }
}

}  // namespace borvanusb
