#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "camera/host.h"

namespace borvanusb {

// A host for a command line that runs repeatedly. It lists the cameras only once and keeps the
// camera open, so that live reading needs no transfers except those for the registers.
class OpenCameraHost : public Host {
 public:
  explicit OpenCameraHost(Host& host) : host_(host) {}

  std::vector<CameraIdentity> ListCameras() override;
  std::unique_ptr<Camera> OpenCamera(const CameraIdentity& camera) override;

  void Configure(const CommonArguments& arguments) override { host_.Configure(arguments); }
  std::unique_ptr<Reservation> ReserveCamera(const CameraIdentity& camera) override {
    return host_.ReserveCamera(camera);
  }
  bool IsReservedElsewhere(const std::string& path) override {
    return host_.IsReservedElsewhere(path);
  }
  std::string JournalFolder() const override { return host_.JournalFolder(); }
  bool StopRequested() const override { return host_.StopRequested(); }
  std::unique_ptr<StopHold> HoldStop() override { return host_.HoldStop(); }
  void SetLastWords(std::function<std::vector<std::string>()> words) override {
    host_.SetLastWords(std::move(words));
  }
  void Sleep(std::chrono::milliseconds time) override { host_.Sleep(time); }
  std::chrono::system_clock::time_point Now() const override { return host_.Now(); }
  std::chrono::steady_clock::time_point Clock() const override { return host_.Clock(); }
  bool Ask(const std::string& question) override { return host_.Ask(question); }
  std::string Environment(const std::string& name) const override {
    return host_.Environment(name);
  }
  std::string ReadStandardInput() override { return host_.ReadStandardInput(); }
  std::string LibraryVersion() override { return host_.LibraryVersion(); }
  SystemReport ExamineSystem() override { return host_.ExamineSystem(); }
  std::vector<std::string> Details() const override { return host_.Details(); }
  std::vector<int> RunChildren(
      const std::vector<std::vector<std::string>>& arguments,
      const std::function<void(std::size_t, bool, const std::string&)>& on_line) override {
    return host_.RunChildren(arguments, on_line);
  }

 private:
  Host& host_;
  std::optional<std::vector<CameraIdentity>> cameras_;
  std::string opened_;  // path
  std::shared_ptr<Camera> camera_;
};

}  // namespace borvanusb
