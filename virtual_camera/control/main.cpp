// virtual-camera.exe: registers, inspects and handles the virtual cameras of a configuration file.

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

// The arguments in UTF-8, last one first, as the parser wants them; main's own are in the ANSI code
// page, which can't hold every file name.
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

int Run() {
  using namespace virtual_camera;
  CLI::App app("Registers, inspects and handles virtual BorvanUSB cameras.", "virtual-camera");
  app.require_subcommand(1);
  app.footer(
      "CAMERA is a camera's number in the configuration file (from 0), its name or its device "
      "path.\nExit codes: 0 done, 1 failed (one line on standard error), 2 wrong use.");

  std::string file;
  app.add_option("--config", file,
                 "Configuration file (default: the one that BORVAN_VIRTUAL_CAMERA names, else "
                 "%ProgramData%\\BorvanUSB\\virtual-camera.json)");
  std::string camera;
  std::string trace;

  const auto* const do_register = app.add_subcommand(
      "register",
      "Make the plugged-in cameras of the file visible to all programs; replaces the "
      "cameras registered before (on Windows: needs administrator rights)");
  const auto* const do_unregister = app.add_subcommand("unregister", "Remove all virtual cameras");
  auto* const plug = app.add_subcommand("plug", "Plug a camera in");
  auto* const unplug = app.add_subcommand("unplug", "Unplug a camera");
  for (auto* const command : {plug, unplug}) {
    command->add_option("CAMERA", camera, "Number, name or device path")->required();
  }
  auto* const cycle = app.add_subcommand(
      "power-cycle", "Take a camera's power away for a moment: registers get their initial values");
  auto* const reset =
      app.add_subcommand("reset-faults", "Let a camera's faults count their transfers anew");
  auto* const state =
      app.add_subcommand("state", "Show a camera's registers, flash and faults; changes nothing");
  for (auto* const command : {cycle, reset, state}) {
    command->add_option("CAMERA", camera, "Number, name or device path (default: all cameras)");
  }
  auto* const show_trace =
      app.add_subcommand("trace", "Print a trace file in words, with a summary");
  show_trace->add_option("FILE", trace, "Trace file")->required();
  const auto* const check = app.add_subcommand("check", "Check the configuration file only");
  app.fallthrough();

  try {
    app.parse(ReversedArguments());
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kWrongUse;
  }

  if (*show_trace) {
    TraceCommand(trace, std::cout);
    return kDone;
  }
  if (*do_unregister) {
    UnregisterCommand(std::cout);
    return kDone;
  }
  if (file.empty()) {
    file = ConfigurationFile();
  }
  const Configuration configuration = LoadConfiguration(file);
  // Hosts with this environment could not use the cameras, and have no way to say why.
  CheckProcessTrace(configuration, ProcessTraceFile());
  if (*check) {
    CheckCommand(configuration, file, std::cout);
    return kDone;
  }
  if (*do_register) {
    RegisterCommand(configuration, DllBesideProgram(), std::cout);
  } else if (*plug) {
    PlugCommand(configuration, FindCamera(configuration, camera), std::cout);
  } else if (*unplug) {
    UnplugCommand(configuration, FindCamera(configuration, camera), std::cout);
  } else if (*cycle) {
    PowerCycleCommand(configuration, camera, std::cout);
  } else if (*reset) {
    ResetFaultsCommand(configuration, camera, std::cout);
  } else {
    StateCommand(configuration, camera, std::cout);
  }
  return kDone;
}

}  // namespace

int main() {
  // No DLL is ever taken from the current folder, which may be one of downloads.
  SetDllDirectoryW(L"");
  SetConsoleOutputCP(CP_UTF8);
  try {
    const int code = Run();
    if (!std::cout.flush()) {
      throw std::runtime_error("standard output: can't be written to its end");
    }
    return code;
  } catch (const std::exception& error) {
    std::cerr << "virtual-camera: " << virtual_camera::Printable(error.what()) << '\n';
    return kFailed;
  }
}
