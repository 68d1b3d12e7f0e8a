#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace test {

// An example of the document about list files, with what its remark promises.
struct ListExample {
  std::string remark;        // what the remark says, for messages
  std::string content;       // the lines of the example
  bool is_i2c = false;       // else a list of chip registers
  std::uint32_t status = 0;  // how the job ends: 100, or its status
  bool refused = false;      // the reader raises
  std::vector<std::pair<std::uint32_t, std::uint32_t>> entries;
};

// The examples of the document, in its order. Each block marked "list" must follow a remark like
// <!-- i2c, ends with 100: fff8=6c fffe=03 3012=5a -->; where it does not, the test fails.
std::vector<ListExample> ExamplesOf(const std::string& document);

}  // namespace test
