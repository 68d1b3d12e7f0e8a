#pragma once

// A small host program: finds cameras as any capture application does, binds their filters and
// talks to their extension units.

#include <cstdint>
#include <string>
#include <vector>

#include "com/com_object.h"
#include "com/kernel_streaming.h"

namespace host {

using virtual_camera::ComPtr;

struct Device {
  std::wstring path;
  std::wstring name;
  ComPtr<IMoniker> moniker;
};

// The video inputs of the system, in its order.
std::vector<Device> VideoInputs();
std::vector<std::wstring> ListedPaths();

// The filter of the camera with this path; null if it is not listed. `result` gets the bind's.
ComPtr<IBaseFilter> Bind(const std::wstring& path, HRESULT* result = nullptr);

template <class T>
ComPtr<T> Query(IUnknown* object, const GUID& id) {
  ComPtr<T> other;
  object->QueryInterface(id, reinterpret_cast<void**>(other.GetAddressOf()));
  return other;
}

// IKsControl of node `node_id` of a bound filter; null if there is none.
ComPtr<IKsControl> NodeControl(IBaseFilter* filter, DWORD node_id);

struct Reply {
  HRESULT result;
  ULONG bytes;
};

// Requests to node 2, as hosts send them.
Reply QueryLength(IKsControl* control, ULONG selector);
Reply Set(IKsControl* control, ULONG selector, std::vector<std::uint8_t> block);
Reply Get(IKsControl* control, ULONG selector, std::vector<std::uint8_t>& block);

// A byte register of the chip below 0x10000, by the chip's own commands. False when one failed.
bool WriteRegister(IKsControl* control, std::uint16_t address, std::uint8_t value);
bool ReadRegister(IKsControl* control, std::uint16_t address, std::uint8_t* value);

// A word of the flash, most significant byte first. False when the command failed.
bool ProgramWord(IKsControl* control, std::uint32_t address, std::uint32_t value);
bool ReadWord(IKsControl* control, std::uint32_t address, std::uint32_t* value);

// Opens the extension unit of the camera with this path; null when it can't.
ComPtr<IKsControl> OpenCamera(const std::wstring& path);

}  // namespace host
