// Which nodes of a capture filter are asked, which are opened, and what is raised when one refuses.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "scripted_camera.h"
#include "scripted_host.h"

namespace {

using test::kProcessingNodeType;
using test::kVendorNodeType;
using test::MakeDevice;
using test::ScriptedCamera;
using test::ScriptedNode;

constexpr std::int32_t kNoChannel = static_cast<std::int32_t>(0x80004003);

// The message that selecting camera 0 raises, empty when it raises none.
std::string RaisedText(borvan::BorvanUsb_Q7& device) {
  try {
    device.SelectDevice(0);
  } catch (const char* message) {
    return message;
  }
  return {};
}

std::int32_t SendOneByte(borvan::BorvanUsb_Q7& device) {
  std::uint8_t byte = 0;
  return device.ChannelSet(1, 1, &byte);
}

TEST(VendorNodeOpening, AsksTheTypeOfEveryIdFromZeroThroughTheNodeCount) {
  ScriptedCamera camera;
  camera.AddNode(kProcessingNodeType);
  camera.AddNode(kProcessingNodeType);
  camera.AddNode(kVendorNodeType);
  const auto device = MakeDevice({&camera});
  EXPECT_EQ(device->SelectDevice(0), 0);
  EXPECT_EQ(camera.Topology().type_queries, (std::vector<DWORD>{0, 1, 2, 3}));
}

TEST(VendorNodeOpening, AFilterWithoutNodesIsAskedForIdZero) {
  ScriptedCamera camera;
  const auto device = MakeDevice({&camera});
  EXPECT_EQ(device->SelectDevice(0), 0);
  EXPECT_EQ(camera.Topology().type_queries, (std::vector<DWORD>{0}));
}

TEST(VendorNodeOpening, BindsTheFilterOnceWithoutContextOrLeftMoniker) {
  ScriptedCamera camera;
  camera.AddNode(kVendorNodeType);
  const auto device = MakeDevice({&camera});
  EXPECT_EQ(camera.moniker.binds, 0) << "listing must not bind";
  EXPECT_EQ(device->SelectDevice(0), 0);
  EXPECT_EQ(camera.moniker.binds, 1);
  EXPECT_TRUE(camera.moniker.bound_alone);
}

TEST(VendorNodeOpening, CreatesVendorNodesOnly) {
  ScriptedCamera camera;
  const ScriptedNode& processing = camera.AddNode(kProcessingNodeType);
  const ScriptedNode& vendor = camera.AddNode(kVendorNodeType);
  const auto device = MakeDevice({&camera});
  device->SelectDevice(0);
  EXPECT_EQ(processing.times_created, 0);
  EXPECT_EQ(vendor.times_created, 1);
}

TEST(VendorNodeOpening, TheLastVendorNodeReplacesTheEarlierOnes) {
  ScriptedCamera camera;
  ScriptedNode& first = camera.AddNode(kVendorNodeType);
  camera.AddNode(kProcessingNodeType);
  ScriptedNode& last = camera.AddNode(kVendorNodeType);
  const auto device = MakeDevice({&camera});
  device->SelectDevice(0);
  first.control.ForgetTransfers();
  last.control.ForgetTransfers();
  EXPECT_EQ(SendOneByte(*device), S_OK);
  EXPECT_EQ(first.times_created, 1);
  EXPECT_EQ(first.control.Transfers().size(), 0U);
  EXPECT_EQ(last.control.Transfers().size(), 1U);
}

TEST(VendorNodeOpening, OpensTheNodeBehindTheCountWhenThereIsOne) {
  ScriptedCamera camera;
  camera.AddNode(kProcessingNodeType);
  ScriptedNode& vendor = camera.AddNode(kVendorNodeType);
  camera.Topology().uncounted_nodes = 1;
  const auto device = MakeDevice({&camera});
  device->SelectDevice(0);
  EXPECT_EQ(camera.Topology().type_queries, (std::vector<DWORD>{0, 1}));
  EXPECT_EQ(vendor.times_created, 1);
  EXPECT_EQ(SendOneByte(*device), S_OK);
}

TEST(VendorNodeOpening, ACameraWithoutVendorNodeLeavesTheChannelClosed) {
  ScriptedCamera camera;
  camera.AddNode(kProcessingNodeType);
  const auto device = MakeDevice({&camera});
  EXPECT_EQ(device->SelectDevice(0), 0);
  EXPECT_EQ(SendOneByte(*device), kNoChannel);
}

TEST(VendorNodeOpening, PassesOverANodeWhoseTypeIsNotToldWithZero) {
  for (const HRESULT result : {E_FAIL, S_FALSE}) {
    ScriptedCamera camera;
    ScriptedNode& vendor = camera.AddNode(kVendorNodeType);
    vendor.type_result = result;
    const auto device = MakeDevice({&camera});
    EXPECT_EQ(device->SelectDevice(0), 0) << result;
    EXPECT_EQ(vendor.times_created, 0) << result;
  }
}

// A filter that came is used, whatever the bind said of it.
TEST(VendorNodeOpening, LooksAtTheFilterAndNotAtTheResultOfTheBind) {
  ScriptedCamera camera;
  camera.AddNode(kVendorNodeType);
  camera.moniker.bind_result = E_FAIL;
  const auto device = MakeDevice({&camera});
  EXPECT_EQ(RaisedText(*device), "");
  EXPECT_EQ(SendOneByte(*device), S_OK);
}

TEST(VendorNodeOpening, APositiveAnswerForTheTopologyCounts) {
  ScriptedCamera camera;
  camera.AddNode(kVendorNodeType);
  camera.Filter().query_result = S_FALSE;
  const auto device = MakeDevice({&camera});
  EXPECT_EQ(RaisedText(*device), "");
  EXPECT_EQ(SendOneByte(*device), S_OK);
}

struct Refusal {
  const char* name;
  std::function<void(ScriptedCamera& camera, ScriptedNode& vendor)> arrange;
  const char* message;
};

// For gtest, which would print the bytes.
void PrintTo(const Refusal& refusal, std::ostream* out) {
  *out << refusal.name;
}

class RefusedOpening : public testing::TestWithParam<Refusal> {};

TEST_P(RefusedOpening, RaisesItsMessageAfterTheSelectionHasChanged) {
  ScriptedCamera good;
  good.AddNode(kVendorNodeType);
  ScriptedCamera refusing;
  ScriptedNode& vendor = refusing.AddNode(kVendorNodeType);
  GetParam().arrange(refusing, vendor);
  const auto device = MakeDevice({&refusing, &good});
  ASSERT_EQ(device->SelectDevice(1), 0);

  EXPECT_EQ(RaisedText(*device), GetParam().message);

  EXPECT_EQ(device->GetSelectedIndex(), 0);
  EXPECT_EQ(device->GetSelectedDevice().path, device->GetDeviceList()[0].path);
  EXPECT_EQ(SendOneByte(*device), kNoChannel) << "the former camera's channel must be closed";
  EXPECT_EQ(refusing.Filter().References(), 0U);
  EXPECT_EQ(refusing.Topology().References(), 0U);
  EXPECT_EQ(vendor.References(), 0U);
  EXPECT_EQ(vendor.control.References(), 0U);
}

constexpr char kBindText[] = "ERROR: gcap.pmVideo->BindToObject failed";
constexpr char kTopologyText[] = "ERROR: gcap.pVCap->QueryInterface failed";
constexpr char kCountText[] = "ERROR: pKsTopologyInfo->get_NumNodes(&uiNumNodes) == S_OK failed";
constexpr char kCreateText[] = "ERROR: create node instance failed for KSNODETYPE_DEV_SPECIFIC!";
constexpr char kControlText[] = "ERROR: pUnk->QueryInterface failed for KSNODETYPE_DEV_SPECIFIC!";

INSTANTIATE_TEST_SUITE_P(
    Each, RefusedOpening,
    testing::Values(
        Refusal{"NoFilterAndAFailure",
                [](ScriptedCamera& camera, ScriptedNode&) {
                  camera.moniker.gives_filter = false;
                  camera.moniker.bind_result = E_FAIL;
                },
                kBindText},
        Refusal{"NoFilterAndSuccess",
                [](ScriptedCamera& camera, ScriptedNode&) { camera.moniker.gives_filter = false; },
                kBindText},
        Refusal{
            "NoTopology",
            [](ScriptedCamera& camera, ScriptedNode&) { camera.Filter().query_result = E_FAIL; },
            kTopologyText},
        Refusal{
            "CountFails",
            [](ScriptedCamera& camera, ScriptedNode&) { camera.Topology().count_result = E_FAIL; },
            kCountText},
        Refusal{
            "CountIsPositive",
            [](ScriptedCamera& camera, ScriptedNode&) { camera.Topology().count_result = S_FALSE; },
            kCountText},
        Refusal{"CreationFails",
                [](ScriptedCamera&, ScriptedNode& vendor) { vendor.create_result = E_FAIL; },
                kCreateText},
        Refusal{"CreationIsPositive",
                [](ScriptedCamera&, ScriptedNode& vendor) { vendor.create_result = S_FALSE; },
                kCreateText},
        Refusal{"ControlFails",
                [](ScriptedCamera&, ScriptedNode& vendor) { vendor.query_result = E_NOINTERFACE; },
                kControlText},
        Refusal{"ControlIsPositive",
                [](ScriptedCamera&, ScriptedNode& vendor) { vendor.query_result = S_FALSE; },
                kControlText}),
    [](const testing::TestParamInfo<Refusal>& refusal) { return std::string(refusal.param.name); });

TEST(VendorNodeOpening, ARefusingNodeLeavesTheEarlierOneOpen) {
  ScriptedCamera camera;
  ScriptedNode& first = camera.AddNode(kVendorNodeType);
  ScriptedNode& second = camera.AddNode(kVendorNodeType);
  second.create_result = E_FAIL;
  const auto device = MakeDevice({&camera});
  EXPECT_EQ(RaisedText(*device), kCreateText);
  first.control.ForgetTransfers();
  EXPECT_EQ(SendOneByte(*device), S_OK);
  EXPECT_EQ(first.control.Transfers().size(), 1U);
}

TEST(VendorNodeOpening, ARefusingNodeEndsTheWalk) {
  ScriptedCamera camera;
  camera.AddNode(kVendorNodeType).create_result = E_FAIL;
  const ScriptedNode& second = camera.AddNode(kVendorNodeType);
  const auto device = MakeDevice({&camera});
  EXPECT_EQ(RaisedText(*device), kCreateText);
  EXPECT_EQ(camera.Topology().type_queries, (std::vector<DWORD>{0}));
  EXPECT_EQ(second.times_created, 0);
}

}  // namespace
