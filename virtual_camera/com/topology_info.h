#pragma once

// IKsTopologyInfo, with which a capture filter shows the nodes of its device. mingw-w64 lacks the
// SDK's vidcap.h, so its vtable is declared here; the SDK's own header is used if it exists.

#include <windows.h>
// windows.h must come first.
#include <ks.h>
#include <unknwn.h>

#if __has_include(<vidcap.h>)
#include <vidcap.h>
#else
struct IKsTopologyInfo : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Category(DWORD index, GUID* category) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD index,
                                                       KSTOPOLOGY_CONNECTION* connection) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NodeName(DWORD node_id, WCHAR* name, DWORD buffer_bytes,
                                                 DWORD* name_bytes) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node_id, GUID* type) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node_id, REFIID iid,
                                                       void** object) = 0;

 protected:
  // Only Release ends an object; a virtual destructor would add an entry to the vtable.
  ~IKsTopologyInfo() = default;
};
#endif
