#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// Splits text files that users write, such as lists and scripts, into lines.

// An error in a file, or a remark about it.
struct ListProblem {
  std::uint64_t line = 0;  // 0: the whole file
  std::string text;

  bool operator==(const ListProblem&) const = default;
};

struct TextLine {
  std::uint64_t number = 0;  // starts at 1
  std::string_view text;     // without the \n, but with a \r before it
};

struct TextLines {
  std::vector<TextLine> lines;
  std::vector<ListProblem> problems;
};

// Splits the content of a file into lines. Skips a UTF-8 byte-order mark. Reports UTF-16 as a
// problem. A byte 0x1a ends the file, as on Windows; anything but blanks after it is reported as a
// problem.
//   content  must outlive the returned lines
//   kind     the kind of file, for the problems: "list"
TextLines SplitLines(std::string_view content, const std::string& kind);

// Returns the text without blanks at its start and end.
std::string_view Trimmed(std::string_view text);

// Sorts problems by line. Problems of the whole file come last.
void SortByLine(std::vector<ListProblem>& problems);

}  // namespace borvanusb
