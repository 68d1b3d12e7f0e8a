#pragma once

#include <chrono>
#include <cstdint>
#include <string>

// What the command line asks for.
struct Arguments {
  bool help = false;
  bool compare_only = false;
  std::string image;
  std::uint32_t address = 0;
  std::string camera;  // index or device path; empty: the only one
  std::string dump = "flash-dump.bin";
  std::chrono::seconds time_limit{600};
};

// Reads the command line. Throws Failure (kWrongArguments), which names the argument and what is
// allowed.
Arguments ParseArguments(int argc, const char* const* argv);

// The text of --help.
const char* HelpText();
