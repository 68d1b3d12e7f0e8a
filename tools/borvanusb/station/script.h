#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "command/command.h"
#include "command/context.h"

namespace borvanusb {

// Scripts for `run`. Each line is a command line without the program's name.

// A command line with its expanded text.
struct LineCommand {
  Arguments arguments;
  std::string expanded = {};  // the line with its variables replaced; empty without variables
};

struct ScriptLine {
  std::uint64_t line = 0;  // from 1
  std::string text;        // original text, trimmed
  LineCommand command;
};

// Parses a line. Returns nothing for a line without a command. Throws Failure kUsage.
using LineReader = std::function<std::optional<LineCommand>(const std::string& line)>;
// Runs a command, as Command::Run does.
using CommandRunner = std::function<ExitCode(const Command&, Context&)>;

// Checks the common options of a line. A line may only select another camera; output and time limit
// apply to the whole process. Throws Failure kUsage for other options.
//   where  "script"
void CheckLineOptions(const Arguments& arguments, const std::string& where);

// Runs a line with its own camera, else with that of `outer`. Throws Failure if the line fails, and
// kStopped if the user stops the script.
ExitCode RunLine(const Arguments& line, const CommandRunner& run, Context& outer,
                 nlohmann::ordered_json& result);

// Parses a whole script. If lines are invalid, prints all of them to standard error and throws
// Failure kUsage, so that nothing is run. Throws kFile if the text can't be read.
std::vector<ScriptLine> ReadScript(const std::string& file, const std::string& text,
                                   const LineReader& read_line, Context& context);

// Runs the lines in order, and prints each one before its output. Stops at the first failure; with
// `keep_going`, only at the end or when the user stops it. Returns the exit code of the failure,
// the highest if there are several. Failures are printed to standard error and added to the result.
ExitCode RunScript(const std::string& file, const std::vector<ScriptLine>& lines, bool keep_going,
                   const CommandRunner& run, Context& context);

}  // namespace borvanusb
