// How the examples end: each kind of failure by a message in words and an exit code of its own, and
// none of them by the library's exception.

#include <fstream>
#include <iterator>

#include "hosts/hosts_rig.h"

namespace {

enum ExitCode : DWORD {
  kDone = 0,
  kWrongArguments = 1,
  kFileUnusable = 2,
  kNoCamera = 4,
  kCameraNotOpened = 5,
  kJobFailed = 6,
  kTimeLimit = 7,
  kDifferent = 8,
};

class Examples : public test::HostsRig {
 protected:
  // Runs a program. Returns its exit code; what it prints is in text_ then.
  DWORD Run(const std::string& line) {
    const std::string file = File("printed.txt");
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    const HANDLE printed = CreateFileA(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                       CREATE_ALWAYS, 0, nullptr);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = printed;
    startup.hStdError = printed;
    PROCESS_INFORMATION process = {};
    std::string command = test::ProgramFolder() + line;
    DWORD code = 0xFFFFFFFF;
    if (CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                       &startup, &process) != FALSE) {
      if (WaitForSingleObject(process.hProcess, 60'000) != WAIT_OBJECT_0) {
        TerminateProcess(process.hProcess, 98);
      }
      GetExitCodeProcess(process.hProcess, &code);
      CloseHandle(process.hThread);
      CloseHandle(process.hProcess);
    }
    CloseHandle(printed);
    std::ifstream stream(file, std::ios::binary);
    text_.assign(std::istreambuf_iterator<char>(stream), {});
    return code;
  }

  bool Says(const std::string& words) const { return text_.find(words) != std::string::npos; }

  std::string text_;
};

// ---- read_register ------------------------------------------------------------------------------

TEST_F(Examples, ReadRegisterPrintsTheValue) {
  EXPECT_EQ(Run("read_register.exe 0x1a3 1"), kDone) << text_;
  EXPECT_EQ(Run("read_register.exe 419 1 wide"), kDone) << text_;
}

TEST_F(Examples, ReadRegisterSaysWhatIsWrong) {
  EXPECT_EQ(Run("read_register.exe"), kWrongArguments);
  EXPECT_EQ(Run("read_register.exe 0x1a3 one"), kWrongArguments);
  EXPECT_TRUE(Says("ADDRESS CAMERA [wide]")) << text_;
  EXPECT_EQ(Run("read_register.exe 0x1a3 2"), kNoCamera);
  EXPECT_TRUE(Says("no such camera")) << text_;
  EXPECT_EQ(Run("read_register.exe 0x1a3 0"), kCameraNotOpened) << "it is gone";
  EXPECT_TRUE(Says("ERROR: ")) << text_;
  test::CameraText camera;
  camera.nodes = R"("camera-terminal", "processing")";
  PlugIn({camera});
  EXPECT_EQ(Run("read_register.exe 0x1a3 0"), kCameraNotOpened) << "it has no vendor channel";
  EXPECT_TRUE(Says("does not answer")) << text_;
}

// ---- load_settings ------------------------------------------------------------------------------

TEST_F(Examples, LoadSettingsLoadsAList) {
  test::CameraText camera;
  camera.more = R"(, "sensors": [{"slave": "0x20", "mode": 0}])";
  PlugIn({camera});
  EXPECT_EQ(Run("load_settings.exe sensor.txt 0"), kDone) << text_;
  ASSERT_GE(UsbIniDevice(), 0);
  ASSERT_TRUE(UsbSelectDevice(0));
  std::uint32_t value = 0;
  EXPECT_TRUE(UsbI2cRead(0x20, 0x10, &value, kBorvanI2cAddress8Data8, 0));
  EXPECT_EQ(value, 0x5AU);
}

TEST_F(Examples, LoadSettingsSaysWhatIsWrong) {
  EXPECT_EQ(Run("load_settings.exe sensor.txt"), kWrongArguments);
  EXPECT_EQ(Run("load_settings.exe sensor.txt 0 3601"), kWrongArguments);
  EXPECT_EQ(Run("load_settings.exe sensor.txt 2"), kNoCamera);
  EXPECT_EQ(Run("load_settings.exe sensor.txt 0"), kCameraNotOpened);
  EXPECT_EQ(Run("load_settings.exe missing.txt 1"), kFileUnusable);
  EXPECT_TRUE(Says("missing.txt: File name error or file error")) << text_;
  MakeFile("empty.txt", {});
  EXPECT_EQ(Run("load_settings.exe empty.txt 1"), kFileUnusable);
  EXPECT_EQ(Run("load_settings.exe registers.txt 1"), kJobFailed) << "a list of another kind";
  EXPECT_TRUE(Says("fff8 and fffe")) << text_;
}

TEST_F(Examples, LoadSettingsGivesUpAfterItsTimeLimit) {
  test::CameraText camera;
  camera.more = R"(, "sensors": [{"slave": "0x20", "mode": 0}],
      "faults": [{"selector": 2, "direction": "set", "at": 1, "delay_ms": 5000}])";
  PlugIn({camera});
  EXPECT_EQ(Run("load_settings.exe sensor.txt 0 1"), kTimeLimit);
  EXPECT_TRUE(Says("did not end within the time limit")) << text_;
}

// ---- program_flash, in C and in C++
// --------------------------------------------------------------

class ProgramFlash : public Examples, public testing::WithParamInterface<const char*> {
 protected:
  // Runs the program with these arguments.
  DWORD With(const std::string& arguments) {
    return Run(std::string(GetParam()) + ".exe " + arguments);
  }
};
INSTANTIATE_TEST_SUITE_P(InBothLanguages, ProgramFlash,
                         testing::Values("program_flash", "program_flash_cpp"),
                         [](const auto& tested) { return std::string(tested.param); });

TEST_P(ProgramFlash, ProgramsAndReadsBack) {
  const test::Bytes image = test::Pattern(5'000, 2);
  MakeFile("image.bin", image);
  test::CameraText camera;
  PlugIn({camera});
  EXPECT_EQ(With("image.bin 0x2000 0"), kDone) << text_;
  EXPECT_TRUE(Says("the flash holds the image, 5000 bytes")) << text_;
  EXPECT_EQ(test::Slice(Flash(), 0x2000, 5'000), image);
  EXPECT_EQ(FinishedFile(File("image.bin.readback")), image);
}

TEST_P(ProgramFlash, RefusesWrongArguments) {
  EXPECT_EQ(With("image.bin 0x2000"), kWrongArguments);
  EXPECT_TRUE(Says("IMAGE ADDRESS CAMERA [SECONDS]")) << text_;
  EXPECT_EQ(With("image.bin 0x2001 1"), kWrongArguments);
  EXPECT_TRUE(Says("no multiple of 4096")) << text_;
  EXPECT_EQ(With("image.bin 0x100000000 1"), kWrongArguments);
  EXPECT_EQ(With("image.bin -4096 1"), kWrongArguments);
  EXPECT_EQ(With("image.bin 0x2000 first"), kWrongArguments);
  EXPECT_TRUE(Says("first")) << text_;
  EXPECT_EQ(With("image.bin 0x2000 1 86401"), kWrongArguments);
  EXPECT_EQ(With("missing.bin 0 1"), kFileUnusable);
  EXPECT_TRUE(Says("missing.bin: missing, empty or larger")) << text_;
  EXPECT_EQ(With("image.bin 0xfffff000 1"), kFileUnusable) << "it goes past the end";
}

TEST_P(ProgramFlash, SaysWhyThereIsNoCamera) {
  EXPECT_EQ(With("image.bin 0 2"), kNoCamera);
  EXPECT_TRUE(Says("no such camera")) << text_;
  EXPECT_EQ(With("image.bin 0 0"), kCameraNotOpened);
  EXPECT_TRUE(Says("ERROR: ")) << text_;
}

TEST_P(ProgramFlash, SaysThatTheCameraFellOff) {
  test::CameraText camera;
  camera.more = R"(, "faults": [{"selector": 4, "direction": "set", "unplug": {"after": 10}}])";
  PlugIn({camera});
  EXPECT_EQ(With("image.bin 0 0"), kJobFailed);
  EXPECT_TRUE(Says("programming: ")) << text_;
  EXPECT_TRUE(Says("Program it again.")) << text_;
}

// A dump whose transfer fails is repeated for ever.
TEST_P(ProgramFlash, GivesUpAfterItsTimeLimit) {
  test::CameraText camera;
  camera.more = R"(, "faults": [{"selector": 5, "direction": "get", "result": "0x80070017"}])";
  PlugIn({camera});
  EXPECT_EQ(With("image.bin 0 0 1"), kTimeLimit);
  EXPECT_TRUE(Says("reading back: The job did not end within the time limit")) << text_;
}

TEST_P(ProgramFlash, SaysThatTheFlashDiffers) {
  test::CameraText camera;
  camera.more = R"(, "faults": [{"selector": 4, "direction": "set", "at": 9, "lie": true}])";
  PlugIn({camera});
  EXPECT_EQ(With("image.bin 0 0"), kDifferent);
  EXPECT_TRUE(Says("differ")) << text_;
}

}  // namespace
