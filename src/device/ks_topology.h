#pragma once

// IKsTopologyInfo, as Microsoft documents it for the SDK header vidcap.h, which mingw-w64 lacks.

#include <windows.h>

#include <unknwn.h>

#if __has_include(<vidcap.h>)
#include <vidcap.h>
#else

struct IKsTopologyInfo : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Category(DWORD index, GUID* category) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD index, void* connection) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NodeName(DWORD node_id, WCHAR* name, DWORD size,
                                                 DWORD* length) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node_id, GUID* type) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node_id, REFIID iid,
                                                       void** object) = 0;

 protected:
  ~IKsTopologyInfo() = default;
};

#endif
