#include "support/memory_platform.h"

#include "support/hostile_control.h"

namespace borvan_fuzz {
namespace {

class Moniker : public borvan::VideoInputMoniker {
 public:
  Moniker(unsigned vendor_nodes, bool refuses) : vendor_nodes_(vendor_nodes), refuses_(refuses) {}

  unsigned VendorNodes() const { return vendor_nodes_; }
  bool Refuses() const { return refuses_; }

 private:
  const unsigned vendor_nodes_;
  const bool refuses_;
};

class MemoryPlatform : public borvan::DevicePlatform {
 public:
  void InitialiseCom() override {}

  std::optional<borvan::SystemVersion> GetSystemVersion() override { return TheSystem().version; }

  borvan::VideoInputListing ListVideoInputs() override {
    borvan::VideoInputListing listing;
    listing.outcome = TheSystem().outcome;
    listing.result = TheSystem().result;
    if (listing.outcome == borvan::VideoInputListing::Outcome::kWalked) {
      for (const ListedDevice& device : TheSystem().devices) {
        listing.devices.push_back({device.path, device.name,
                                   std::make_shared<Moniker>(device.vendor_nodes, device.refuses)});
      }
    }
    return listing;
  }

  void OpenVendorNodes(borvan::VideoInputMoniker* moniker,
                       const borvan::VendorNodeHandler& keep) override {
    const auto* const device = dynamic_cast<Moniker*>(moniker);
    if (device == nullptr) {
      throw "ERROR: gcap.pmVideo->BindToObject failed";
    }
    for (unsigned node = 0; node < device->VendorNodes(); ++node) {
      keep(TheControl(), node);
    }
    if (device->Refuses()) {
      throw "ERROR: gcap.pVCap->QueryInterface failed";
    }
  }

  std::string ToAnsi(std::u16string_view wide) override { return NarrowText(wide); }
  std::uint32_t TryOpenExclusively(const std::string& /*path*/) override { return 0; }
  std::string SystemMessage(std::uint32_t /*code*/) override { return ""; }
};

}  // namespace

SystemScript& TheSystem() {
  static auto& system = *new SystemScript;
  return system;
}

std::unique_ptr<borvan::DevicePlatform> MakeMemoryPlatform() {
  return std::make_unique<MemoryPlatform>();
}

std::string NarrowText(std::u16string_view wide) {
  std::string text;
  for (const char16_t c : wide) {
    text += c < 0x100 ? static_cast<char>(c) : '?';
  }
  return text;
}

}  // namespace borvan_fuzz
