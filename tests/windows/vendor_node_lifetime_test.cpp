// Who holds which COM object, and for how long. The scripted objects count the library's
// references exactly.

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "scripted_camera.h"
#include "scripted_host.h"

namespace {

using test::kVendorNodeType;
using test::MakeDevice;
using test::ScriptedCamera;
using test::ScriptedNode;

// Outlives the tests: a destroyed device object keeps its references to the end of the process.
struct EternalCamera {
  EternalCamera() : camera(*new ScriptedCamera), node(camera.AddNode(kVendorNodeType)) {}
  ScriptedCamera& camera;
  ScriptedNode& node;
};

TEST(VendorNodeLifetime, ListingHoldsOneReferenceOfEachMoniker) {
  EternalCamera listed;
  const auto device = MakeDevice({&listed.camera});
  EXPECT_EQ(listed.camera.moniker.References(), 1U);
  EXPECT_EQ(listed.camera.Filter().References(), 0U);
  device->EnumerateDevices();
  EXPECT_EQ(listed.camera.moniker.References(), 1U);
}

TEST(VendorNodeLifetime, SelectingTakesNoReferenceOfTheMoniker) {
  EternalCamera selected;
  const auto device = MakeDevice({&selected.camera});
  device->SelectDevice(0);
  EXPECT_EQ(selected.camera.moniker.References(), 1U);
}

TEST(VendorNodeLifetime, OpeningKeepsFilterAndControlAndReleasesTheRest) {
  EternalCamera opened;
  const auto device = MakeDevice({&opened.camera});
  device->SelectDevice(0);
  EXPECT_EQ(opened.camera.Filter().References(), 1U);
  EXPECT_EQ(opened.camera.Topology().References(), 0U);
  EXPECT_EQ(opened.node.References(), 0U);
  EXPECT_EQ(opened.node.control.References(), 1U);
}

TEST(VendorNodeLifetime, ACameraWithoutVendorNodeKeepsNothing) {
  ScriptedCamera camera;
  const auto device = MakeDevice({&camera});
  device->SelectDevice(0);
  EXPECT_EQ(camera.Filter().References(), 0U);
  EXPECT_EQ(camera.Topology().References(), 0U);
  device->EnumerateDevices();
}

TEST(VendorNodeLifetime, AReplacedVendorNodeIsReleased) {
  EternalCamera two;
  ScriptedNode& later = two.camera.AddNode(kVendorNodeType);
  const auto device = MakeDevice({&two.camera});
  device->SelectDevice(0);
  EXPECT_EQ(two.node.References(), 0U);
  EXPECT_EQ(two.node.control.References(), 0U);
  EXPECT_EQ(later.control.References(), 1U);
  EXPECT_EQ(two.camera.Filter().References(), 1U);
}

TEST(VendorNodeLifetime, SelectingAnotherCameraReleasesTheFormer) {
  EternalCamera former;
  EternalCamera next;
  const auto device = MakeDevice({&former.camera, &next.camera});
  device->SelectDevice(0);
  device->SelectDevice(1);
  EXPECT_EQ(former.camera.Filter().References(), 0U);
  EXPECT_EQ(former.node.control.References(), 0U);
  EXPECT_EQ(next.camera.Filter().References(), 1U);
  EXPECT_EQ(next.node.control.References(), 1U);
}

TEST(VendorNodeLifetime, SelectingTheSameCameraAgainKeepsOneReferenceOfEach) {
  EternalCamera same;
  const auto device = MakeDevice({&same.camera});
  device->SelectDevice(0);
  device->SelectDevice(0);
  EXPECT_EQ(same.camera.Filter().References(), 1U);
  EXPECT_EQ(same.node.control.References(), 1U);
}

TEST(VendorNodeLifetime, ARefusedIndexKeepsTheChannel) {
  EternalCamera kept;
  const auto device = MakeDevice({&kept.camera});
  device->SelectDevice(0);
  EXPECT_EQ(device->SelectDevice(0xFFFFFFFF), static_cast<std::int32_t>(0x80004005));
  EXPECT_EQ(kept.camera.Filter().References(), 1U);
  EXPECT_EQ(kept.node.control.References(), 1U);
}

TEST(VendorNodeLifetime, ListingAnewKeepsTheOpenChannel) {
  EternalCamera kept;
  const auto device = MakeDevice({&kept.camera});
  device->SelectDevice(0);
  device->EnumerateDevices();
  EXPECT_EQ(kept.camera.moniker.References(), 1U);
  EXPECT_EQ(kept.camera.Filter().References(), 1U);
  EXPECT_EQ(kept.node.control.References(), 1U);
}

TEST(VendorNodeLifetime, DestroyingTheDeviceObjectReleasesNothing) {
  EternalCamera abandoned;
  auto device = MakeDevice({&abandoned.camera});
  device->SelectDevice(0);
  device.reset();
  EXPECT_EQ(abandoned.camera.moniker.References(), 1U);
  EXPECT_EQ(abandoned.camera.Filter().References(), 1U);
  EXPECT_EQ(abandoned.node.control.References(), 1U);
}

// Holds a transfer inside the device until the test lets it go.
class Gate {
 public:
  void Enter() {
    std::unique_lock lock(mutex_);
    entered_ = true;
    changed_.notify_all();
    changed_.wait_for(lock, kPatience, [this] { return open_; });
  }
  bool WaitUntilEntered() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kPatience, [this] { return entered_; });
  }
  void Open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }

 private:
  static constexpr std::chrono::seconds kPatience{20};
  std::mutex mutex_;
  std::condition_variable changed_;
  bool entered_ = false;
  bool open_ = false;
};

TEST(VendorNodeLifetime, ATransferInProgressKeepsControlAndFilterBeyondTheClosing) {
  EternalCamera busy;
  EternalCamera next;
  const auto device = MakeDevice({&busy.camera, &next.camera});
  device->SelectDevice(0);
  Gate gate;
  busy.node.control.SetAnswer([&gate](void*, ULONG, ULONG*) {
    gate.Enter();
    return static_cast<HRESULT>(0x8007001F);
  });
  std::int32_t result = 0;
  std::thread transfer([&] {
    std::uint8_t byte = 0x5A;
    result = device->ChannelSet(4, 1, &byte);
  });
  ASSERT_TRUE(gate.WaitUntilEntered());

  device->SelectDevice(1);
  EXPECT_EQ(next.node.control.References(), 1U);
  EXPECT_GE(busy.node.control.References(), 1U) << "released under a running transfer";
  EXPECT_GE(busy.camera.Filter().References(), 1U) << "the control's filter went first";

  gate.Open();
  transfer.join();
  EXPECT_EQ(result, static_cast<std::int32_t>(0x8007001F));
  EXPECT_EQ(busy.node.control.References(), 0U);
  EXPECT_EQ(busy.camera.Filter().References(), 0U);
}

// The lock that guards the pointer must not be held through a transfer: selecting would wait for a
// device that no longer answers.
TEST(VendorNodeLifetime, SelectingDoesNotWaitForATransferInProgress) {
  EternalCamera stuck;
  EternalCamera next;
  const auto device = MakeDevice({&stuck.camera, &next.camera});
  device->SelectDevice(0);
  Gate gate;
  stuck.node.control.SetAnswer([&gate](void*, ULONG, ULONG*) {
    gate.Enter();
    return S_OK;
  });
  bool finished = false;
  std::thread transfer([&] {
    std::uint8_t byte = 0;
    device->ChannelSet(4, 1, &byte);
    finished = true;
  });
  ASSERT_TRUE(gate.WaitUntilEntered());
  const auto start = std::chrono::steady_clock::now();
  device->SelectDevice(1);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  gate.Open();
  transfer.join();
  EXPECT_TRUE(finished);
}

}  // namespace
