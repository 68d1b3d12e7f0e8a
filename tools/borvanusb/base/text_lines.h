#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// The lines of a text file that people write: lists and scripts.

// What is wrong with a file, or worth knowing of it.
struct ListProblem {
  std::uint64_t line = 0;  // 0: the file as a whole
  std::string text;

  bool operator==(const ListProblem&) const = default;
};

struct TextLine {
  std::uint64_t number = 0;  // from 1 on
  std::string_view text;     // without its \n; a \r before it stays
};

struct TextLines {
  std::vector<TextLine> lines;
  std::vector<ListProblem> problems;
};

// Splits a file's content into its lines. A UTF-8 byte-order mark is passed over, UTF-16 is a
// problem, and 0x1a ends the file as it does for Windows; what follows it, blanks apart, is a
// problem. `kind` names the file in problems: "list". The lines live as long as `content`.
TextLines SplitLines(std::string_view content, const std::string& kind);

// A part of a line without the blanks at its ends.
std::string_view Trimmed(std::string_view text);

// The problems in the order of their lines, those of the whole file last.
void SortByLine(std::vector<ListProblem>& problems);

}  // namespace borvanusb
