// Lines of scripts: joining words with quotes and splitting them again must give the same words. A
// line is only rejected for an unclosed quote.

#include <algorithm>
#include <string>
#include <vector>

#include "base/failure.h"
#include "command/command_line.h"
#include "support/check.h"
#include "support/input.h"
#include "support/terminal_text.h"

namespace {
using namespace borvanusb;

using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;
using borvan_fuzz::CheckOneLine;
using borvan_fuzz::Input;

using Words = std::vector<std::string>;

void CheckSame(const Words& found, const Words& expected, const std::string& what) {
  CheckEqual(found.size(), expected.size(), what + ": the number of words");
  for (std::size_t i = 0; i < found.size(); ++i) {
    CheckEqual(found[i], expected[i], what + ": word " + std::to_string(i));
  }
}

// Blanks chosen by the input.
std::string Blanks(Input& input, std::size_t least) {
  static const std::vector<std::string> kBlanks = {"", " ", "\t", "  ", "\r", "\n", " \t "};
  const std::string chosen = kBlanks[input.Choice(static_cast<std::uint32_t>(kBlanks.size()))];
  return chosen.size() < least ? " " : chosen;
}

std::string Joined(const Words& words, Input& input) {
  std::string line = Blanks(input, 0);
  for (const std::string& word : words) {
    // A quote may start anywhere in a word.
    const std::size_t bare = std::min(word.find_first_of(" \t\r\n#"), std::size_t{input.Choice(4)});
    line += word.substr(0, std::min(bare, word.size())) + "\"" +
            (bare < word.size() ? word.substr(bare) : "") + "\"" + Blanks(input, 1);
  }
  return line + (input.Choice(2) == 0 ? "" : "# the rest \" is a remark");
}

void CheckRoundTrip(const std::string& text, Input& input) {
  Words words;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('"', begin), text.size());
    words.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  CheckSame(SplitLine(Joined(words, input)), words, "joined words");
}

void CheckLine(const std::string& line, Input& input) {
  try {
    const Words words = SplitLine(line);
    for (const std::string& word : words) {
      Check(word.find('"') == std::string::npos, "a word holds a quote");
    }
    CheckSame(SplitLine(Joined(words, input)), words, "the words of a line");
  } catch (const Failure& failure) {
    Check(failure.Code() == ExitCode::kUsage, "the code of a line that can't be split");
    CheckOneLine(failure.Message(), "the message");
    CheckOneLine(failure.Hint(), "the hint");
    Check(line.find('"') != std::string::npos, "a line without a quote is refused");
    CheckSame(SplitLine(line + "\""), SplitLine(line + "\" # closed"), "the line, closed");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input text(data, size);
  const std::vector<std::uint8_t> bytes = text.Rest();
  const std::string line(bytes.begin(), bytes.end());
  // The same bytes also choose how words are joined.
  Input choices(data, size);
  CheckRoundTrip(line, choices);
  CheckLine(line, choices);
  return 0;
}
