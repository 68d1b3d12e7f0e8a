#include "camera/camera_choice.h"

#include <algorithm>
#include <functional>

#include "base/failure.h"
#include "base/format.h"
#include "base/numbers.h"

namespace borvanusb {

namespace {

std::string LowerCase(std::string text) {
  for (char& character : text) {
    if (character >= 'A' && character <= 'Z') {
      character = static_cast<char>(character - 'A' + 'a');
    }
  }
  return text;
}

// Shorter texts occur in names and paths by chance.
constexpr std::size_t kShortestPart = 3;

std::size_t Characters(const std::string& utf8) {
  return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
  }));
}

// Whether a text consists of hexadecimal digits around a colon. Such a text is meant as vid:pid and
// must match as a whole: a part of an ID is a different ID.
bool LooksLikeIds(const std::string& text) {
  constexpr std::string_view kIdDigits = "0123456789abcdef";
  const std::size_t colon = text.find_first_not_of(kIdDigits);
  return colon != std::string::npos && text[colon] == ':' &&
         text.find_first_not_of(kIdDigits, colon + 1) == std::string::npos;
}

// Returns why a text can't be used as a part of a path or name. Empty if it can.
std::string WhyNoPart(const std::string& text) {
  if (LooksLikeIds(text)) {
    return "vid:pid needs four hexadecimal digits on each side";
  }
  if (Characters(text) < kShortestPart) {
    return Format("a part of a path or name needs at least {} characters", kShortestPart);
  }
  return {};
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
    text += Format("{}{}", text.empty() ? "" : "; ", CameraLine(camera));
  }
  return text;
}

}  // namespace

std::string CameraLine(const CameraIdentity& camera) {
  return Format("{}  {}:{}  {}", camera.index, camera.vid, camera.pid, camera.name);
}

CameraIdentity ChooseCamera(const std::vector<CameraIdentity>& cameras, const std::string& choice) {
  if (cameras.empty()) {
    throw Failure(ExitCode::kNoCamera, "no USB camera is found",
                  "Plug one in; borvanusb doctor shows why one is not found.");
  }
  if (choice.empty()) {
    if (cameras.size() > 1) {
      throw Failure(ExitCode::kSeveralCameras,
                    Format("there are {} cameras: {}", cameras.size(), Listed(cameras)),
                    "Choose one with --camera: its index, path, vid:pid or name.");
    }
    return cameras.front();
  }
  const std::string wanted = LowerCase(choice);
  // A number is always an index, never a part of a path or name: "1" occurs in nearly all of them.
  if (wanted.find_first_not_of("0123456789") == std::string::npos) {
    const auto index = ParseNumber(wanted);
    if (!index || *index >= cameras.size()) {
      throw Failure(ExitCode::kNoCamera,
                    Format("--camera: there is no camera {}, the highest index is {}", choice,
                           cameras.size() - 1),
                    "borvanusb list shows the cameras.");
    }
    return cameras[*index];
  }
  // The most specific test comes first.
  std::vector<Test> tests = {
      [&](const CameraIdentity& camera) { return LowerCase(camera.path) == wanted; },
      [&](const CameraIdentity& camera) {
        return LowerCase(Format("{}:{}", camera.vid, camera.pid)) == wanted;
      },
      [&](const CameraIdentity& camera) { return LowerCase(camera.name) == wanted; },
  };
  const std::string why_no_part = WhyNoPart(wanted);
  if (why_no_part.empty()) {
    tests.emplace_back([&](const CameraIdentity& camera) {
      return LowerCase(camera.path).find(wanted) != std::string::npos ||
             LowerCase(camera.name).find(wanted) != std::string::npos;
    });
  }
  for (const Test& test : tests) {
    const std::vector<CameraIdentity> matches = Matches(cameras, test);
    if (matches.size() == 1) {
      return matches.front();
    }
    if (matches.size() > 1) {
      throw Failure(
          ExitCode::kSeveralCameras,
          Format("--camera: {} matches {} cameras: {}", choice, matches.size(), Listed(matches)),
          "Give a longer part of the path, or the index.");
    }
  }
  throw Failure(
      ExitCode::kNoCamera,
      Format("--camera: no camera has the path, vid:pid or name {}{}; there are: {}", choice,
             why_no_part.empty() ? "" : Format(", and {}", why_no_part), Listed(cameras)),
      "borvanusb list shows the cameras.");
}

CameraIdentity ChosenCamera(Host& host, const std::vector<std::string>& choices) {
  if (choices.size() > 1) {
    throw Failure(
        ExitCode::kUsage,
        Format("--camera: this command works with one camera, {} are given", choices.size()),
        "Give --camera once; only commands with --all take several.");
  }
  const std::string choice =
      choices.empty() ? host.Environment("BORVANUSB_CAMERA") : choices.front();
  CameraIdentity camera =
      host.UntilItWorks([&] { return ChooseCamera(host.ListCameras(), choice); });
  host.CheckCamera(camera);
  return camera;
}

}  // namespace borvanusb
