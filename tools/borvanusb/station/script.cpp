#include "station/script.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "base/failure.h"
#include "base/format.h"
#include "base/text_lines.h"
#include "camera/host.h"
#include "command/camera_wait.h"
#include "command/camera_work.h"
#include "output/output.h"
#include "output/progress.h"
#include "registers/list_problems.h"
#include "station/run.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

// Formats a line for output: words are separated by single blanks.
std::string InOneRow(std::string text) {
  std::replace(text.begin(), text.end(), '\t', ' ');
  return text;
}

std::string Place(const std::string& file, std::uint64_t line) {
  return Format("{}:{}: ", file, line);
}

Json ErrorJson(const Failure& failure) {
  return {{"code", static_cast<int>(failure.Code())},
          {"kind", KindOf(failure.Code())},
          {"message", failure.Message()},
          {"hint", failure.Hint()}};
}

}  // namespace

void CheckLineOptions(const Arguments& arguments, const std::string& where) {
  const CommonArguments standard;
  const CommonArguments& given = arguments.common;
  const std::vector<std::pair<const char*, bool>> options = {
      {"--json", given.json},
      {"--quiet", given.quiet},
      {"--verbose", given.verbose},
      {"--profile", !given.profile.empty()},
      {"--force-profile", given.force_profile},
      {"--trace", !given.trace.empty()},
      {"--log", !given.log.empty()},
      {"--profile", !given.profile.empty()},
      {"--force-profile", given.force_profile},
      {"--wait", given.wait != standard.wait},
      {"--timeout", given.timeout != standard.timeout},
      {"--progress", given.progress != standard.progress},
  };
  for (const auto& [name, is_given] : options) {
    if (is_given) {
      throw Failure(ExitCode::kUsage,
                    Format("{} applies to a whole {}, not to a line", name, where),
                    "Give it to borvanusb run itself.");
    }
  }
}

ExitCode RunLine(const Arguments& line, const CommandRunner& run, Context& outer, Json& result) {
  CommonArguments common = outer.common;
  if (!line.common.cameras.empty()) {
    common.cameras = line.common.cameras;
  }
  common.words = line.common.words;
  common.defaulted = line.common.defaulted;
  Context context{common, outer.host, outer.output, outer.progress, result};
  const CameraWait wait(context);
  try {
    const ExitCode code = run(*line.command, context);
    if (code == ExitCode::kDone && outer.host.StopRequested()) {
      // The line succeeded, but the user stopped the script.
      throw Failure(ExitCode::kStopped, "stopped by the user");
    }
    return code;
  } catch (const Failure&) {
    throw;
  } catch (const std::exception& error) {
    throw Failure(ExitCode::kInternal, error.what());
  }
}

std::vector<ScriptLine> ReadScript(const std::string& file, const std::string& text,
                                   const LineReader& read_line, Context& context) {
  const TextLines split = SplitLines(text, "script");
  std::vector<ListProblem> problems = split.problems;
  std::string hint = "Save the script as plain text, in UTF-8.";
  std::vector<ScriptLine> lines;
  for (const TextLine& line : split.lines) {
    const std::string words{Trimmed(line.text)};
    try {
      if (std::optional<LineCommand> command = read_line(words)) {
        CheckLineOptions(command->arguments, "script");
        if (ValuesOf<RunCommand>(*command->arguments.command) != nullptr) {
          throw Failure(ExitCode::kUsage, "a script can't run another one",
                        "Put the lines of the other script into this one.");
        }
        lines.push_back({line.number, words, std::move(*command)});
      }
    } catch (const Failure& failure) {
      problems.push_back({line.number, failure.Message()});
      hint = failure.Hint();
    }
  }
  SortByLine(problems);
  const ExitCode code = split.problems.empty() ? ExitCode::kUsage : ExitCode::kFile;
  RefuseProblems(file, problems, "nothing was run", {code, hint, "All of them are listed above."},
                 context);
  return lines;
}

ExitCode RunScript(const std::string& file, const std::vector<ScriptLine>& lines, bool keep_going,
                   const CommandRunner& run, Context& context) {
  context.result = {{"commands", Json::array()}};
  ExitCode worst = ExitCode::kDone;
  for (const ScriptLine& line : lines) {
    const std::string& expanded = line.command.expanded;
    context.output.Line(Format("> {}", InOneRow(expanded.empty() ? line.text : expanded)));
    if (!keep_going && !context.output.TakesResults()) {
      TellOutcome(
          context, "run",
          Format(
              "{}standard output can't be written; this line and the lines after it were not run",
              Place(file, line.line)));
      break;
    }
    Json result = Json::object();
    Json entry = {{"line", line.line}, {"text", line.text}};
    if (!expanded.empty()) {
      entry["expanded"] = expanded;
    }
    ExitCode code = ExitCode::kDone;
    try {
      code = RunLine(line.command.arguments, run, context, result);
      if (code != ExitCode::kDone) {
        TellOutcome(context, "run",
                    Format("{}ended with exit code {} ({})", Place(file, line.line),
                           static_cast<int>(code), KindOf(code)));
      }
      entry["exit"] = static_cast<int>(code);
      entry["result"] = std::move(result);
    } catch (const Failure& failure) {
      code = failure.Code();
      context.progress.Break();
      TellOutcome(context, "run", Place(file, line.line) + failure.Message());
      PrintHint(failure.Hint(), context.output);
      entry["exit"] = static_cast<int>(code);
      entry["error"] = ErrorJson(failure);
    }
    context.result["commands"].push_back(std::move(entry));
    worst = std::max(worst, code);
    if (code == ExitCode::kStopped || (code != ExitCode::kDone && !keep_going)) {
      break;
    }
  }
  return worst;
}

}  // namespace borvanusb
