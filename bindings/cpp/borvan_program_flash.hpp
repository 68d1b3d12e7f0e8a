#pragma once

// ProgramFlash: the safe way to program a flash, by `borvanusb flash program` in a separate
// process. The tool keeps a backup and a journal, changes only the bytes of the image and reads
// them back. All texts here are UTF-8. This header includes windows.h.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "borvan_error.hpp"
#include "borvan_json.hpp"
#include "borvan_process.hpp"

namespace borvan {

// The progress; see docs/json/progress.schema.json.
struct ProgramProgress {
  std::string stage;  // read, erase, program or verify
  std::uint64_t done = 0;
  std::uint64_t total = 0;
  std::string unit;
  int percent = 0;  // of the stage
  std::optional<std::uint64_t> rate;
  std::optional<std::uint64_t> seconds_left;
};

struct ProgramOptions {
  // Where the first byte goes; nullopt: at 0, unless the name of the image has another address.
  std::optional<std::uint32_t> address;
  std::string camera;       // as --camera; empty: the only camera
  std::string backup;       // file of the old bytes; empty: a name beside the image
  bool keep_backup = true;  // false: --no-backup
  bool verify = true;       // false: --no-verify
  bool dry_run = false;     // plan and change nothing
  bool restore_on_failure = false;
  bool force = false;      // take images that look wrong
  std::string flash_size;  // as --flash-size, such as "1M"; empty: the tool finds it
  std::chrono::milliseconds timeout{10000};  // without progress, 0.1 s to an hour
  std::vector<std::string> more_arguments;   // further options of the tool

  std::string tool;  // borvanusb.exe; empty: the one in the folder of this program
  std::function<void(const ProgramProgress&)> on_progress;  // on the caller's thread
  std::function<void(const std::string&)> on_remark;        // each other line of standard error
  const std::atomic<bool>* cancel = nullptr;  // set to true: stop at the next safe place
};

struct FlashRange {
  std::uint32_t first = 0;
  std::uint32_t last = 0;  // included
};

// The result. docs/json/flash-program.schema.json describes all of `json`.
struct ProgramResult {
  std::string state;                // "done", "unchanged" and others
  std::optional<bool> verified;     // nullopt: nothing was read back
  std::string backup;               // file with the old bytes; empty: none
  std::vector<FlashRange> changed;  // sectors that differed
  std::uint64_t changed_bytes = 0;
  std::string sha256;  // of the image
  double seconds = 0;
  Json json;
};

// The failure that borvanusb reported. Kind() is ErrorKind::kProgram.
class ProgramError : public Error {
 public:
  ProgramError(int exit_code, std::string name, const std::string& message, std::string hint)
      : Error(ErrorKind::kProgram, message),
        exit_code_(exit_code),
        name_(std::move(name)),
        hint_(std::move(hint)) {}

  int ExitCode() const noexcept { return exit_code_; }        // 1 to 10
  const std::string& Name() const noexcept { return name_; }  // such as "stopped"
  const std::string& Hint() const noexcept { return hint_; }  // what to do; may be empty

 private:
  int exit_code_;
  std::string name_;
  std::string hint_;
};

namespace detail {

inline std::wstring ToolBesideThisProgram() {
  std::wstring name(32768, L'\0');
  name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
  return name.substr(0, name.find_last_of(L'\\') + 1) + L"borvanusb.exe";
}

inline std::vector<std::wstring> ProgramArguments(const std::string& image,
                                                  const ProgramOptions& options) {
  const std::string milliseconds = std::to_string(1000 + options.timeout.count() % 1000).substr(1);
  const std::string seconds = std::to_string(options.timeout.count() / 1000);
  std::vector<std::wstring> line = {options.tool.empty() ? ToolBesideThisProgram()
                                                         : FromUtf8(options.tool)};
  for (const char* const word : {"flash", "program", "--json", "--progress", "json"}) {
    line.push_back(FromUtf8(word));
  }
  const auto with_value = [&line](const wchar_t* name, const std::string& value) {
    if (!value.empty()) {
      line.push_back(std::wstring(name) + L"=" + FromUtf8(value));
    }
  };
  const auto flag = [&line](const wchar_t* name, bool is_set) {
    if (is_set) {
      line.emplace_back(name);
    }
  };
  with_value(L"--timeout", seconds + "." + milliseconds);
  with_value(L"--address", options.address ? std::to_string(*options.address) : "");
  with_value(L"--camera", options.camera);
  with_value(L"--backup", options.backup);
  with_value(L"--flash-size", options.flash_size);
  flag(L"--no-backup", !options.keep_backup);
  flag(L"--no-verify", !options.verify);
  flag(L"--dry-run", options.dry_run);
  flag(L"--restore-on-failure", options.restore_on_failure);
  flag(L"--force", options.force);
  for (const std::string& argument : options.more_arguments) {
    line.push_back(FromUtf8(argument));
  }
  line.emplace_back(L"--");
  line.push_back(FromUtf8(image));
  return line;
}

inline std::optional<std::uint64_t> OptionalNumber(const Json& value) {
  return value.IsNull() ? std::nullopt : std::optional(value.As<std::uint64_t>());
}

// Gives a line of standard error to those who asked for it. Returns whether it was a remark.
inline bool PassOn(const std::string& line, const ProgramOptions& options) {
  Json value;
  if (!ReadJson(line, value) || value["progress"].type != Json::Type::kObject) {
    if (options.on_remark) {
      options.on_remark(line);
    }
    return true;
  }
  if (options.on_progress) {
    const Json& progress = value["progress"];
    options.on_progress({progress["stage"].text, progress["done"].As<std::uint64_t>(),
                         progress["total"].As<std::uint64_t>(), progress["unit"].text,
                         progress["percent"].As<int>(), OptionalNumber(progress["rate"]),
                         OptionalNumber(progress["seconds_left"])});
  }
  return false;
}

inline constexpr DWORD kWaitMilliseconds = 50;
inline constexpr int kWaitsAfterEnd = 40;  // without a line

// Waits for the end of the process and returns the remarks. An exception of a callback stops the
// tool as `cancel` does, and is thrown when the tool has ended.
inline std::string Follow(Process& process, const ProgramOptions& options) {
  std::string remarks;
  std::exception_ptr raised;
  bool interrupted = false;
  bool ended = false;
  int waits_after_end = 0;
  while (!ended) {
    const auto line = process.NextLine(kWaitMilliseconds, ended);
    if (line && !raised) {
      waits_after_end = 0;
      try {
        if (PassOn(*line, options)) {
          remarks += *line + "\n";
        }
      } catch (...) {
        raised = std::current_exception();
      }
    }
    if (process.HasEnded() && ++waits_after_end == kWaitsAfterEnd) {
      process.StopReading();
    }
    const bool stop = raised || (options.cancel != nullptr && options.cancel->load());
    if (stop && !interrupted) {
      interrupted = process.Interrupt();
    }
  }
  if (raised) {
    std::string output;
    process.Finish(output);
    std::rethrow_exception(raised);
  }
  return remarks;
}

inline ProgramResult ResultOf(Json json) {
  ProgramResult result;
  result.state = json["state"].text;
  if (!json["verified"].IsNull()) {
    result.verified = json["verified"].boolean;
  }
  result.backup = json["backup"].text;
  for (const Json& range : json["changed"].elements) {
    result.changed.push_back(
        {range["first"].As<std::uint32_t>(), range["last"].As<std::uint32_t>()});
  }
  result.changed_bytes = json["changed_bytes"].As<std::uint64_t>();
  result.sha256 = json["image"]["sha256"].text;
  result.seconds = json["seconds"]["total"].As<double>();
  result.json = std::move(json);
  return result;
}

}  // namespace detail

// Programs the bytes of a file into the flash of a camera and returns when the tool has ended,
// which never waits without limit. No Camera may be using the camera meanwhile. Throws ProgramError
// when the tool fails, and Error (ErrorKind::kProcess) when it can't be started or ends without a
// result.
inline ProgramResult ProgramFlash(const std::string& image, const ProgramOptions& options = {}) {
  detail::Process process;
  const DWORD problem = process.Start(detail::ProgramArguments(image, options));
  if (problem != 0) {
    throw Error(ErrorKind::kProcess, "ProgramFlash: borvanusb can't be started: error " +
                                         std::to_string(problem) + " of the system");
  }
  const std::string remarks = detail::Follow(process, options);
  std::string output;
  const auto code = static_cast<int>(process.Finish(output));
  Json json;
  const bool is_json = detail::ReadJson(output, json);
  const Json& error = json["error"];
  if (code != 0 && is_json && error.type == Json::Type::kObject) {
    throw ProgramError(code, error["kind"].text, error["message"].text, error["hint"].text);
  }
  if (code != 0 || !is_json || json["state"].text.empty()) {
    throw Error(ErrorKind::kProcess, "ProgramFlash: borvanusb ended with code " +
                                         std::to_string(code) + " and without a result\n" +
                                         remarks);
  }
  return detail::ResultOf(std::move(json));
}

}  // namespace borvan
