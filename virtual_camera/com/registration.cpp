#include "com/registration.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cwchar>
#include <memory>
#include <type_traits>
#include <utility>

#include "com/identifiers.h"
#include "core/format.h"
#include "core/wide_text.h"

namespace virtual_camera {
namespace {

struct KeyCloser {
  void operator()(HKEY key) const { RegCloseKey(key); }
};
using Key = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

// The value of the class's key with the name of the configuration file.
constexpr wchar_t kConfigurationValue[] = L"Configuration";

// Room for a subkey's name with its terminator: the registry allows 255 characters.
constexpr DWORD kKeyNameSize = 256;

const std::wstring& ClassIdText() {
  static const std::wstring kText = WideOf(BORVAN_VIRTUAL_CAMERA_CLASS_ID);
  return kText;
}

std::wstring ClassKeyName() {
  return L"CLSID\\" + ClassIdText();
}

std::wstring CategoryKeyName() {
  return std::wstring(L"CLSID\\") + kVideoInputCategory + L"\\Instance";
}

// Three digits keep the cameras in the order of the configuration, because enumerators go through
// the entries by name.
std::wstring EntryKeyName(std::size_t position) {
  std::wstring number = std::to_wstring(position);
  number.insert(0, number.size() < 3 ? 3 - number.size() : 0, L'0');
  return ClassIdText() + L"#" + number;
}

void Check(LSTATUS status, const std::string& action) {
  if (status != ERROR_SUCCESS) {
    throw RegistrationError(Format("can't {}: error {}{}", action, status,
                                   status == ERROR_ACCESS_DENIED ? " (administrator rights?)" : ""),
                            HRESULT_FROM_WIN32(static_cast<DWORD>(status)));
  }
}

Key CreateKey(HKEY parent, const std::wstring& name) {
  HKEY key = nullptr;
  Check(RegCreateKeyExW(parent, name.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &key,
                        nullptr),
        Format("create the registry key HKCR\\{}", Utf8Of(name)));
  return Key(key);
}

// Returns an empty owner if there is no such key.
Key OpenKey(HKEY parent, const std::wstring& name, REGSAM access) {
  HKEY key = nullptr;
  return RegOpenKeyExW(parent, name.c_str(), 0, access, &key) == ERROR_SUCCESS ? Key(key) : Key();
}

void WriteText(const Key& key, const wchar_t* name, const std::wstring& text) {
  Check(RegSetValueExW(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                       static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
        "write to the registry");
}

// Returns an empty text if there is no such key or value, or if the value is not a text.
std::wstring ReadText(const Key& key, const wchar_t* name) {
  DWORD size = 0;
  if (!key || RegGetValueW(key.get(), nullptr, name, RRF_RT_REG_SZ, nullptr, nullptr, &size) !=
                  ERROR_SUCCESS) {
    return {};
  }
  std::wstring text(size / sizeof(wchar_t), L'\0');
  if (RegGetValueW(key.get(), nullptr, name, RRF_RT_REG_SZ, nullptr, text.data(), &size) !=
      ERROR_SUCCESS) {
    return {};
  }
  // The size includes the terminating zero and anything after it.
  text.resize(std::wcslen(text.c_str()));
  return text;
}

// The filter mapper's description of a filter: version 2, the normal merit, no pins, a spare field.
constexpr std::array<std::uint32_t, 4> kFilterData = {2, 0x00200000, 0, 0};

// The keys of our entries, in order.
std::vector<std::wstring> EntryKeyNames(const Key& category) {
  std::vector<std::wstring> names;
  const std::wstring prefix = ClassIdText() + L"#";
  std::array<wchar_t, kKeyNameSize> name = {};
  for (DWORD index = 0;; ++index) {
    DWORD length = kKeyNameSize;
    const LSTATUS status = RegEnumKeyExW(category.get(), index, name.data(), &length, nullptr,
                                         nullptr, nullptr, nullptr);
    if (status != ERROR_SUCCESS) {
      return names;
    }
    const std::wstring_view found(name.data(), length);
    if (SamePath(found.substr(0, prefix.size()), prefix)) {
      names.emplace_back(found);
    }
  }
}

void RemoveTree(HKEY parent, const std::wstring& name) {
  const LSTATUS status = RegDeleteTreeW(parent, name.c_str());
  if (status != ERROR_FILE_NOT_FOUND && status != ERROR_PATH_NOT_FOUND) {
    Check(status, Format("remove the registry key {}", Utf8Of(name)));
  }
}

}  // namespace

void AddEntry(HKEY classes, const CategoryEntry& entry) {
  const Key category = CreateKey(classes, CategoryKeyName());
  const std::wstring name = EntryKeyName(entry.position);
  try {
    const Key key = CreateKey(category.get(), name);
    WriteText(key, L"CLSID", ClassIdText());
    WriteText(key, L"FriendlyName", entry.name);
    WriteText(key, L"DevicePath", entry.path);
    Check(RegSetValueExW(key.get(), L"FilterData", 0, REG_BINARY,
                         reinterpret_cast<const BYTE*>(kFilterData.data()), sizeof kFilterData),
          "write to the registry");
  } catch (const RegistrationError&) {
    RegDeleteTreeW(category.get(), name.c_str());
    throw;
  }
}

bool HasEntry(HKEY classes, const CategoryEntry& entry) {
  const Key category = OpenKey(classes, CategoryKeyName(), KEY_READ);
  return category &&
         SamePath(ReadText(OpenKey(category.get(), EntryKeyName(entry.position), KEY_READ),
                           L"DevicePath"),
                  entry.path);
}

void RemoveEntry(HKEY classes, const std::wstring& path) {
  const Key category = OpenKey(classes, CategoryKeyName(), KEY_READ | KEY_WRITE);
  if (!category) {
    if (OpenKey(classes, CategoryKeyName(), KEY_READ)) {
      Check(ERROR_ACCESS_DENIED, "remove a camera from the video inputs");
    }
    return;
  }
  for (const std::wstring& name : EntryKeyNames(category)) {
    if (SamePath(ReadText(OpenKey(category.get(), name, KEY_READ), L"DevicePath"), path)) {
      RemoveTree(category.get(), name);
    }
  }
}

void RegisterCameras(HKEY classes, const std::wstring& dll, const std::wstring& configuration,
                     const std::vector<CategoryEntry>& entries) {
  UnregisterCameras(classes);
  try {
    const Key class_key = CreateKey(classes, ClassKeyName());
    WriteText(class_key, nullptr, L"BorvanUSB virtual camera");
    WriteText(class_key, kConfigurationValue, configuration);
    const Key server = CreateKey(classes, ClassKeyName() + L"\\InprocServer32");
    WriteText(server, nullptr, dll);
    WriteText(server, L"ThreadingModel", L"Both");
    for (const CategoryEntry& entry : entries) {
      AddEntry(classes, entry);
    }
  } catch (const RegistrationError&) {
    try {
      UnregisterCameras(classes);
    } catch (const RegistrationError&) {
      // The first failure is the one that tells the user what is wrong.
    }
    throw;
  }
}

void UnregisterCameras(HKEY classes) {
  // Opened only to find the entries: removing one needs no right on the category itself.
  const Key category = OpenKey(classes, CategoryKeyName(), KEY_READ);
  if (category) {
    for (const std::wstring& name : EntryKeyNames(category)) {
      RemoveTree(category.get(), name);
    }
  }
  RemoveTree(classes, ClassKeyName());
}

std::wstring RegisteredConfiguration(HKEY classes) {
  return ReadText(OpenKey(classes, ClassKeyName(), KEY_READ), kConfigurationValue);
}

bool IsRegistered(HKEY classes) {
  return OpenKey(classes, ClassKeyName() + L"\\InprocServer32", KEY_READ) != nullptr;
}

}  // namespace virtual_camera
