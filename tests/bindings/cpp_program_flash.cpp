// How ProgramFlash ends. Usage: cpp_program_flash CASE IMAGE. Exit code 0 when the case went as it
// should. As "flash program …" it stands in for a borvanusb that ends without a result.

#include <borvan_program_flash.hpp>

#include <chrono>
#include <cstdio>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

using borvan::ProgramOptions;

int Fail(const std::string& text) {
  std::cout << text << "\n";
  return 1;
}

std::string ThisProgram() {
  std::string name(MAX_PATH, '\0');
  name.resize(GetModuleFileNameA(nullptr, name.data(), MAX_PATH));
  return name;
}

int Done(const std::string& image, ProgramOptions options) {
  int last = -1;
  std::string remarks;
  options.on_progress = [&](const borvan::ProgramProgress& progress) { last = progress.percent; };
  options.on_remark = [&](const std::string& remark) { remarks += remark; };
  const auto result = borvan::ProgramFlash(image, options);
  const bool good = result.state == "done" && result.verified == true && last == 100 &&
                    !result.changed.empty() && !result.backup.empty() &&
                    result.sha256.size() == 64 && remarks.find("backup") != std::string::npos &&
                    result.json["camera"]["name"].text == "Good camera";
  return good ? 0 : Fail(result.state + " " + std::to_string(last) + " " + remarks);
}

int Cancelled(const std::string& image, ProgramOptions options) {
  std::atomic<bool> cancel{false};
  options.cancel = &cancel;
  options.on_progress = [&](const borvan::ProgramProgress& progress) {
    cancel = cancel || progress.stage == "program" || progress.stage == "erase";
  };
  try {
    return Fail(borvan::ProgramFlash(image, options).state);
  } catch (const borvan::ProgramError& error) {
    const bool good = error.ExitCode() == 9 && error.Name() == "stopped" && !error.Hint().empty();
    return good ? 0 : Fail(error.what());
  }
}

int CallbackThrows(const std::string& image, ProgramOptions options) {
  options.on_progress = [](const borvan::ProgramProgress& progress) {
    if (progress.stage == "program" || progress.stage == "erase") {
      throw std::runtime_error("enough");
    }
  };
  try {
    return Fail(borvan::ProgramFlash(image, options).state);
  } catch (const std::runtime_error& error) {
    return std::string(error.what()) == "enough" ? 0 : Fail(error.what());
  }
}

int Missing(const std::string& image, ProgramOptions options) {
  options.camera = "Nobody's camera";
  try {
    return Fail(borvan::ProgramFlash(image, options).state);
  } catch (const borvan::ProgramError& error) {
    const bool good = error.ExitCode() == 2 && error.Name() == "no-camera" &&
                      error.Kind() == borvan::ErrorKind::kProgram;
    return good ? 0 : Fail(error.what());
  }
}

int Without(const std::string& tool, const std::string& words) {
  ProgramOptions options;
  options.tool = tool;
  try {
    return Fail(borvan::ProgramFlash("image.bin", options).state);
  } catch (const borvan::Error& error) {
    const bool good = error.Kind() == borvan::ErrorKind::kProcess &&
                      std::string(error.what()).find(words) != std::string::npos;
    return good ? 0 : Fail(error.what());
  }
}

int Run(int argc, char** argv) {
  const std::string which = argc > 1 ? argv[1] : "";
  const std::string image = argc > 2 ? argv[2] : "";
  ProgramOptions options;
  options.camera = "Good camera";
  options.address = 0x2000;
  options.timeout = std::chrono::minutes(1);  // the machine may be busy
  if (which == "flash") {
    std::cout << "{\"state\":";
    std::cerr << "the end\n";
    return 0;
  }
  if (which == "done") {
    return Done(image, options);
  }
  options.camera = "Slow flash";
  if (which == "cancelled") {
    return Cancelled(image, options);
  }
  if (which == "callback") {
    return CallbackThrows(image, options);
  }
  if (which == "missing") {
    return Missing(image, options);
  }
  if (which == "no-tool") {
    return Without("C:\\no such tool.exe", "can't be started");
  }
  return which == "no-result" ? Without(ThisProgram(), "without a result\nthe end") : 2;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 3;
  }
}
