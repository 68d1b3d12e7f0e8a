#pragma once

#include <fstream>
#include <string>
#include <string_view>

namespace borvanusb {

// A text file that is whole at any moment: every line is in the file when Add returns.
class GrowingFile {
 public:
  // Replaces the file by an empty one. The name is UTF-8. Throws Failure kFile.
  explicit GrowingFile(std::string name);

  // Adds a line and its end. Throws Failure kFile.
  void Add(std::string_view line);

 private:
  std::string name_;
  std::ofstream file_;
};

}  // namespace borvanusb
