#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/command_desk.h"

namespace borvanusb::tool_test {

// Runs scripts in a shell, which may not be installed, in the folder of one test.
class ShellScript {
 public:
  ShellScript(std::string shell, std::string option)
      : shell_(std::move(shell)), option_(std::move(option)) {}

  bool IsThere() const {
    return std::system(("command -v " + shell_ + " >/dev/null 2>&1").c_str()) == 0;
  }
  void Write(const std::string& file, const std::string& text) const { folder_.Write(file, text); }
  std::string Read(const std::string& file) const { return folder_.Read(file); }

  // Writes a fake program borvanusb, a script for sh.
  void WriteProgram(const std::string& script) const {
    const std::string file = folder_.Write("borvanusb", "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
  }

  // Runs a script in the folder. Returns its output lines.
  std::vector<std::string> Run(const std::string& program) const {
    folder_.Write("program", program + "\n");
    const std::string command =
        "cd '" + folder_.Name("") + "' && " + shell_ + " " + option_ + " program 2>&1";
    FILE* const pipe = popen(command.c_str(), "r");
    std::string text;
    std::array<char, 4096> part{};
    while (const std::size_t size = std::fread(part.data(), 1, part.size(), pipe)) {
      text.append(part.data(), size);
    }
    EXPECT_EQ(pclose(pipe), 0) << text;
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
      lines.push_back(line);
    }
    return lines;
  }

 private:
  TestFolder folder_;
  std::string shell_;
  std::string option_;
};

}  // namespace borvanusb::tool_test
