#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "command/command_line.h"

namespace borvanusb {

// The command lines that pages may run. A command that is not listed is refused, so a new command
// is safe until it has been reviewed.

// The effect of a command on the camera or on the user's files.
enum class CommandEffect {
  kReads,
  kWrites,
  kWritesWithValue,    // `flash word` writes if VALUE is given
  kWritesUnlessDryRun  // `flash program`
};

struct PageCommand {
  std::string_view words;  // "flash program"
  CommandEffect effect = CommandEffect::kReads;
  bool streams = false;  // prints a JSON object for each event, possibly forever
};

// All commands that pages may run.
std::span<const PageCommand> PageCommands();

struct WordLimits {
  bool read_only = false;
  std::string journal_folder;  // the only folder for --journal; empty: none
};

// Details of an accepted command line for the server.
struct AcceptedWords {
  bool streams = false;
  bool takes_camera = false;
  bool takes_profile = false;
  // Words that the server adds: --json, and --progress json if the command supports it.
  std::vector<std::string> added;
};

// Throws Failure kUsage for words that the workbench does not run: an unlisted command, a file that
// is not a plain name, an option that the server sets itself, or a write with `read_only`. Other
// mistakes are accepted here, because the command itself reports them best.
AcceptedWords AcceptWords(const ToolDescription& tool, const std::vector<std::string>& words,
                          const WordLimits& limits);

}  // namespace borvanusb
