#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "camera/host.h"
#include "output/result_stream.h"

namespace borvanusb {

struct CommandRule;

// The destinations of a process's output.
struct ToolStreams {
  ResultSink output;
  // Write errors here are ignored, because there is no other place to report them.
  std::function<void(std::string_view)> error;
  bool output_is_terminal = false;
  bool error_is_terminal = false;
  std::function<int()> columns;
  // Moves the cursor of the terminal up by this number of lines, to the start of the line.
  std::function<void(int)> move_up;
};

// Runs a command line, without the program's name. Returns the exit code.
int RunTool(const std::vector<std::string>& words, Host& host, const ToolStreams& streams);
// The same with other commands than those of the tool.
int RunTool(const std::vector<std::string>& words, Host& host, const ToolStreams& streams,
            const std::vector<CommandRule>& rules);

// Reports the failure of a command that could not end by itself.
void ReportFailure(const std::vector<std::string>& words, const Failure& failure,
                   const std::vector<std::string>& last_words, const ToolStreams& streams);

}  // namespace borvanusb
