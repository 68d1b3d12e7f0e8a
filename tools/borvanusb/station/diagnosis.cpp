#include "station/diagnosis.h"

#include <algorithm>

#include "base/format.h"

namespace borvanusb {

namespace {

std::string Placed(const std::vector<ExaminedCamera>& cameras) {
  const auto usable =
      std::find_if(cameras.begin(), cameras.end(),
                   [](const ExaminedCamera& camera) { return camera.problem.empty(); });
  return usable == cameras.end() ? "" : usable->identity.name;
}

}  // namespace

Diagnosis Diagnose(const Examination& examination) {
  const SystemReport& system = examination.system;
  const std::string usable = Placed(examination.cameras);
  const bool has_usable =
      std::any_of(examination.cameras.begin(), examination.cameras.end(),
                  [](const ExaminedCamera& camera) { return camera.problem.empty(); });
  if (has_usable) {
    const bool has_other =
        std::any_of(examination.cameras.begin(), examination.cameras.end(),
                    [](const ExaminedCamera& camera) { return !camera.problem.empty(); });
    return {Format("all is well: {} can be used", usable),
            has_other ? "Another camera can't be used; its line above says why." : "",
            ExitCode::kDone};
  }
  if (!examination.cameras.empty()) {
    return {Format("no listed camera can be used: {}", examination.cameras.front().problem),
            "Close other programs that use the camera; plug it in again; check that it is a camera "
            "with this chip.",
            ExitCode::kRefused};
  }
  if (system.library.empty()) {
    return {"BorvanUSB_x64.dll was not found",
            "Put it beside borvanusb.exe, or name it in the variable BORVANUSB_DLL.",
            ExitCode::kNoCamera};
  }
  if (!system.library_problem.empty()) {
    return {Format("{} can't be used: {}", system.library, system.library_problem),
            "Install the 64-bit library of this version.", ExitCode::kNoCamera};
  }
  if (!system.com_problem.empty()) {
    return {Format("COM does not work: {}", system.com_problem),
            "Restart the system, or repair it.", ExitCode::kNoCamera};
  }
  if (!examination.list_problem.empty()) {
    return {Format("the cameras can't be listed: {}", examination.list_problem),
            "Restart the system; with a virtual camera, register it again.", ExitCode::kNoCamera};
  }
  if (system.devices.empty()) {
    return {"the system lists no video device at all",
            "Plug the camera in, try another cable and socket, and check whether the system shows "
            "it; the privacy settings may deny programs access to cameras.",
            ExitCode::kNoCamera};
  }
  return {"none of the video devices counts as a USB camera",
          "The lines above say why for each; a USB camera has usb# in its device path.",
          ExitCode::kNoCamera};
}

}  // namespace borvanusb
