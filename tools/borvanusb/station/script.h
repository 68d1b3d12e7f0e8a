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

// Scripts of `run`: command lines without the program's name, one to a line.

// What a line runs.
struct LineCommand {
  Arguments arguments;
  std::string expanded = {};  // the line with the values of its variables; empty without variables
};

struct ScriptLine {
  std::uint64_t line = 0;  // from 1 on
  std::string text;        // as it stands, without blanks around
  LineCommand command;
};

// Reads one line; nothing for a line without a command. Throws Failure kUsage.
using LineReader = std::function<std::optional<LineCommand>(const std::string& line)>;
// Runs a command, as Command::Run does.
using CommandRunner = std::function<ExitCode(const Command&, Context&)>;

// Of the common options only the camera can be another for each line: output and time limit belong
// to the process. Throws Failure kUsage for the others.
//   where  "script"
void CheckLineOptions(const Arguments& arguments, const std::string& where);

// Runs a line with its own camera or that of `outer`. Throws Failure for what keeps it from being
// run well, kStopped also when the user wants no further line.
ExitCode RunLine(const Arguments& line, const CommandRunner& run, Context& outer,
                 nlohmann::ordered_json& result);

// Reads a whole script. Tells every line that can't be run on standard error and throws Failure:
// kUsage for such lines, kFile for a text that can't be read. Nothing runs then.
std::vector<ScriptLine> ReadScript(const std::string& file, const std::string& text,
                                   const LineReader& read_line, Context& context);

// Runs the lines one after the other, each shown before its output. Ends at the first that fails,
// or with `keep_going` at the end or when the user stops it, and returns the code of the failure,
// the highest of several. The failures are told on standard error and in the result.
ExitCode RunScript(const std::string& file, const std::vector<ScriptLine>& lines, bool keep_going,
                   const CommandRunner& run, Context& context);

}  // namespace borvanusb
