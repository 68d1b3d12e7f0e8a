// What a host meets when it lists the cameras, binds one and talks to its extension unit.

#include <cstring>

#include "com/identifiers.h"
#include "fixture.h"
#include "host.h"

namespace {

using host::ComPtr;
using test::FirstCamera;
using test::kFirstPath;
using test::kSecondPath;
using test::SecondCamera;

constexpr GUID kTopologyInfo = {
    0x720D4AC0, 0x7533, 0x11D0, {0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00}};
constexpr GUID kKsControl = {
    0x28F54685, 0x06FD, 0x11D2, {0xB2, 0x7A, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};
constexpr GUID kDevSpecific = {
    0x941C7AC0, 0xC559, 0x11D0, {0x8A, 0x2B, 0x00, 0xA0, 0xC9, 0x25, 0x5A, 0xC1}};
constexpr GUID kUnit = {
    0xDD880F8A, 0x1CBA, 0x4954, {0x8A, 0x25, 0xF7, 0x87, 0x59, 0x67, 0xF0, 0xF7}};

constexpr auto kMoreData = static_cast<HRESULT>(0x800700EA);
constexpr auto kNotFound = static_cast<HRESULT>(0x80070490);
constexpr auto kSetNotFound = static_cast<HRESULT>(0x80070492);
constexpr auto kTooSmall = static_cast<HRESULT>(0x8007007A);
constexpr auto kInvalidFunction = static_cast<HRESULT>(0x80070001);

class Filter : public test::CameraTest {
 protected:
  ComPtr<IBaseFilter> BindFirst() {
    Register({FirstCamera(), SecondCamera()});
    return host::Bind(kFirstPath);
  }
};

// A request for the length of selector 1 with each field as a test wants it.
struct Request {
  GUID set = kUnit;
  ULONG selector = 1;
  ULONG flags = 0x10000001;  // GET with TOPOLOGY
  ULONG node = 2;
  ULONG size = 32;
};

host::Reply Ask(IKsControl* control, const Request& wanted) {
  KSP_NODE request = {};
  request.Property.Set = wanted.set;
  request.Property.Id = wanted.selector;
  request.Property.Flags = wanted.flags;
  request.NodeId = wanted.node;
  host::Reply reply = {S_OK, 77};
  reply.result = control->KsProperty(&request.Property, wanted.size, nullptr, 0, &reply.bytes);
  return reply;
}

TEST_F(Filter, CamerasAreListedInTheOrderOfTheFile) {
  Register({SecondCamera(), FirstCamera()});
  const auto inputs = host::VideoInputs();
  ASSERT_EQ(inputs.size(), 2U);
  EXPECT_EQ(inputs[0].path, kSecondPath);
  EXPECT_EQ(inputs[0].name, L"Second");
  EXPECT_EQ(inputs[1].path, kFirstPath);
  EXPECT_EQ(inputs[1].name, L"First");
}

TEST_F(Filter, NamesMayHoldAnyCharacter) {
  Register(
      {test::CameraJson("pid_000a#\xC3\xA4", "K\xC3\xA4mera \xE2\x82\xAC", R"("vendor")", "")});
  const auto inputs = host::VideoInputs();
  ASSERT_EQ(inputs.size(), 1U);
  EXPECT_EQ(inputs[0].name, L"K\u00e4mera \u20ac");
  EXPECT_EQ(inputs[0].path, L"\\\\?\\usb#vid_1234&pid_000a#\u00e4");
  EXPECT_TRUE(host::Bind(inputs[0].path));
}

TEST_F(Filter, NodesAreThoseOfTheConfiguration) {
  const auto filter = BindFirst();
  ASSERT_TRUE(filter);
  const auto topology = host::Query<IKsTopologyInfo>(filter.Get(), kTopologyInfo);
  ASSERT_TRUE(topology);
  DWORD count = 0;
  ASSERT_EQ(topology->get_NumNodes(&count), S_OK);
  EXPECT_EQ(count, 3U);
  GUID type = {};
  ASSERT_EQ(topology->get_NodeType(0, &type), S_OK);
  EXPECT_FALSE(IsEqualGUID(type, kDevSpecific));
  ASSERT_EQ(topology->get_NodeType(2, &type), S_OK);
  EXPECT_TRUE(IsEqualGUID(type, kDevSpecific));
  // Hosts ask for one node more than there are.
  EXPECT_LT(topology->get_NodeType(3, &type), 0);
  ComPtr<IUnknown> node;
  EXPECT_LT(
      topology->CreateNodeInstance(3, IID_IUnknown, reinterpret_cast<void**>(node.GetAddressOf())),
      0);
  EXPECT_FALSE(node);
}

TEST_F(Filter, NodeNameTellsTheSizeItNeeds) {
  const auto filter = BindFirst();
  ASSERT_TRUE(filter);
  const auto topology = host::Query<IKsTopologyInfo>(filter.Get(), kTopologyInfo);
  DWORD size = 0;
  EXPECT_EQ(topology->get_NodeName(2, nullptr, 0, &size), kMoreData);
  EXPECT_EQ(size, 32U);  // "Device Specific" and its terminator, two bytes each
  wchar_t name[16] = {};
  EXPECT_EQ(topology->get_NodeName(2, name, 31, &size), kMoreData);
  EXPECT_EQ(topology->get_NodeName(2, name, 32, &size), S_OK);
  EXPECT_STREQ(name, L"Device Specific");
}

TEST_F(Filter, ConnectionsChainTheNodesFromInputToOutput) {
  const auto filter = BindFirst();
  ASSERT_TRUE(filter);
  const auto topology = host::Query<IKsTopologyInfo>(filter.Get(), kTopologyInfo);
  DWORD count = 0;
  ASSERT_EQ(topology->get_NumConnections(&count), S_OK);
  ASSERT_EQ(count, 4U);
  KSTOPOLOGY_CONNECTION connection = {};
  ASSERT_EQ(topology->get_ConnectionInfo(0, &connection), S_OK);
  EXPECT_EQ(connection.FromNode, 0xFFFFFFFFU);
  EXPECT_EQ(connection.ToNode, 0U);
  ASSERT_EQ(topology->get_ConnectionInfo(3, &connection), S_OK);
  EXPECT_EQ(connection.FromNode, 2U);
  EXPECT_EQ(connection.ToNode, 0xFFFFFFFFU);
  EXPECT_LT(topology->get_ConnectionInfo(4, &connection), 0);
}

TEST_F(Filter, TakesPartInAGraphAndHasNoPins) {
  const auto filter = BindFirst();
  ASSERT_TRUE(filter);
  EXPECT_EQ(filter->JoinFilterGraph(nullptr, L"source"), S_OK);
  FILTER_INFO info = {};
  ASSERT_EQ(filter->QueryFilterInfo(&info), S_OK);
  EXPECT_STREQ(info.achName, L"source");
  EXPECT_EQ(info.pGraph, nullptr);

  // A longer name than the record holds is cut, not written beyond it.
  const std::wstring long_name(300, L'x');
  EXPECT_EQ(filter->JoinFilterGraph(nullptr, long_name.c_str()), S_OK);
  ASSERT_EQ(filter->QueryFilterInfo(&info), S_OK);
  EXPECT_EQ(std::wcslen(info.achName), 127U);

  ComPtr<IEnumPins> pins;
  ASSERT_EQ(filter->EnumPins(pins.GetAddressOf()), S_OK);
  IPin* pin = nullptr;
  ULONG fetched = 9;
  EXPECT_EQ(pins->Next(1, &pin, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 0U);

  FILTER_STATE state = State_Running;
  EXPECT_EQ(filter->GetState(0, &state), S_OK);
  EXPECT_EQ(state, State_Stopped);
  EXPECT_EQ(filter->Run(0), S_OK);
  EXPECT_EQ(filter->GetState(0, &state), S_OK);
  EXPECT_EQ(state, State_Running);
}

TEST_F(Filter, LengthQueryAnswersMoreDataWithTheLength) {
  const auto filter = BindFirst();
  ASSERT_TRUE(filter);
  const auto control = host::NodeControl(filter.Get(), 2);
  ASSERT_TRUE(control);
  const struct {
    ULONG selector;
    ULONG length;
  } lengths[] = {{1, 4}, {2, 12}, {3, 11}, {4, 64}, {5, 64}, {6, 64}, {7, 64}};
  for (const auto& expected : lengths) {
    const host::Reply reply = host::QueryLength(control.Get(), expected.selector);
    EXPECT_EQ(reply.result, kMoreData);
    EXPECT_EQ(reply.bytes, expected.length) << "selector " << expected.selector;
  }
}

TEST_F(Filter, ARegisterThatIsWrittenReadsBack) {
  const auto filter = BindFirst();
  ASSERT_TRUE(filter);
  const auto control = host::NodeControl(filter.Get(), 2);
  ASSERT_TRUE(host::WriteRegister(control.Get(), 0xABCD, 0x5A));
  std::uint8_t value = 0;
  ASSERT_TRUE(host::ReadRegister(control.Get(), 0xABCD, &value));
  EXPECT_EQ(value, 0x5A);
}

TEST_F(Filter, RequestsThatTheDriverRefusesGetItsCodes) {
  const auto filter = BindFirst();
  ASSERT_TRUE(filter);
  const auto control = host::NodeControl(filter.Get(), 2);
  ASSERT_TRUE(control);
  GUID other_set = kUnit;
  other_set.Data1 ^= 1;
  const struct {
    const char* title;
    Request request;
    HRESULT result;
  } cases[] = {
      {"as hosts send it", {}, kMoreData},
      {"unknown set", {.set = other_set}, kSetNotFound},
      {"selector 0", {.selector = 0}, kNotFound},
      {"selector 8", {.selector = 8}, kNotFound},
      {"node of another type", {.node = 1}, kSetNotFound},
      {"node that is not there", {.node = 3}, kInvalidFunction},
      {"without TOPOLOGY", {.flags = 1}, kSetNotFound},
      {"neither get nor set", {.flags = 0x10000004}, E_INVALIDARG},
      {"request without a node", {.size = 24}, E_INVALIDARG},
      {"request shorter than a property", {.size = 23}, E_INVALIDARG},
  };
  for (const auto& test_case : cases) {
    const host::Reply reply = Ask(control.Get(), test_case.request);
    EXPECT_EQ(reply.result, test_case.result) << test_case.title;
    EXPECT_EQ(reply.bytes, test_case.result == kMoreData ? 4U : 0U) << test_case.title;
  }
}

TEST_F(Filter, NullArgumentsAreRefused) {
  const auto filter = BindFirst();
  ASSERT_TRUE(filter);
  const auto control = host::NodeControl(filter.Get(), 2);
  KSP_NODE request = {};
  request.Property.Set = kUnit;
  request.Property.Id = 1;
  request.Property.Flags = 0x10000001;
  request.NodeId = 2;
  ULONG bytes = 0;
  std::uint8_t data[4] = {};
  EXPECT_EQ(control->KsProperty(nullptr, 32, data, 4, &bytes), E_POINTER);
  EXPECT_EQ(control->KsProperty(&request.Property, 32, nullptr, 4, &bytes), E_POINTER);
  EXPECT_EQ(control->KsProperty(&request.Property, 32, data, 4, nullptr), E_POINTER);
}

TEST_F(Filter, AGetIntoATooSmallBufferIsRefused) {
  const auto filter = BindFirst();
  ASSERT_TRUE(filter);
  const auto control = host::NodeControl(filter.Get(), 2);
  std::vector<std::uint8_t> block(3);
  EXPECT_EQ(host::Get(control.Get(), 1, block).result, kTooSmall);
}

TEST_F(Filter, AnyVendorNodeIsReachedByItsIdInTheRequest) {
  Register({test::CameraJson("pid_000a#1&1&1#first", "First",
                             R"("processing", "vendor", "camera-terminal", "vendor")", "")});
  const auto filter = host::Bind(kFirstPath);
  ASSERT_TRUE(filter);
  const auto last = host::NodeControl(filter.Get(), 3);
  ASSERT_TRUE(last);
  EXPECT_EQ(Ask(last.Get(), {.node = 1}).result, kMoreData);
  EXPECT_EQ(Ask(last.Get(), {.node = 3}).result, kMoreData);
  // Node 2, to which hosts send, is none of this camera's vendor nodes.
  EXPECT_EQ(Ask(last.Get(), {.node = 2}).result, kSetNotFound);
}

TEST_F(Filter, ACameraWithoutAVendorNodeBindsAndHasNone) {
  Register({test::CameraJson("pid_000a#1&1&1#first", "First", R"("processing")", "")});
  const auto filter = host::Bind(kFirstPath);
  ASSERT_TRUE(filter);
  const auto topology = host::Query<IKsTopologyInfo>(filter.Get(), kTopologyInfo);
  GUID type = {};
  ASSERT_EQ(topology->get_NodeType(0, &type), S_OK);
  EXPECT_FALSE(IsEqualGUID(type, kDevSpecific));
  EXPECT_LT(topology->get_NodeType(1, &type), 0);
}

TEST_F(Filter, ControlOutlivesItsFilter) {
  Register({FirstCamera(), SecondCamera()});
  const auto control = host::OpenCamera(kFirstPath);
  ASSERT_TRUE(control);
  EXPECT_EQ(host::QueryLength(control.Get(), 1).result, kMoreData);
}

TEST_F(Filter, TheFilterItselfAnswersNodeRequests) {
  const auto filter = BindFirst();
  ASSERT_TRUE(filter);
  const auto control = host::Query<IKsControl>(filter.Get(), kKsControl);
  ASSERT_TRUE(control);
  EXPECT_EQ(Ask(control.Get(), {}).result, kMoreData);
}

TEST_F(Filter, CamerasAreApart) {
  Register({FirstCamera(), SecondCamera()});
  const auto first = host::OpenCamera(kFirstPath);
  const auto second = host::OpenCamera(kSecondPath);
  ASSERT_TRUE(first);
  ASSERT_TRUE(second);
  ASSERT_TRUE(host::WriteRegister(first.Get(), 0x10, 0x11));
  std::uint8_t value = 0xEE;
  ASSERT_TRUE(host::ReadRegister(second.Get(), 0x10, &value));
  EXPECT_EQ(value, 0);
}

TEST_F(Filter, BindingFailsWhenTheFileLostTheCamera) {
  Register({FirstCamera(), SecondCamera()});
  Configure({SecondCamera()});
  HRESULT result = S_OK;
  EXPECT_FALSE(host::Bind(kFirstPath, &result));
  EXPECT_EQ(result, static_cast<HRESULT>(0x8007048F));
}

TEST_F(Filter, TopologyOfAFilterWithoutACameraIsRefused) {
  Register({FirstCamera()});
  ComPtr<IBaseFilter> filter;
  ASSERT_EQ(CoCreateInstance(virtual_camera::kClassId, nullptr, CLSCTX_INPROC_SERVER,
                             IID_IBaseFilter, reinterpret_cast<void**>(filter.GetAddressOf())),
            S_OK);
  const auto topology = host::Query<IKsTopologyInfo>(filter.Get(), kTopologyInfo);
  DWORD count = 0;
  EXPECT_EQ(topology->get_NumNodes(&count), E_UNEXPECTED);
}

}  // namespace
