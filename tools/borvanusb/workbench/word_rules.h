#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "command/command_line.h"

namespace borvanusb {

// Which command lines the workbench runs for a page. A command that is not listed is refused, so
// that a new one is safe until somebody has judged it.

// What a command does to the camera or to files that the user keeps.
enum class CommandEffect {
  kReads,
  kWrites,
  kWritesWithValue,    // `flash word` writes when VALUE is given
  kWritesUnlessDryRun  // `flash program`
};

struct PageCommand {
  std::string_view words;  // "flash program"
  CommandEffect effect = CommandEffect::kReads;
  bool streams = false;  // prints a JSON object for each event and may continue for ever
};

// All commands that a page may run.
std::span<const PageCommand> PageCommands();

struct WordLimits {
  bool read_only = false;
  std::string journal_folder;  // where --journal may name a file; empty: nowhere
};

// What the server has to know of an accepted command line.
struct AcceptedWords {
  bool streams = false;
  bool takes_camera = false;
  bool takes_profile = false;
  // What the server puts in front of the words: --json, and --progress json if the command has it.
  std::vector<std::string> added;
};

// Throws Failure kUsage for words that the workbench does not run: another command, a file that is
// not a plain name, an option that the server sets itself, a write with `read_only`. Words that are
// only wrong pass: the command says best what is wrong with them.
AcceptedWords AcceptWords(const ToolDescription& tool, const std::vector<std::string>& words,
                          const WordLimits& limits);

}  // namespace borvanusb
