#include "list_document.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>

namespace test {
namespace {

const char kBlockStart[] = "```list";
const char kBlockEnd[] = "```";

std::uint32_t Hexadecimal(const std::string& text) {
  return static_cast<std::uint32_t>(std::stoul(text, nullptr, 16));
}

ListExample ReadRemark(const std::string& line) {
  static const std::regex kForm(
      R"(<!-- (i2c|register), ends with (100|11|0x[0-9A-F]{8}): (.+) -->)");
  ListExample example;
  example.remark = line;
  std::smatch parts;
  if (!std::regex_match(line, parts, kForm)) {
    ADD_FAILURE() << "the line before an example must say what becomes of it: " << line;
    return example;
  }
  example.is_i2c = parts[1] == "i2c";
  const std::string end = parts[2];
  example.status = static_cast<std::uint32_t>(std::stoul(end, nullptr, end[1] == 'x' ? 16 : 10));
  example.refused = parts[3] == "refused";
  std::istringstream entries(example.refused ? "" : parts[3].str());
  for (std::string entry; entries >> entry;) {
    const std::size_t sign = entry.find('=');
    example.entries.emplace_back(Hexadecimal(entry.substr(0, sign)),
                                 Hexadecimal(entry.substr(sign + 1)));
  }
  return example;
}

}  // namespace

std::vector<ListExample> ExamplesOf(const std::string& document) {
  std::ifstream file(document);
  EXPECT_TRUE(file.is_open()) << document;
  std::vector<ListExample> examples;
  bool inside = false;
  std::string before;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    if (line == kBlockEnd) {
      inside = false;
    } else if (inside) {
      examples.back().content += line + "\n";
    } else if (line == kBlockStart) {
      examples.push_back(ReadRemark(before));
      inside = true;
    }
    before = line;
  }
  return examples;
}

}  // namespace test
