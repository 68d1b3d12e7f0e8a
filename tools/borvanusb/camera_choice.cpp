#include "camera_choice.h"

#include <algorithm>
#include <functional>

#include "arguments/numbers.h"
#include "failure.h"

namespace {

std::string LowerCase(std::string text) {
  for (char& character : text) {
    if (character >= 'A' && character <= 'Z') {
      character = static_cast<char>(character - 'A' + 'a');
    }
  }
  return text;
}

using Test = std::function<bool(const CameraIdentity&)>;

std::vector<CameraIdentity> Matches(const std::vector<CameraIdentity>& cameras, const Test& test) {
  std::vector<CameraIdentity> matches;
  std::copy_if(cameras.begin(), cameras.end(), std::back_inserter(matches), test);
  return matches;
}

std::string Listed(const std::vector<CameraIdentity>& cameras) {
  std::string text;
  for (const CameraIdentity& camera : cameras) {
    text += (text.empty() ? "" : "; ") + CameraLine(camera);
  }
  return text;
}

}  // namespace

std::string CameraLine(const CameraIdentity& camera) {
  return std::to_string(camera.index) + "  " + camera.vid + ":" + camera.pid + "  " + camera.name;
}

CameraIdentity ChooseCamera(const std::vector<CameraIdentity>& cameras, const std::string& choice) {
  if (cameras.empty()) {
    throw Failure(ExitCode::kNoCamera, "no USB camera is found",
                  "Plug one in; borvanusb doctor tells why one is not found.");
  }
  if (choice.empty()) {
    if (cameras.size() > 1) {
      throw Failure(ExitCode::kSeveralCameras,
                    "there are " + std::to_string(cameras.size()) + " cameras: " + Listed(cameras),
                    "Choose one with --camera: its index, path, vid:pid or name.");
    }
    return cameras.front();
  }
  const std::string wanted = LowerCase(choice);
  // An index is never taken for a part of a path or name: "1" stands in nearly all of them.
  if (wanted.find_first_not_of("0123456789") == std::string::npos) {
    const auto index = ParseNumber(wanted);
    if (!index || *index >= cameras.size()) {
      throw Failure(ExitCode::kNoCamera,
                    "--camera: there is no camera " + choice + ", the highest index is " +
                        std::to_string(cameras.size() - 1),
                    "borvanusb list shows the cameras.");
    }
    return cameras[*index];
  }
  // The surest first.
  const std::vector<Test> tests = {
      [&](const CameraIdentity& camera) { return LowerCase(camera.path) == wanted; },
      [&](const CameraIdentity& camera) {
        return LowerCase(camera.vid + ":" + camera.pid) == wanted;
      },
      [&](const CameraIdentity& camera) { return LowerCase(camera.name) == wanted; },
      [&](const CameraIdentity& camera) {
        return LowerCase(camera.path).find(wanted) != std::string::npos ||
               LowerCase(camera.name).find(wanted) != std::string::npos;
      },
  };
  for (const Test& test : tests) {
    const std::vector<CameraIdentity> matches = Matches(cameras, test);
    if (matches.size() == 1) {
      return matches.front();
    }
    if (matches.size() > 1) {
      throw Failure(ExitCode::kSeveralCameras,
                    "--camera: " + choice + " may mean any of " + std::to_string(matches.size()) +
                        " cameras: " + Listed(matches),
                    "Say more of the path, or give the index.");
    }
  }
  throw Failure(ExitCode::kNoCamera,
                "--camera: no camera has the path, vid:pid or name " + choice +
                    "; there are: " + Listed(cameras),
                "borvanusb list shows the cameras.");
}

CameraIdentity ChosenCamera(Host& host, const std::vector<std::string>& choices) {
  if (choices.size() > 1) {
    throw Failure(ExitCode::kUsage,
                  "--camera: this command works with one camera, " +
                      std::to_string(choices.size()) + " are given",
                  "Give --camera once; flash program alone takes several.");
  }
  return ChooseCamera(host.ListCameras(),
                      choices.empty() ? host.Environment("BORVANUSB_CAMERA") : choices.front());
}
