#pragma once

// Helpers for the tests of the flash commands: a separate folder, images, running a command.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <vector>

#include "base/failure.h"
#include "command/command.h"
#include "command/context.h"
#include "support/fake_camera.h"

namespace borvanusb::tool_test {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kKibi = 1024;
constexpr std::size_t kMebi = 1024 * kKibi;

// Bytes that look like firmware: no two equal words, no long runs of 0 or 0xff.
Bytes Pattern(std::size_t size, std::uint32_t seed);

// `bytes` with `part` written over them at `offset`.
Bytes Overlaid(Bytes bytes, std::size_t offset, const Bytes& part);

// The result of a command.
// NOLINTNEXTLINE(bugprone-exception-escape): moving a JSON value throws nothing; it only asserts
struct Outcome {
  ExitCode code = ExitCode::kDone;
  std::string message;  // of a failure
  std::string hint;
  nlohmann::ordered_json result;
};

class FlashTest : public testing::Test {
 protected:
  FlashTest();
  ~FlashTest() override;

  std::string File(const std::string& name) const { return (folder_ / name).string(); }
  std::string WriteFile(const std::string& name, const Bytes& bytes) const;
  Bytes ReadFile(const std::string& name) const;
  // The files of the folder that contain `part`.
  std::vector<std::string> FilesWith(const std::string& part) const;
  // The full names of the journals.
  std::vector<std::string> Journals() const;
  bool HasJournal() const { return !Journals().empty(); }

  // Runs a command like a separate process: with a new context, while the content of the chips is
  // kept.
  template <typename Command>
  Outcome Run(const Command& command) {
    Outcome outcome;
    output = std::make_unique<FakeOutput>();
    output->columns = columns;
    output->output_is_terminal = output_is_terminal;
    progress = std::make_unique<FakeProgress>();
    Context context{common, host, *output, *progress, outcome.result};
    try {
      outcome.code = RunValues(command, context);
    } catch (const Failure& failure) {
      outcome.code = failure.Code();
      outcome.message = failure.Message();
      outcome.hint = failure.Hint();
    }
    return outcome;
  }

  FakeChip& Chip() { return host.Chip(); }
  Bytes& Flash() { return host.Chip().flash; }
  // From this transfer of the next run on, the camera fails, as if its cable were pulled.
  void FailFrom(std::uint64_t transfer, ExitCode code = ExitCode::kDevice);
  // This transfer fails once.
  void FailAt(std::uint64_t transfer, ExitCode code = ExitCode::kDevice);
  void Heal();

 public:
  // What each test sets and reads.
  CommonArguments common;
  FakeHost host;
  int columns = 0;  // of the terminal; 0: none
  bool output_is_terminal = false;
  std::unique_ptr<FakeOutput> output;
  std::unique_ptr<FakeProgress> progress;

 private:
  std::filesystem::path folder_;
  std::filesystem::path former_folder_;
};

}  // namespace borvanusb::tool_test
