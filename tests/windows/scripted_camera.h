#pragma once

// A camera made of COM objects that the test scripts: moniker, capture filter, topology, nodes and
// their controls. Each counts the references that the library holds on it, each can refuse.

#include <windows.h>

#include <objidl.h>
#include <strmif.h>

#include <ks.h>
#include <ksproxy.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace test {

// Ids as Microsoft documents them, written here a second time: a slip in the library's own would
// otherwise agree with itself.
inline constexpr GUID kUnknownId = {
    0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr GUID kBaseFilterId = {
    0x56A86895, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr GUID kTopologyInfoId = {
    0x720D4AC0, 0x7533, 0x11D0, {0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00}};
inline constexpr GUID kKsControlId = {
    0x28F54685, 0x06FD, 0x11D2, {0xB2, 0x7A, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};
// KSNODETYPE_DEV_SPECIFIC
inline constexpr GUID kVendorNodeType = {
    0x941C7AC0, 0xC559, 0x11D0, {0x8A, 0x2B, 0x00, 0xA0, 0xC9, 0x25, 0x5A, 0xC1}};
// KSNODETYPE_VIDEO_PROCESSING
inline constexpr GUID kProcessingNodeType = {
    0xDFF229E5, 0xF70F, 0x11D0, {0xB9, 0x17, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};

// ERROR_MORE_DATA as a result: how a device answers a length query.
inline constexpr HRESULT kMoreData = static_cast<HRESULT>(0x800700EA);

// Never deletes itself: the test owns the object and looks at the count after the library has let
// go of it.
template <class Interface>
class Counted : public Interface {
 public:
  Counted() = default;
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override { return --references_; }

  // How many references the library holds.
  ULONG References() const { return references_; }

 protected:
  ~Counted() = default;

 private:
  std::atomic<ULONG> references_{0};
};

// One call of KsProperty, as it arrived.
struct Transfer {
  std::vector<std::uint8_t> request;
  const void* data = nullptr;
  std::vector<std::uint8_t> bytes;  // what stood in the data buffer before the answer
  ULONG length = 0;
  bool count_wanted = false;
};

class ScriptedControl final : public Counted<IKsControl> {
 public:
  // Fills the reply and returns the result; `returned` is the bytes-returned variable.
  using Answer = std::function<HRESULT(void* data, ULONG length, ULONG* returned)>;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG property_length, void* data,
                                       ULONG length, ULONG* returned) override;
  HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD method, ULONG method_length, void* data,
                                     ULONG length, ULONG* returned) override;
  HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT event, ULONG event_length, void* data, ULONG length,
                                    ULONG* returned) override;

  // Until one is set, a length query gives 64 bytes and every other transfer succeeds.
  void SetAnswer(Answer answer);

  std::vector<Transfer> Transfers() const;
  void ForgetTransfers();

 private:
  mutable std::mutex mutex_;
  Answer answer_;
  std::vector<Transfer> transfers_;
};

class ScriptedNode final : public Counted<IUnknown> {
 public:
  explicit ScriptedNode(const GUID& node_type) : type(node_type) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;

  GUID type;
  HRESULT type_result = S_OK;
  HRESULT create_result = S_OK;
  HRESULT query_result = S_OK;
  int times_created = 0;
  ScriptedControl control;
};

// The topology interface's methods in their documented order, declared apart from the library's.
struct TopologyInfo : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Category(DWORD index, GUID* category) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD index, void* connection) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NodeName(DWORD id, WCHAR* name, DWORD size,
                                                 DWORD* length) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NodeType(DWORD id, GUID* type) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD id, REFIID iid, void** object) = 0;

 protected:
  ~TopologyInfo() = default;
};

class ScriptedTopology final : public Counted<TopologyInfo> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD* count) override;
  HRESULT STDMETHODCALLTYPE get_Category(DWORD index, GUID* category) override;
  HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD* count) override;
  HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD index, void* connection) override;
  HRESULT STDMETHODCALLTYPE get_NodeName(DWORD id, WCHAR* name, DWORD size, DWORD* length) override;
  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override;
  HRESULT STDMETHODCALLTYPE get_NodeType(DWORD id, GUID* type) override;
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD id, REFIID iid, void** object) override;

  // By node id.
  std::vector<std::unique_ptr<ScriptedNode>> nodes;
  // Nodes kept out of the count, as by a filter whose ids begin at 1.
  DWORD uncounted_nodes = 0;
  HRESULT count_result = S_OK;
  std::vector<DWORD> type_queries;
};

class ScriptedFilter final : public Counted<IBaseFilter> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* id) override;
  HRESULT STDMETHODCALLTYPE Stop() override;
  HRESULT STDMETHODCALLTYPE Pause() override;
  HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;
  HRESULT STDMETHODCALLTYPE GetState(DWORD timeout, FILTER_STATE* state) override;
  HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) override;
  HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** clock) override;
  HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** pins) override;
  HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** pin) override;
  HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* info) override;
  HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
  HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* info) override;

  HRESULT query_result = S_OK;
  ScriptedTopology topology;
};

class ScriptedMoniker final : public Counted<IMoniker> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* id) override;
  HRESULT STDMETHODCALLTYPE IsDirty() override;
  HRESULT STDMETHODCALLTYPE Load(IStream* stream) override;
  HRESULT STDMETHODCALLTYPE Save(IStream* stream, BOOL clear_dirty) override;
  HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* size) override;
  HRESULT STDMETHODCALLTYPE BindToObject(IBindCtx* context, IMoniker* left, REFIID iid,
                                         void** object) override;
  HRESULT STDMETHODCALLTYPE BindToStorage(IBindCtx* context, IMoniker* left, REFIID iid,
                                          void** object) override;
  HRESULT STDMETHODCALLTYPE Reduce(IBindCtx* context, DWORD how, IMoniker** left,
                                   IMoniker** reduced) override;
  HRESULT STDMETHODCALLTYPE ComposeWith(IMoniker* right, BOOL only_if_not_generic,
                                        IMoniker** composite) override;
  HRESULT STDMETHODCALLTYPE Enum(BOOL forward, IEnumMoniker** monikers) override;
  HRESULT STDMETHODCALLTYPE IsEqual(IMoniker* other) override;
  HRESULT STDMETHODCALLTYPE Hash(DWORD* hash) override;
  HRESULT STDMETHODCALLTYPE IsRunning(IBindCtx* context, IMoniker* left,
                                      IMoniker* newly_running) override;
  HRESULT STDMETHODCALLTYPE GetTimeOfLastChange(IBindCtx* context, IMoniker* left,
                                                FILETIME* time) override;
  HRESULT STDMETHODCALLTYPE Inverse(IMoniker** inverse) override;
  HRESULT STDMETHODCALLTYPE CommonPrefixWith(IMoniker* other, IMoniker** prefix) override;
  HRESULT STDMETHODCALLTYPE RelativePathTo(IMoniker* other, IMoniker** path) override;
  HRESULT STDMETHODCALLTYPE GetDisplayName(IBindCtx* context, IMoniker* left,
                                           LPOLESTR* name) override;
  HRESULT STDMETHODCALLTYPE ParseDisplayName(IBindCtx* context, IMoniker* left, LPOLESTR name,
                                             ULONG* eaten, IMoniker** moniker) override;
  HRESULT STDMETHODCALLTYPE IsSystemMoniker(DWORD* kind) override;

  HRESULT bind_result = S_OK;
  bool gives_filter = true;
  int binds = 0;
  bool bound_alone = true;  // neither a bind context nor a left moniker in any bind
  ScriptedFilter filter;
};

// The whole camera. Nodes are added in the order of their ids, from 0 on.
class ScriptedCamera {
 public:
  ScriptedNode& AddNode(const GUID& type);

  ScriptedFilter& Filter() { return moniker.filter; }
  ScriptedTopology& Topology() { return moniker.filter.topology; }

  ScriptedMoniker moniker;
};

}  // namespace test
