#include "command/tool.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <variant>

#include "base/format.h"
#include "base/numbers.h"
#include "command/camera_wait.h"
#include "command/command_line.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/option_defaults.h"
#include "command/run_log.h"
#include "output/make_progress.h"
#include "output/printable.h"
#include "output/text_output.h"

namespace borvanusb {

namespace {

std::string JsonText(const nlohmann::ordered_json& json) {
  // Names of files and cameras may contain invalid characters. They must not make the whole object
  // unreadable.
  return Format("{}\n",
                PrintableJson(json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)));
}

// An invalid command line may still contain --json.
bool AsksForJson(const std::vector<std::string>& words) {
  const auto end = std::find(words.begin(), words.end(), "--");
  return std::find(words.begin(), end, "--json") != end;
}

Failure Unexpected(const std::string& what) {
  return {ExitCode::kInternal, Format("internal error: {}", what),
          "Please report it with this command line and what borvanusb doctor prints."};
}

// Converts the current exception.
Failure CurrentFailure() {
  try {
    throw;
  } catch (const Failure& failure) {
    return failure;
  } catch (const std::bad_alloc&) {
    return {ExitCode::kInternal, "there is not enough memory",
            "Close other programs, or do less at a time."};
  } catch (const std::exception& exception) {
    return Unexpected(exception.what());
  } catch (...) {
    return Unexpected("an exception without a text");
  }
}

// Indents each line of a text.
std::string Indented(const std::string& text) {
  std::string lines;
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    lines += Format("  {}\n", Printable(text.substr(begin, end - begin)));
    begin = end + 1;
  }
  return lines;
}

// The output streams of a process, copied to the log once it is open.
class LoggedStreams {
 public:
  explicit LoggedStreams(const ToolStreams& plain) : plain_(plain), logged_(plain) {
    logged_.output = [this](std::string_view text) {
      auto problem = plain_.output(text);
      if (!problem) {
        Add(RunLog::Kind::kOutput, text);
      }
      return problem;
    };
    logged_.error = [this](std::string_view text) {
      plain_.error(text);
      Add(RunLog::Kind::kError, text);
    };
  }
  LoggedStreams(const LoggedStreams&) = delete;
  LoggedStreams& operator=(const LoggedStreams&) = delete;
  ~LoggedStreams() = default;

  // Throws Failure kFile.
  void Open(const std::string& file, const std::vector<std::string>& words,
            const RunLog::Clock& clock) {
    if (!file.empty()) {
      log_.emplace(file, clock);
      log_->Add(RunLog::Kind::kRun, Printable(CommandLineText(words)));
    }
  }
  // Logs how the run ended.
  void Close(int code) {
    if (!log_) {
      return;
    }
    log_->Add(RunLog::Kind::kEnd, Format("exit code {}", code));
    if (!log_->IsWhole()) {
      plain_.error(Format("borvanusb: --log: {} can't be written any more; it is incomplete\n",
                          Printable(log_->Name())));
    }
  }

  bool HasLog() const { return log_.has_value(); }
  void Add(RunLog::Kind kind, std::string_view text) {
    if (log_ && !paused_) {
      log_->Add(kind, text);
    }
  }
  // Runs `work` without logging its output.
  void Unlogged(const std::function<void()>& work) {
    paused_ = true;
    work();
    paused_ = false;
  }

  const ToolStreams& Plain() const { return plain_; }
  const ToolStreams& Logged() const { return logged_; }

 private:
  const ToolStreams& plain_;
  ToolStreams logged_;
  std::optional<RunLog> log_;
  bool paused_ = false;
};

int Report(const std::string& command, const Failure& failure, bool json, ResultStream& results,
           const ToolStreams& streams) {
  std::string text = Format("borvanusb: {}{}\n", command.empty() ? "" : Format("{}: ", command),
                            Printable(failure.Message()));
  text += Indented(failure.Hint());
  streams.error(text);
  const int code = static_cast<int>(failure.Code());
  if (json) {
    nlohmann::ordered_json error;
    error["code"] = code;
    error["kind"] = KindOf(failure.Code());
    error["message"] = failure.Message();
    error["hint"] = failure.Hint();
    results.Write(JsonText({{"error", error}}));
  }
  return code;
}

// The defaults of options. With --wait, the camera that they depend on may be connected later.
OptionDefaults DefaultsFor(const CommonArguments& common, Host& host, const ToolStreams& streams) {
  constexpr std::chrono::milliseconds kInterval{250};
  host.Configure(common);
  const auto begin = host.Clock();
  bool told = common.quiet;
  while (true) {
    OptionDefaults defaults = ToolKnowledge().defaults(common, host);
    if (!defaults.failure || defaults.failure->Code() != ExitCode::kNoCamera ||
        common.wait.count() == 0) {
      return defaults;
    }
    if (host.StopRequested() || host.Clock() - begin >= common.wait) {
      throw Failure(*defaults.failure);
    }
    if (!told) {
      told = true;
      const std::chrono::duration<double> limit = common.wait;
      streams.error(Format("{}; waiting for it, {} s at most\n",
                           Printable(defaults.failure->Message()), limit.count()));
    }
    host.Sleep(kInterval);
  }
}

void TellDefaults(const Arguments& arguments, Output& output) {
  for (const std::string& option : arguments.common.defaulted) {
    output.Detail(Format("{}: from the profile {}", option, arguments.defaults_file));
  }
}

// Checks, while a command runs, that its camera matches the given profile.
class CheckedCamera {
 public:
  CheckedCamera(const Arguments& arguments, Host& host) : host_(host) {
    Host::CameraCheck check;
    if (arguments.takes_profile) {
      check = [&](const CameraIdentity& camera) {
        ToolKnowledge().require_fit(camera, arguments.common, host);
      };
    }
    before_ = host.SetCameraCheck(std::move(check));
  }
  CheckedCamera(const CheckedCamera&) = delete;
  CheckedCamera& operator=(const CheckedCamera&) = delete;
  ~CheckedCamera() { host_.SetCameraCheck(std::move(before_)); }

 private:
  Host& host_;
  Host::CameraCheck before_;
};

std::unique_ptr<Progress> ProgressOf(const CommonArguments& common, Host& host,
                                     LoggedStreams& logged) {
  const ToolStreams& plain = logged.Plain();
  const auto clock = [&host] { return host.Clock(); };
  auto shown = MakeProgress(common.quiet ? ProgressMode::kNone : common.progress,
                            plain.error_is_terminal, plain.columns, plain.error, clock);
  if (!logged.HasLog()) {
    return shown;
  }
  return ShowOnBoth(
      std::move(shown),
      MakeProgressOfEnds(
          [&logged](std::string_view text) { logged.Add(RunLog::Kind::kError, text); }, clock));
}

int RunArguments(const Arguments& arguments, Host& host, ResultStream& results,
                 LoggedStreams& logged) {
  const CommonArguments& common = arguments.common;
  const ToolStreams& streams = logged.Logged();
  const auto progress = ProgressOf(common, host, logged);
  // Text must not be written into the line of a progress bar.
  const auto output_around_bar = [&](std::string_view text) {
    if (streams.output_is_terminal) {
      progress->Hide();
    }
    results.Write(text);
  };
  const auto error_around_bar = [&](std::string_view text) {
    progress->Hide();
    streams.error(text);
  };
  TextOutputOptions options{common.json, common.quiet, common.verbose};
  options.takes_results = [&results] { return !results.Problem(); };
  options.output_is_terminal = streams.output_is_terminal;
  options.bytes = [&](std::string_view bytes) {
    logged.Unlogged([&] { output_around_bar(bytes); });
    logged.Add(RunLog::Kind::kOutput, Format("{} of the result", SizeText(bytes.size())));
  };
  options.rows = [&](std::string_view text) { logged.Unlogged([&] { error_around_bar(text); }); };
  if (streams.error_is_terminal) {
    options.columns = streams.columns;
    options.move_up = streams.move_up;
  }
  TextOutput output(output_around_bar, error_around_bar, options);
  const auto tell_details = [&] {
    for (const std::string& detail : common.verbose ? host.Details() : std::vector<std::string>()) {
      output.Detail(detail);
    }
  };
  nlohmann::ordered_json result;
  try {
    host.Configure(common);
    Context context{common, host, output, *progress, result};
    TellDefaults(arguments, output);
    const CheckedCamera checked(arguments, host);
    const CameraWait wait(context);
    const ExitCode code = arguments.command->Run(context);
    progress->Break();
    tell_details();
    if (common.json && !result.is_null()) {
      results.Write(JsonText(result));
    }
    return static_cast<int>(code);
  } catch (...) {
    const Failure failure = CurrentFailure();
    progress->Break();
    tell_details();
    return Report(arguments.words, failure, common.json, results, streams);
  }
}

int RunWords(const std::vector<std::string>& words, Host& host, ResultStream& results,
             LoggedStreams& logged, const CommandRules& rules) {
  const ToolStreams& streams = logged.Logged();
  try {
    const auto parsed = ParseCommandLine(words, rules, [&](const CommonArguments& common) {
      return DefaultsFor(common, host, streams);
    });
    if (const auto* const answer = std::get_if<TextAnswer>(&parsed)) {
      results.Write(answer->text);
      return static_cast<int>(ExitCode::kDone);
    }
    const auto& arguments = std::get<Arguments>(parsed);
    logged.Open(arguments.common.log, words, [&host] { return host.Now(); });
    return RunArguments(arguments, host, results, logged);
  } catch (...) {
    return Report("", CurrentFailure(), AsksForJson(words), results, streams);
  }
}

// Returns the exit code for lost output, which is never that of a success.
int ReportLoss(const WriteProblem& problem, int code, const ToolStreams& streams) {
  // If the reader closed the pipe, as `head` does, it has what it needs.
  if (!problem.reader_is_gone) {
    streams.error(
        Format("borvanusb: standard output can't be written: {}; the output is incomplete\n"
               "  Check that there is room on the disk, and repeat the command.\n",
               Printable(problem.why)));
  }
  return code != static_cast<int>(ExitCode::kDone) ? code : static_cast<int>(ExitCode::kFile);
}

}  // namespace

int RunTool(const std::vector<std::string>& words, Host& host, const ToolStreams& streams) {
  return RunTool(words, host, streams, AllCommandRules());
}

int RunTool(const std::vector<std::string>& words, Host& host, const ToolStreams& streams,
            const CommandRules& rules) {
  LoggedStreams logged(streams);
  ResultStream results(logged.Logged().output);
  int code = RunWords(words, host, results, logged, rules);
  if (results.Problem()) {
    code = ReportLoss(*results.Problem(), code, logged.Logged());
  }
  logged.Close(code);
  return code;
}

void ReportFailure(const std::vector<std::string>& words, const Failure& failure,
                   const std::vector<std::string>& last_words, const ToolStreams& streams) {
  // Ends the line of a progress bar that the command may have left.
  if (streams.error_is_terminal) {
    streams.error("\n");
  }
  LoggedStreams logged(streams);
  std::string command;
  std::string log;
  try {
    const auto parsed = ParseCommandLine(words);
    if (const auto* const arguments = std::get_if<Arguments>(&parsed)) {
      command = arguments->words;
      log = arguments->common.log;
    }
    logged.Open(log, words, [] { return std::chrono::system_clock::now(); });
  } catch (const Failure& problem) {
    if (!log.empty()) {
      streams.error(Format("borvanusb: {}\n", Printable(problem.Message())));
    }
  }
  ResultStream results(logged.Logged().output);
  const int code = Report(command, failure, AsksForJson(words), results, logged.Logged());
  for (const std::string& line : last_words) {
    logged.Logged().error(Indented(line));
  }
  logged.Close(code);
}

}  // namespace borvanusb
