#include "hosts/hosts_rig.h"

#include <array>

namespace test {
namespace {

CameraText Camera(const std::string& path, const std::string& name) {
  CameraText camera;
  camera.path = path;
  camera.name = name;
  return camera;
}

Bytes BytesOf(const std::string& text) {
  return {text.begin(), text.end()};
}

}  // namespace

HostsRig::HostsRig() {
  const CameraText good = Camera("vid_1234&pid_0002#good", "Good");
  PlugIn({Camera("vid_1234&pid_0001#gone", "Gone"), good});
  // Another camera in its place, so that the listed one can't be opened and stays listed.
  CameraText other = Camera("vid_1234&pid_0009#other", "Other");
  other.more = R"(, "state": "other.state", "plugged": false)";
  Configure({other, good});
  MakeFile("image.bin", Pattern(5'000));
  MakeFile("registers.txt", BytesOf("0xfffd,0x00,\n0x0100,0x5a,\n"));
  MakeFile("sensor.txt", BytesOf("0xfff8,0x20,\n0xfffe,0x00,\n0x10,0x5a,\n"));
  std::array<char, MAX_PATH> folder{};
  GetCurrentDirectoryA(MAX_PATH, folder.data());
  former_folder_ = folder.data();
  SetCurrentDirectoryA(Folder().c_str());
}

HostsRig::~HostsRig() {
  SetCurrentDirectoryA(former_folder_.c_str());
}

std::string HostsRig::Folder() const {
  const std::string file = File("image.bin");
  return file.substr(0, file.find_last_of('\\'));
}

}  // namespace test
