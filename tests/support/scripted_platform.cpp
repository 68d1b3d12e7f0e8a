#include "support/scripted_platform.h"

#include <chrono>
#include <thread>
#include <utility>

namespace borvan_test {
namespace {

class CameraMoniker : public borvan::VideoInputMoniker {
 public:
  explicit CameraMoniker(Camera camera) : camera_(std::move(camera)) {}
  const Camera& Get() const { return camera_; }

 private:
  const Camera camera_;
};

}  // namespace

bool WaitUntil(const std::function<bool()>& holds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!holds()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

ScriptedPlatform::ScriptedPlatform(std::shared_ptr<PlatformScript> script)
    : script_(std::move(script)) {}

void ScriptedPlatform::InitialiseCom() {
  ++script_->com_initialisations;
}

std::optional<borvan::SystemVersion> ScriptedPlatform::GetSystemVersion() {
  return script_->version;
}

borvan::VideoInputListing ScriptedPlatform::ListVideoInputs() {
  borvan::VideoInputListing listing;
  listing.outcome = script_->outcome;
  listing.result = script_->listing_result;
  script_->listed.clear();
  if (listing.outcome != borvan::VideoInputListing::Outcome::kWalked) {
    return listing;
  }
  for (const Camera& camera : script_->cameras) {
    const auto moniker = std::make_shared<CameraMoniker>(camera);
    script_->listed.push_back(moniker);
    listing.devices.push_back({camera.path, camera.friendly_name, moniker});
  }
  return listing;
}

void ScriptedPlatform::OpenVendorNodes(borvan::VideoInputMoniker* moniker,
                                       const borvan::VendorNodeHandler& keep) {
  const auto* const camera = dynamic_cast<CameraMoniker*>(moniker);
  if (camera == nullptr) {
    throw "ERROR: gcap.pmVideo->BindToObject failed";
  }
  for (const VendorNode& node : camera->Get().vendor_nodes) {
    keep(node.control, node.id);
  }
  if (camera->Get().raise) {
    camera->Get().raise();
  }
}

std::string ScriptedPlatform::ToAnsi(std::u16string_view wide) {
  script_->converted.emplace_back(wide);
  std::string text;
  for (const char16_t c : wide) {
    text += c < 0x80 ? static_cast<char>(c) : '?';
  }
  return text;
}

std::uint32_t ScriptedPlatform::TryOpenExclusively(const std::string& path) {
  script_->opened_paths.push_back(path);
  return script_->open_error;
}

std::string ScriptedPlatform::SystemMessage(std::uint32_t code) {
  script_->asked_messages.push_back(code);
  const auto found = script_->messages.find(code);
  return found == script_->messages.end() ? "" : found->second;
}

Camera MakeCamera(char16_t letter, std::shared_ptr<MemoryChip> chip) {
  Camera camera;
  camera.path = u"\\\\?\\usb#vid_1234&pid_5678#";
  camera.path->push_back(letter);
  camera.friendly_name = u"Camera ";
  camera.friendly_name->push_back(letter);
  if (chip != nullptr) {
    camera.vendor_nodes.push_back({std::move(chip), 3});
  }
  return camera;
}

}  // namespace borvan_test
