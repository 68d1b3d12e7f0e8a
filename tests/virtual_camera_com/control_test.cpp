// The control program's texts and exit codes.

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "fixture.h"
#include "host.h"

namespace {

using test::Control;
using test::FirstCamera;
using test::kFirstPath;
using test::Outcome;
using test::SecondCamera;

class ControlProgram : public test::CameraTest {};

bool Holds(const Outcome& outcome, const std::string& text) {
  return outcome.output.find(text) != std::string::npos;
}

std::size_t LineCount(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST_F(ControlProgram, RegistersAndUnregisters) {
  Configure({FirstCamera(), SecondCamera()});
  const Outcome registered = Control(L"register");
  EXPECT_EQ(registered.exit_code, 0U);
  EXPECT_TRUE(Holds(registered, "registered 2 of 2 cameras\n")) << registered.output;
  EXPECT_EQ(host::VideoInputs().size(), 2U);
  EXPECT_TRUE(host::OpenCamera(kFirstPath));
  EXPECT_EQ(Control(L"unregister").exit_code, 0U);
  EXPECT_TRUE(host::VideoInputs().empty());
}

TEST_F(ControlProgram, ACameraIsNamedByNumberNameOrPath) {
  Register({FirstCamera(), SecondCamera()});
  for (const wchar_t* const camera :
       {L"1", L"second", L"\\\\?\\USB#vid_1234&pid_000b#2&2&2#second"}) {
    const Outcome outcome = Control(L"unplug \"" + std::wstring(camera) + L"\"");
    EXPECT_EQ(outcome.exit_code, 0U);
    EXPECT_EQ(outcome.output, "camera 1 \"Second\": unplugged\n");
  }
}

TEST_F(ControlProgram, AnUnknownCameraIsOneClearLine) {
  Configure({FirstCamera(), SecondCamera()});
  for (const wchar_t* const camera : {L"2", L"Third", L"-1"}) {
    const Outcome outcome = Control(L"unplug -- " + std::wstring(camera));
    EXPECT_EQ(outcome.exit_code, 1U) << outcome.output;
    EXPECT_TRUE(Holds(outcome, "no such camera: give 0 to 1, a name or a device path\n"))
        << outcome.output;
    EXPECT_EQ(LineCount(outcome.output), 1U) << outcome.output;
  }
}

TEST_F(ControlProgram, ANameOfTwoCamerasIsRefused) {
  Configure({FirstCamera(), test::CameraJson("pid_000c", "First", R"("vendor")", "")});
  const Outcome outcome = Control(L"state First");
  EXPECT_EQ(outcome.exit_code, 1U);
  EXPECT_TRUE(Holds(outcome, "cameras 0 and 1 have this name")) << outcome.output;
}

TEST_F(ControlProgram, WrongUseHasACodeOfItsOwn) {
  const auto expect_refused = [](const std::wstring& arguments, const std::string& message) {
    const Outcome outcome = Control(arguments);
    EXPECT_EQ(outcome.exit_code, 2U);
    EXPECT_TRUE(Holds(outcome, "virtual-camera: " + message)) << outcome.output;
    EXPECT_EQ(LineCount(outcome.output), 2U) << outcome.output;
  };
  expect_refused(L"", "a command is missing; must be one of register, unregister, ");
  expect_refused(L"unplug", "unplug: CAMERA is required");
  expect_refused(L"fly", "fly: no such command or option; commands are register, ");
  expect_refused(L"plug 0 1", "plug: 1: no such argument or option");
  expect_refused(L"--config", "--config");
  EXPECT_EQ(Control(L"--help").exit_code, 0U);
}

TEST_F(ControlProgram, CheckNamesTheFirstMistake) {
  Configure({FirstCamera(R"(, "colour": "red")")});
  const Outcome outcome = Control(L"check");
  EXPECT_EQ(outcome.exit_code, 1U);
  EXPECT_TRUE(Holds(outcome, "cameras[0].colour")) << outcome.output;
  EXPECT_EQ(LineCount(outcome.output), 1U) << outcome.output;
}

TEST_F(ControlProgram, CheckChangesNothing) {
  Configure({FirstCamera()});
  const Outcome outcome = Control(L"check");
  EXPECT_EQ(outcome.exit_code, 0U);
  EXPECT_TRUE(Holds(outcome, "1 camera, no mistakes\n")) << outcome.output;
  std::size_t files = 0;
  for ([[maybe_unused]] const auto& entry :
       std::filesystem::directory_iterator(std::filesystem::path(folder()))) {
    ++files;
  }
  EXPECT_EQ(files, 1U);
}

TEST_F(ControlProgram, AMissingFileIsOneClearLine) {
  const Outcome outcome = Control(L"--config nowhere.json state");
  EXPECT_EQ(outcome.exit_code, 1U);
  EXPECT_TRUE(Holds(outcome, "nowhere.json")) << outcome.output;
  EXPECT_EQ(LineCount(outcome.output), 1U) << outcome.output;
}

TEST_F(ControlProgram, StateShowsWhatTheCameraHolds) {
  Register({FirstCamera()});
  const auto control = host::OpenCamera(kFirstPath);
  ASSERT_TRUE(control);
  ASSERT_TRUE(host::WriteRegister(control.Get(), 0x1234, 0x5A));
  const Outcome outcome = Control(L"state 0");
  EXPECT_EQ(outcome.exit_code, 0U);
  EXPECT_TRUE(Holds(outcome, "1234")) << outcome.output;
  EXPECT_TRUE(Holds(outcome, "5a")) << outcome.output;
}

TEST_F(ControlProgram, TraceTellsTransfersInWords) {
  Register({FirstCamera(R"(, "trace": "transfers.jsonl")")});
  const auto control = host::OpenCamera(kFirstPath);
  ASSERT_TRUE(control);
  // 0x32 erases the sector of the address that follows.
  ASSERT_EQ(host::Set(control.Get(), 3, {0x32, 0, 0, 0x10, 0, 0, 0, 0, 0, 0, 0}).result, S_OK);
  const Outcome outcome = Control(L"trace \"" + folder() + L"transfers.jsonl\"");
  EXPECT_EQ(outcome.exit_code, 0U);
  EXPECT_TRUE(Holds(outcome, "flash erase")) << outcome.output;
}

TEST_F(ControlProgram, OutputThatCantBeWrittenIsAFailure) {
  Configure({FirstCamera()});
  for (const wchar_t* const command : {L"state", L"check", L"--help"}) {
    test::Process process(L"virtual-camera.exe", command, test::Process::Reader::kNobody);
    EXPECT_EQ(process.Wait().exit_code, 1U) << command;
  }
}

TEST_F(ControlProgram, ControlCharactersOfNamesAreSpelledOut) {
  Configure({test::CameraJson(R"(pid_000a\u001b[2J)", R"(a\nb)", R"("vendor")", "")});
  for (const wchar_t* const command : {L"check", L"register", L"unplug 0", L"state"}) {
    const Outcome outcome = Control(command);
    EXPECT_EQ(outcome.exit_code, 0U);
    EXPECT_TRUE(Holds(outcome, "a\\u000ab")) << outcome.output;
    EXPECT_FALSE(Holds(outcome, "\x1B")) << outcome.output;
  }
  const Outcome outcome = Control(L"trace \"a\x1B\"");
  EXPECT_EQ(outcome.output, "virtual-camera: FILE \"a\\u001b\": can't be read\n");
}

TEST_F(ControlProgram, AMissingTraceIsOneClearLine) {
  const Outcome outcome = Control(L"trace nowhere.jsonl");
  EXPECT_EQ(outcome.exit_code, 1U);
  EXPECT_EQ(outcome.output, "virtual-camera: FILE \"nowhere.jsonl\": can't be read\n");
}

TEST_F(ControlProgram, AWordThatBeginsWithASlashIsAFileName) {
  const Outcome outcome = Control(L"trace /nowhere.jsonl");
  EXPECT_EQ(outcome.exit_code, 1U);
  EXPECT_EQ(outcome.output, "virtual-camera: FILE \"/nowhere.jsonl\": can't be read\n");
}

TEST_F(ControlProgram, AFileThatIsNoTraceIsAFailure) {
  Configure({FirstCamera()});
  std::ofstream(std::filesystem::path(folder()) / L"other.txt") << "no trace\n";
  const Outcome outcome = Control(L"trace \"" + folder() + L"other.txt\"");
  EXPECT_EQ(outcome.exit_code, 1U);
  EXPECT_TRUE(Holds(outcome, "line 1: not a line of a trace\n")) << outcome.output;
  EXPECT_TRUE(Holds(outcome, "other.txt\": is not a trace\n")) << outcome.output;
}

// Sets an environment variable as long as it exists.
class Variable {
 public:
  Variable(const wchar_t* name, const std::wstring& value) : name_(name) {
    SetEnvironmentVariableW(name, value.c_str());
  }
  ~Variable() { SetEnvironmentVariableW(name_, nullptr); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  const wchar_t* name_;
};

TEST_F(ControlProgram, ATraceOfTheProcessThatIsTheConfigurationIsRefused) {
  Register({FirstCamera()});
  const std::string before = Content(L"cameras.json");
  for (const wchar_t* const name : {L"cameras.json", L"CAMERAS.json", L".\\cameras.JSON"}) {
    const Variable trace(L"BORVAN_VIRTUAL_CAMERA_TRACE", folder() + name);
    // A host can't say why; the control program can.
    const auto control = host::OpenCamera(kFirstPath);
    EXPECT_FALSE(control);
    if (control) {
      host::QueryLength(control.Get(), 1);
    }
    for (const wchar_t* const command : {L"check", L"state", L"register"}) {
      const Outcome outcome = Control(command);
      EXPECT_EQ(outcome.exit_code, 1U);
      EXPECT_TRUE(Holds(outcome, "BORVAN_VIRTUAL_CAMERA_TRACE: ")) << outcome.output;
      EXPECT_TRUE(Holds(outcome, "is the configuration file")) << outcome.output;
      EXPECT_EQ(LineCount(outcome.output), 1U) << outcome.output;
    }
    EXPECT_EQ(Content(L"cameras.json"), before);
  }
  EXPECT_TRUE(host::OpenCamera(kFirstPath));
}

TEST_F(ControlProgram, ResetFaultsLetsAFaultStrikeAgain) {
  Register({FirstCamera(
      R"(, "faults": [{"selector": 1, "direction": "set", "at": 1, "result": "0x80070017"}])")});
  const auto control = host::OpenCamera(kFirstPath);
  ASSERT_TRUE(control);
  constexpr auto kCyclicCheck = static_cast<HRESULT>(0x80070017);
  EXPECT_EQ(host::Set(control.Get(), 1, {0x24, 0, 0, 0x18}).result, kCyclicCheck);
  EXPECT_EQ(host::Set(control.Get(), 1, {0x24, 0, 0, 0x18}).result, S_OK);
  EXPECT_EQ(Control(L"reset-faults 0").exit_code, 0U);
  EXPECT_EQ(host::Set(control.Get(), 1, {0x24, 0, 0, 0x18}).result, kCyclicCheck);
}

}  // namespace
