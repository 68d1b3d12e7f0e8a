// The files that a configuration names: each serves one purpose, however its name is spelled, and
// those that the user already has stay as they are.
#include <algorithm>
#include <array>
#include <filesystem>

#include "core/names.h"
#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using virtual_camera::CameraConfiguration;
using virtual_camera::ConfigurationError;
using virtual_camera::LoadConfiguration;

// A configuration with two cameras beside a folder "sub".
class ConfigurationFilesTest : public testing::Test {
 protected:
  ConfigurationFilesTest() { std::filesystem::create_directory(folder.File("sub")); }

  // Loads a configuration with these keys of its cameras, opens all cameras and makes a transfer
  // with each. What the error says behind the file's name.
  std::string ErrorOf(const std::string& first, const std::string& second = "") {
    text_ = R"({"cameras": [{"path": "a", "flash": {"size": "64K"})" + Keys(first) +
            R"(}, {"path": "b", "flash": {"size": "64K"})" + Keys(second) + "}]}";
    return ErrorOfText();
  }
  std::string ErrorOfText() {
    folder.Write("cameras.json", text_);
    const std::string prefix = folder.File("cameras.json") + ": ";
    try {
      for (const CameraConfiguration& camera :
           LoadConfiguration(folder.File("cameras.json")).cameras) {
        virtual_camera::Camera(camera).QueryLength(1);
      }
    } catch (const ConfigurationError& error) {
      const std::string line = error.what();
      return line.starts_with(prefix) ? line.substr(prefix.size()) : line;
    }
    return "no error";
  }
  // A key "flash" behind the size counts instead of it.
  static std::string Keys(const std::string& keys) { return keys.empty() ? "" : ", " + keys; }

  // The names of all files, with those of folders.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.File(""))) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  ScratchFolder folder;
  std::string text_;
};

// Other names of the file `name` of the test's folder, as JSON texts hold them.
std::vector<std::string> SpellingsOf(const ScratchFolder& folder, const std::string& name) {
  std::string absolute;
  for (const char c : folder.File(name)) {
    absolute += c == '\\' ? std::string("\\\\") : std::string(1, c);
  }
  std::vector<std::string> spellings = {
      name, "./" + name, ".//" + name, "sub/../" + name, "nowhere/../" + name, absolute};
#ifdef _WIN32
  spellings.insert(spellings.end(),
                   {".\\\\" + name, "sub\\\\..\\\\" + name, name + ".",
                    std::string(1, static_cast<char>(name[0] - 0x20)) + name.substr(1)});
#endif
  return spellings;
}

TEST_F(ConfigurationFilesTest, ATraceThatIsTheConfigurationIsRefused) {
  folder.Write("cameras.json", "");
  for (const std::string& name : SpellingsOf(folder, "cameras.json")) {
    EXPECT_THAT(
        ErrorOf(R"("trace": ")" + name + "\""),
        testing::AllOf(testing::StartsWith("cameras[0].trace: "),
                       testing::EndsWith("is the configuration file; must be a file of its own")))
        << name;
    EXPECT_EQ(folder.Read("cameras.json"), text_) << name;
    EXPECT_EQ(Names(), (std::vector<std::string>{"cameras.json", "sub"})) << name;
  }
}

TEST_F(ConfigurationFilesTest, ATraceThatIsAFlashFileIsRefused) {
  const std::string flash(64 * 1024, '\x5A');
  for (const char* const name : {"cameras.camera0.flash", "cameras.camera1.flash"}) {
    folder.Write(name, flash);
    for (const std::string& spelling : SpellingsOf(folder, name)) {
      EXPECT_THAT(ErrorOf(R"("trace": ")" + spelling + "\""),
                  testing::EndsWith("is the same file as cameras[" + std::string(1, name[14]) +
                                    "].flash.file; must be a file of its own"))
          << spelling;
      EXPECT_EQ(folder.Read(name), flash) << spelling;
    }
  }
}

TEST_F(ConfigurationFilesTest, ATraceThatIsAStateFileIsRefused) {
  for (const char* const name : {"cameras.camera0.state", "cameras.camera1.state"}) {
    for (const std::string& spelling : SpellingsOf(folder, name)) {
      EXPECT_THAT(ErrorOf("", R"("trace": ")" + spelling + "\""),
                  testing::AllOf(
                      testing::StartsWith("cameras[1].trace: "),
                      testing::EndsWith("is the same file as cameras[" + std::string(1, name[14]) +
                                        "].state; must be a file of its own")))
          << spelling;
      EXPECT_EQ(Names(), (std::vector<std::string>{"cameras.json", "sub"})) << spelling;
    }
  }
}

TEST_F(ConfigurationFilesTest, AFileOfTwoPurposesIsRefused) {
  const std::vector<std::array<std::string, 3>> cases = {
      {R"("state": "x")", R"("state": "./x")",
       "cameras[1].state: \"FOLDER/./x\" is the same file as cameras[0].state; "},
      {R"("state": "x")", R"("flash": {"file": "sub/../x"})",
       "cameras[1].flash.file: \"FOLDER/sub/../x\" is the same file as cameras[0].state; "},
      {R"("flash": {"file": "x"})", R"("flash": {"file": "./x"})",
       "cameras[1].flash.file: \"FOLDER/./x\" is the same file as cameras[0].flash.file; "},
      {R"("flash": {"file": "x"})", R"("state": "./x")",
       "cameras[1].state: \"FOLDER/./x\" is the same file as cameras[0].flash.file; "},
      {R"("flash": {"file": "x"}, "state": "./x")", "",
       "cameras[0].state: \"FOLDER/./x\" is the same file as cameras[0].flash.file; "},
      {R"("flash": {"file": "cameras.camera1.flash"})", "",
       "cameras[1].flash.file: \"FOLDER/cameras.camera1.flash\" is the same file as "
       "cameras[0].flash.file; "},
      {R"("flash": {"file": "./cameras.json"})", "",
       "cameras[0].flash.file: \"FOLDER/./cameras.json\" is the configuration file; "},
      {"", R"("state": "./cameras.json")",
       "cameras[1].state: \"FOLDER/./cameras.json\" is the configuration file; "},
  };
  for (const auto& [first, second, expected] : cases) {
    std::string error = ErrorOf(first, second);
    // The folder as each system writes it.
    std::replace(error.begin(), error.end(), '\\', '/');
    std::string place = folder.File("");
    std::replace(place.begin(), place.end(), '\\', '/');
    place.pop_back();
    std::string wanted = expected + "must be a file of its own";
    wanted.replace(wanted.find("FOLDER"), 6, place);
    EXPECT_EQ(error, wanted);
    EXPECT_EQ(folder.Read("cameras.json"), text_);
    EXPECT_EQ(Names(), (std::vector<std::string>{"cameras.json", "sub"}));
  }
}

TEST_F(ConfigurationFilesTest, AHardLinkIsTheFileItself) {
  folder.Write("cameras.json", "");
  std::filesystem::create_hard_link(folder.File("cameras.json"), folder.File("link"));
  EXPECT_THAT(ErrorOf(R"("trace": "link")"), testing::HasSubstr("is the configuration file"));
  EXPECT_EQ(folder.Read("cameras.json"), text_);
  folder.Write("one.bin", "\x01");
  std::filesystem::create_hard_link(folder.File("one.bin"), folder.File("two.bin"));
  EXPECT_THAT(ErrorOf(R"("flash": {"file": "one.bin"})", R"("flash": {"file": "two.bin"})"),
              testing::HasSubstr("is the same file as cameras[0].flash.file"));
  EXPECT_EQ(folder.Read("one.bin"), "\x01");
}

#ifndef _WIN32
TEST_F(ConfigurationFilesTest, ASymbolicLinkIsTheFileItself) {
  folder.Write("cameras.json", "");
  std::filesystem::create_symlink("cameras.json", folder.File("link"));
  std::filesystem::create_directory_symlink(".", folder.File("here"));
  EXPECT_THAT(ErrorOf(R"("trace": "link")"), testing::HasSubstr("is the configuration file"));
  EXPECT_EQ(folder.Read("cameras.json"), text_);
  EXPECT_THAT(ErrorOf(R"("flash": {"file": "x"})", R"("flash": {"file": "here/x"})"),
              testing::HasSubstr("is the same file as cameras[0].flash.file"));
}

// Opening such a link for writing makes the file that it names.
TEST_F(ConfigurationFilesTest, ALinkToAFileThatIsNotYetThereIsThatFile) {
  std::filesystem::create_symlink("x", folder.File("link"));
  std::filesystem::create_symlink("link", folder.File("second link"));
  std::filesystem::create_symlink("circle", folder.File("circle"));
  EXPECT_THAT(ErrorOf(R"("flash": {"file": "x"})", R"("flash": {"file": "second link"})"),
              testing::HasSubstr("is the same file as cameras[0].flash.file"));
  EXPECT_FALSE(std::filesystem::exists(folder.File("x")));
  EXPECT_THAT(ErrorOf(R"("flash": {"file": "circle"})"), testing::StartsWith("flash: can't use"));
}
#endif

TEST_F(ConfigurationFilesTest, ATraceOfTheProcessIsCheckedAsTheConfiguredOne) {
  folder.Write("cameras.json", R"({"cameras": [{"path": "a", "trace": "t"}, {"path": "b"}]})");
  const std::string file = folder.File("cameras.json");
  const virtual_camera::Configuration configuration = LoadConfiguration(file);
  const auto error_of = [&](const std::string& name) {
    try {
      virtual_camera::CheckProcessTrace(configuration, name);
    } catch (const ConfigurationError& error) {
      return std::string(error.what());
    }
    return std::string("no error");
  };
  const auto expected = [&](const std::string& name, const std::string& title) {
    return "BORVAN_VIRTUAL_CAMERA_TRACE: \"" + name + "\" is " + title +
           "; must be a file of its own";
  };
  const std::string here = folder.File("sub/../");
  EXPECT_EQ(error_of(file), expected(file, "the configuration file"));
  EXPECT_EQ(error_of(here + "cameras.json"),
            expected(here + "cameras.json", "the configuration file"));
  EXPECT_EQ(error_of(here + "cameras.camera1.flash"),
            expected(here + "cameras.camera1.flash",
                     "the same file as cameras[1].flash.file of \"" + file + "\""));
  EXPECT_EQ(error_of(here + "cameras.camera0.state"),
            expected(here + "cameras.camera0.state",
                     "the same file as cameras[0].state of \"" + file + "\""));
  EXPECT_EQ(error_of(here + "t"), "no error");
  EXPECT_EQ(error_of(""), "no error");
}

TEST_F(ConfigurationFilesTest, CamerasMayShareATrace) {
  EXPECT_EQ(ErrorOf(R"("trace": "t.jsonl")", R"("trace": "./t.jsonl")"), "no error");
  EXPECT_EQ(ErrorOf(R"("trace": "t.jsonl")", R"("trace": "sub/t.jsonl")"), "no error");
}

TEST_F(ConfigurationFilesTest, FilesOfOneNameInTwoFoldersAreTwoFiles) {
  EXPECT_EQ(ErrorOf(R"("flash": {"size": "64K", "file": "x"}, "state": "y")",
                    R"("flash": {"size": "64K", "file": "sub/x"}, "state": "sub/y")"),
            "no error");
}

TEST(DevicePathTest, CaseOfLettersDoesNotMatter) {
  EXPECT_TRUE(virtual_camera::SameDevicePath("USB#VID_AZ", "usb#vid_az"));
  EXPECT_FALSE(virtual_camera::SameDevicePath("usb@", "usb`"));
  EXPECT_FALSE(virtual_camera::SameDevicePath("usb[", "usb{"));
}

}  // namespace
}  // namespace virtual_camera_test
