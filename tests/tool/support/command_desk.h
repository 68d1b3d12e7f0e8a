#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>

#include "base/failure.h"
#include "command/command.h"
#include "command/context.h"
#include "support/fake_camera.h"
#include "support/json_schema.h"

namespace borvanusb::tool_test {

// A host with cameras in memory, and the output of a command.
struct CommandDesk {
  CommonArguments common;
  FakeHost host;
  FakeOutput output;
  FakeProgress progress;
  nlohmann::ordered_json result;
  Context context{common, host, output, progress, result};

  FakeChip& Chip(std::size_t index = 0) { return host.Chip(index); }

  // Runs a command that must complete. Its JSON must match the schema.
  template <typename Command>
  ExitCode Do(const Command& command, const std::string& schema) {
    output.out.clear();
    output.notes.clear();
    result = nlohmann::ordered_json::object();
    ExitCode code = ExitCode::kInternal;
    try {
      code = Run(command, context);
    } catch (const Failure& failure) {
      ADD_FAILURE() << failure.Message();
      return failure.Code();
    }
    EXPECT_EQ(BreachOfSchema(schema, result), "") << result.dump(2);
    return code;
  }

  // Runs a command that must fail.
  template <typename Command>
  Failure FailureOf(const Command& command) {
    output.errors.clear();
    result = nlohmann::ordered_json::object();
    try {
      Run(command, context);
    } catch (const Failure& failure) {
      return failure;
    }
    ADD_FAILURE() << "the command did not fail";
    return {ExitCode::kDone, ""};
  }
};

// A folder for the files of one test.
class TestFolder {
 public:
  TestFolder() {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    path_ = std::filesystem::path(testing::TempDir()) /
            ("borvanusb-" + std::string(test->test_suite_name()) + "-" + test->name());
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;
  ~TestFolder() { std::filesystem::remove_all(path_); }

  std::string Name(const std::string& file) const { return (path_ / file).string(); }
  std::string Write(const std::string& file, const std::string& text) const {
    std::ofstream(Name(file), std::ios::binary) << text;
    return Name(file);
  }
  std::string Read(const std::string& file) const {
    std::ostringstream text;
    text << std::ifstream(Name(file), std::ios::binary).rdbuf();
    return text.str();
  }

 private:
  std::filesystem::path path_;
};

}  // namespace borvanusb::tool_test
