#include <algorithm>
#include <optional>
#include <stdexcept>

#include "base/format.h"
#include "command/templates.h"

namespace borvanusb {

namespace {

constexpr std::string_view kLettersOfNames = "ABCDEFGHIJKLMNOPQRSTUVWXYZ_";

struct Place {
  std::size_t begin = 0;
  std::size_t end = 0;  // position after the second @
  std::string_view name;
};

std::optional<Place> FindPlace(std::string_view line) {
  for (std::size_t begin = line.find('@'); begin != std::string_view::npos;
       begin = line.find('@', begin + 1)) {
    const std::size_t mark = line.find_first_not_of(kLettersOfNames, begin + 1);
    if (mark != std::string_view::npos && mark > begin + 1 && line[mark] == '@') {
      return Place{begin, mark + 1, line.substr(begin + 1, mark - begin - 1)};
    }
  }
  return std::nullopt;
}

const std::string& TextOf(std::string_view place, std::initializer_list<TemplateText> texts) {
  const auto* const found = std::ranges::find(texts, place, &TemplateText::place);
  if (found == texts.end()) {
    throw std::logic_error(Format("the place {} of a template has no text", place));
  }
  return found->text;
}

// `line` includes its line break.
void AppendLine(std::string& filled, std::string_view line,
                std::initializer_list<TemplateText> texts) {
  std::optional<Place> place = FindPlace(line);
  if (place && place->begin == 0 && line.substr(place->end) == "\n") {
    const std::string& text = TextOf(place->name, texts);
    filled += text;
    if (!text.empty() && !text.ends_with('\n')) {
      filled += '\n';
    }
    return;
  }
  for (; place; place = FindPlace(line)) {
    filled += line.substr(0, place->begin);
    filled += TextOf(place->name, texts);
    line.remove_prefix(place->end);
  }
  filled += line;
}

}  // namespace

std::string Filled(std::string_view form, std::initializer_list<TemplateText> texts) {
  std::string filled;
  while (!form.empty()) {
    const std::string_view line = form.substr(0, std::min(form.find('\n'), form.size() - 1) + 1);
    AppendLine(filled, line, texts);
    form.remove_prefix(line.size());
  }
  return filled;
}

}  // namespace borvanusb
