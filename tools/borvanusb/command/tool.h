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

// Where a process's texts go.
struct ToolStreams {
  ResultSink output;
  // What can't be written there is lost: there is no other place to tell it.
  std::function<void(std::string_view)> error;
  bool output_is_terminal = false;
  bool error_is_terminal = false;
  std::function<int()> columns;
  // Puts the cursor of the terminal to the start of the line so many lines further up.
  std::function<void(int)> move_up;
};

// Runs a command line, without the program's name. Returns the exit code.
int RunTool(const std::vector<std::string>& words, Host& host, const ToolStreams& streams);
// The same with other commands than the tool's.
int RunTool(const std::vector<std::string>& words, Host& host, const ToolStreams& streams,
            const std::vector<CommandRule>& rules);

// The failure of a command that could not end by itself.
void ReportFailure(const std::vector<std::string>& words, const Failure& failure,
                   const std::vector<std::string>& last_words, const ToolStreams& streams);

}  // namespace borvanusb
