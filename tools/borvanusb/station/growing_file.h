#pragma once

#include <fstream>
#include <string>
#include <string_view>

namespace borvanusb {

// A text file that is always complete: when Add returns, the line is in the file.
class GrowingFile {
 public:
  // Creates an empty file, replacing an existing one. The name is UTF-8. Throws Failure kFile.
  explicit GrowingFile(std::string name);

  // Adds a line with its line end. Throws Failure kFile.
  void Add(std::string_view line);

 private:
  std::string name_;
  std::ofstream file_;
};

}  // namespace borvanusb
