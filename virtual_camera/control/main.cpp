// virtual-camera.exe: registers, inspects and controls the virtual cameras of a configuration file.

#include <windows.h>
// windows.h must come first.
#include <shellapi.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "com/configuration_file.h"
#include "control/commands.h"
#include "core/printable.h"
#include "core/wide_text.h"

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kWrongUse = 2;

// The arguments in UTF-8, last one first, as the parser requires; those of main are in the ANSI
// code page, which can't represent every file name.
std::vector<std::string> ReversedArguments() {
  int count = 0;
  LPWSTR* const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> reversed;
  for (int i = count - 1; i > 0; --i) {
    reversed.push_back(virtual_camera::Utf8Of(arguments[i]));
  }
  LocalFree(arguments);
  return reversed;
}

std::wstring DllBesideProgram() {
  std::wstring file(MAX_PATH, L'\0');
  DWORD length = GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size()));
  while (length == file.size()) {
    file.resize(file.size() * 2);
    length = GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size()));
  }
  file.resize(length);
  return file.substr(0, file.find_last_of(L"\\/") + 1) + L"BorvanVirtualCamera.dll";
}

// The command line: its options and the command that was given.
class CommandLine {
 public:
  CommandLine()
      : app_("Registers, inspects and controls virtual BorvanUSB cameras.", "virtual-camera") {
    // Must come before the commands, which inherit these settings.
    app_.require_subcommand(1);
    // A word that begins with / is the name of a file: /tmp/trace.jsonl under Wine.
    app_.allow_windows_style_options(false);
    app_.footer(
        "CAMERA is a camera's number in the configuration file (from 0), its name or its device "
        "path.\nExit codes: 0 done, 1 failed (one line on standard error), 2 wrong use.");
    app_.add_option("--config", file_,
                    "Configuration file (default: the one that BORVAN_VIRTUAL_CAMERA names, else "
                    "%ProgramData%\\BorvanUSB\\virtual-camera.json)");
    AddCommands();
    app_.fallthrough();
  }

  // Parses the arguments and runs the command. Returns the exit code.
  int Run() {
    try {
      app_.parse(ReversedArguments());
    } catch (const CLI::ParseError& error) {
      if (error.get_exit_code() == kDone) {
        return app_.exit(error);  // the help
      }
      std::cerr << "virtual-camera: " << virtual_camera::Printable(WrongUse(error))
                << "\nvirtual-camera --help shows more.\n";
      return kWrongUse;
    }
    if (*trace_) {
      virtual_camera::TraceCommand(trace_file_, std::cout);
    } else if (*unregister_) {
      virtual_camera::UnregisterCommand(std::cout);
    } else {
      RunWithConfiguration();
    }
    return kDone;
  }

 private:
  std::string WrongUse(const CLI::ParseError& error) const {
    if (!app_.get_subcommands().empty()) {
      const CLI::App& command = *app_.get_subcommands().front();
      const std::vector<std::string> extra = command.remaining();
      return command.get_name() + ": " +
             (extra.empty() ? error.what() : extra.front() + ": no such argument or option");
    }
    if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::RequiredError)) {
      return error.what();
    }
    std::string commands;
    for (const CLI::App* const command : app_.get_subcommands(nullptr)) {
      commands += (commands.empty() ? "" : ", ") + command->get_name();
    }
    const std::vector<std::string> others = app_.remaining();
    return others.empty()
               ? "a command is missing; must be one of " + commands
               : others.front() + ": no such command or option; commands are " + commands;
  }

  // In the order in which the help lists them.
  void AddCommands() {
    register_ = app_.add_subcommand(
        "register",
        "Make the plugged-in cameras of the file visible to all programs; replaces the "
        "cameras registered before (on Windows: needs administrator rights)");
    unregister_ = app_.add_subcommand("unregister", "Remove all virtual cameras");
    plug_ = app_.add_subcommand("plug", "Plug a camera in");
    unplug_ = app_.add_subcommand("unplug", "Unplug a camera");
    for (auto* const command : {plug_, unplug_}) {
      command->add_option("CAMERA", camera_, "Number, name or device path")->required();
    }
    cycle_ = app_.add_subcommand(
        "power-cycle", "Switch a camera's power off and on: registers get their initial values");
    reset_ = app_.add_subcommand("reset-faults", "Reset the counts of a camera's faults");
    state_ = app_.add_subcommand("state",
                                 "Show a camera's registers, flash and faults; changes nothing");
    for (auto* const command : {cycle_, reset_, state_}) {
      command->add_option("CAMERA", camera_, "Number, name or device path (default: all cameras)");
    }
    trace_ = app_.add_subcommand("trace", "Print a trace file in words, with a summary");
    trace_->add_option("FILE", trace_file_, "Trace file")->required();
    check_ = app_.add_subcommand("check", "Check the configuration file; changes nothing");
  }

  void RunWithConfiguration() {
    using namespace virtual_camera;
    const std::string file = file_.empty() ? ConfigurationFile() : file_;
    const Configuration configuration = LoadConfiguration(file);
    // Hosts with this environment could not use the cameras and could not report the reason.
    CheckProcessTrace(configuration, ProcessTraceFile());
    if (*check_) {
      CheckCommand(configuration, file, std::cout);
    } else if (*register_) {
      RegisterCommand(configuration, DllBesideProgram(), std::cout);
    } else if (*plug_) {
      PlugCommand(configuration, FindCamera(configuration, camera_), std::cout);
    } else if (*unplug_) {
      UnplugCommand(configuration, FindCamera(configuration, camera_), std::cout);
    } else if (*cycle_) {
      PowerCycleCommand(configuration, camera_, std::cout);
    } else if (*reset_) {
      ResetFaultsCommand(configuration, camera_, std::cout);
    } else {
      StateCommand(configuration, camera_, std::cout);
    }
  }

  CLI::App app_;
  std::string file_;
  std::string camera_;
  std::string trace_file_;
  CLI::App* register_ = nullptr;
  CLI::App* unregister_ = nullptr;
  CLI::App* plug_ = nullptr;
  CLI::App* unplug_ = nullptr;
  CLI::App* cycle_ = nullptr;
  CLI::App* reset_ = nullptr;
  CLI::App* state_ = nullptr;
  CLI::App* trace_ = nullptr;
  CLI::App* check_ = nullptr;
};

}  // namespace

int main() {
  // Never loads a DLL from the current folder, which may contain downloads.
  SetDllDirectoryW(L"");
  SetConsoleOutputCP(CP_UTF8);
  try {
    const int code = CommandLine().Run();
    if (!std::cout.flush()) {
      throw std::runtime_error("standard output: can't be written to its end");
    }
    return code;
  } catch (const std::exception& error) {
    std::cerr << "virtual-camera: " << virtual_camera::Printable(error.what()) << '\n';
    return kFailed;
  }
}
