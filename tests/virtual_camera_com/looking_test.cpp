// What each command of the control program may change: those that only look nothing at all, the
// others nothing of cameras that another file describes.

#include <array>
#include <filesystem>
#include <fstream>
#include <map>

#include "com/identifiers.h"
#include "com/registration.h"
#include "fixture.h"
#include "host.h"

namespace {

using test::CameraJson;
using test::Control;
using test::FirstCamera;
using test::kFirstPath;
using test::kSecondPath;
using test::Outcome;
using test::SecondCamera;

constexpr wchar_t kInstances[] = L"CLSID\\{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\Instance";

// Falls off with the second set and is due soon.
constexpr char kFallsOffBriefly[] =
    R"(, "faults": [{"selector": 1, "direction": "set", "at": 2, "unplug": {"back_after_ms": 300}}])";

class Looking : public test::CameraTest {
 protected:
  // Every file of the folder with its content.
  std::map<std::wstring, std::string> Files() const {
    std::map<std::wstring, std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(folder()))) {
      const std::wstring name = entry.path().filename().wstring();
      files[name] = Content(name);
    }
    return files;
  }

  // Every text below a key of the classes, by the names of its key and its own.
  static void Collect(const std::wstring& name, std::map<std::wstring, std::wstring>& texts) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, name.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
      return;
    }
    texts[name] = L"(key)";
    std::array<wchar_t, 512> part = {};
    DWORD length = static_cast<DWORD>(part.size());
    for (DWORD i = 0; RegEnumValueW(key, i, part.data(), &length, nullptr, nullptr, nullptr,
                                    nullptr) == ERROR_SUCCESS;
         ++i, length = static_cast<DWORD>(part.size())) {
      std::array<wchar_t, 512> text = {};
      DWORD size = sizeof text;
      RegGetValueW(key, nullptr, part.data(), RRF_RT_ANY, nullptr, text.data(), &size);
      texts[name + L" " + part.data()] = text.data();
    }
    length = static_cast<DWORD>(part.size());
    for (DWORD i = 0; RegEnumKeyExW(key, i, part.data(), &length, nullptr, nullptr, nullptr,
                                    nullptr) == ERROR_SUCCESS;
         ++i, length = static_cast<DWORD>(part.size())) {
      Collect(name + L"\\" + part.data(), texts);
    }
    RegCloseKey(key);
  }
  static std::map<std::wstring, std::wstring> Registry() {
    std::array<wchar_t, 40> id = {};
    StringFromGUID2(virtual_camera::kClassId, id.data(), static_cast<int>(id.size()));
    std::map<std::wstring, std::wstring> texts;
    Collect(kInstances, texts);
    Collect(std::wstring(L"CLSID\\") + id.data(), texts);
    return texts;
  }

  // Writes a further configuration file, with cameras of its own, and returns the option for it.
  std::wstring Other(const std::vector<std::string>& cameras) const {
    std::ofstream file(std::filesystem::path(folder() + L"other.json"), std::ios::binary);
    file << R"({"cameras": [)";
    for (std::size_t i = 0; i < cameras.size(); ++i) {
      file << (i > 0 ? "," : "") << cameras[i];
    }
    file << "]}";
    return L"--config \"" + folder() + L"other.json\" ";
  }

  // Runs a command, which must change nothing.
  Outcome Look(const std::wstring& command) {
    const auto files = Files();
    const auto registry = Registry();
    const Outcome outcome = Control(command);
    EXPECT_EQ(outcome.exit_code, 0U) << outcome.output;
    EXPECT_EQ(Files(), files);
    EXPECT_EQ(Registry(), registry);
    return outcome;
  }

  static bool Holds(const Outcome& outcome, const std::string& text) {
    return outcome.output.find(text) != std::string::npos;
  }
};

const std::string kThird = CameraJson("pid_000c#3&3&3#third", "Third", R"("vendor")", "");
const std::string kFourth = CameraJson("pid_000d#4&4&4#fourth", "Fourth", R"("vendor")", "");

TEST_F(Looking, RegisteringMakesNoFile) {
  Configure({FirstCamera(), SecondCamera(R"(, "plugged": false)")});
  const auto files = Files();
  EXPECT_EQ(Control(L"register").exit_code, 0U);
  EXPECT_EQ(Files(), files);
  EXPECT_EQ(host::ListedPaths(), std::vector<std::wstring>{kFirstPath});
}

TEST_F(Looking, CommandsThatLookChangeNothing) {
  Register({FirstCamera(R"(, "trace": "trace.jsonl")"), SecondCamera()});
  // Without and with files of the cameras.
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(Holds(Look(L"state"), "the cameras are registered\n"));
    Look(L"state 1");
    Look(L"check");
    EXPECT_TRUE(host::WriteRegister(host::OpenCamera(kFirstPath).Get(), 1, 2));
    Look(L"trace \"" + folder() + L"trace.jsonl\"");
  }
}

TEST_F(Looking, CommandsThatLookAtAnotherFileLeaveTheRegisteredCameras) {
  Register({FirstCamera(), SecondCamera()});
  const std::wstring other = Other({kThird, kFourth});
  const Outcome outcome = Look(other + L"state");
  EXPECT_TRUE(Holds(outcome, "Third\n")) << outcome.output;
  EXPECT_TRUE(Holds(outcome, "these cameras are not registered; those of ")) << outcome.output;
  EXPECT_TRUE(Holds(outcome, "cameras.json are\n")) << outcome.output;
  Look(other + L"check");
  EXPECT_EQ(host::ListedPaths(), (std::vector<std::wstring>{kFirstPath, kSecondPath}));
}

TEST_F(Looking, ACameraThatIsDueIsToldButNotListed) {
  Register({FirstCamera(kFallsOffBriefly), SecondCamera()});
  EXPECT_EQ(test::Process(L"virtual_camera_com_test.exe",
                          L"--touch \"" + std::wstring(kFirstPath) + L"\"")
                .Wait()
                .exit_code,
            4U);
  Sleep(500);
  // On a busy machine that process may have lived to see the return.
  virtual_camera::RemoveEntry(HKEY_CLASSES_ROOT, kFirstPath);
  const Outcome outcome = Look(L"state 0");
  EXPECT_TRUE(Holds(outcome, "state: plugged in\n")) << outcome.output;
  EXPECT_TRUE(Holds(outcome, "hosts don't list it yet")) << outcome.output;
  EXPECT_EQ(Control(L"plug 0").exit_code, 0U);
  EXPECT_EQ(host::ListedPaths(), (std::vector<std::wstring>{kFirstPath, kSecondPath}));
  EXPECT_FALSE(Holds(Look(L"state 0"), "list"));
}

TEST_F(Looking, HandlingCamerasOfAnotherFileLeavesTheRegisteredOnes) {
  Register({FirstCamera(), SecondCamera()});
  const std::wstring other = Other({kThird, kFourth});
  const auto registry = Registry();
  for (const wchar_t* const command :
       {L"unplug 1", L"plug 1", L"plug 0", L"power-cycle", L"reset-faults"}) {
    const Outcome outcome = Control(other + command);
    EXPECT_EQ(outcome.exit_code, 0U) << outcome.output;
    EXPECT_EQ(Registry(), registry) << outcome.output;
  }
  EXPECT_TRUE(Holds(Control(other + L"unplug 1"), "no host sees them before \"register\"\n"));
  EXPECT_TRUE(Holds(Control(other + L"state 1"), "state: unplugged\n"));
}

// A process whose environment names another file, which holds one of the registered cameras too.
TEST_F(Looking, BindingByAnotherFileLeavesTheRegisteredCameras) {
  Register({FirstCamera(), SecondCamera()});
  Other({FirstCamera(R"(, "flash": {"size": "64K", "file": "x"}, "state": "y")"), kThird, kFourth});
  SetEnvironmentVariableW(L"BORVAN_VIRTUAL_CAMERA", (folder() + L"other.json").c_str());
  EXPECT_TRUE(host::OpenCamera(kFirstPath));
  EXPECT_EQ(host::ListedPaths(), (std::vector<std::wstring>{kFirstPath, kSecondPath}));
}

TEST_F(Looking, TheRegisteredFileIsKnownByAnySpelling) {
  Register({FirstCamera(), SecondCamera()});
  const std::wstring same = L"--config \"" + folder() + L".\\CAMERAS.json\" ";
  EXPECT_EQ(Control(same + L"unplug 0").exit_code, 0U);
  EXPECT_EQ(host::ListedPaths(), std::vector<std::wstring>{kSecondPath});
  EXPECT_TRUE(Holds(Look(same + L"state"), "the cameras are registered\n"));
}

// An entry has the place of its camera in the file.
TEST_F(Looking, ACameraThatChangesItsPlaceInTheFileReplacesNoOther) {
  Register({FirstCamera(), SecondCamera()});
  Configure({SecondCamera(), kThird});
  EXPECT_TRUE(host::OpenCamera(kSecondPath));
  EXPECT_EQ(host::ListedPaths(),
            (std::vector<std::wstring>{kSecondPath, L"\\\\?\\usb#vid_1234&pid_000c#3&3&3#third"}));
}

}  // namespace
