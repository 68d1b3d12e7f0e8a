#include "base/text_lines.h"

#include <algorithm>
#include <limits>

#include "base/format.h"

namespace borvanusb {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr char kEndOfFile = 0x1A;
constexpr std::string_view kBlanks = " \t\r\n\v\f";

}  // namespace

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string_view::npos
             ? std::string_view()
             : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

TextLines SplitLines(std::string_view content, const std::string& kind) {
  TextLines split;
  if (content.starts_with("\xFF\xFE") || content.starts_with("\xFE\xFF")) {
    split.problems.push_back({0, "the file is UTF-16, which can't be read: save it as plain text"});
    return split;
  }
  if (content.starts_with(kUtf8Mark)) {
    content.remove_prefix(kUtf8Mark.size());
  }
  for (std::uint64_t number = 1; !content.empty(); ++number) {
    const std::size_t end = content.find('\n');
    const std::string_view text = content.substr(0, end);
    const std::size_t file_end = text.find(kEndOfFile);
    split.lines.push_back({number, text.substr(0, file_end)});
    if (file_end != std::string_view::npos) {
      if (content.find_first_not_of(" \t\r\n\x1A", file_end) != std::string_view::npos) {
        split.problems.push_back(
            {number, Format("a byte 0x1a (Ctrl-Z) ends the {} here, what follows would not be read",
                            kind)});
      }
      break;
    }
    content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
  }
  return split;
}

void SortByLine(std::vector<ListProblem>& problems) {
  const auto place = [](const ListProblem& problem) {
    return problem.line == 0 ? std::numeric_limits<std::uint64_t>::max() : problem.line;
  };
  std::stable_sort(problems.begin(), problems.end(),
                   [&](const ListProblem& left, const ListProblem& right) {
                     return place(left) < place(right);
                   });
}

}  // namespace borvanusb
