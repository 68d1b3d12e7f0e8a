#pragma once

// The identifiers of the virtual camera and its parts. They are defined here because the libraries
// that contain them differ between compilers.

#include <windows.h>

namespace virtual_camera {

// One hexadecimal digit; 0xFF for anything else.
constexpr unsigned char HexDigit(char digit) {
  if (digit >= '0' && digit <= '9') {
    return static_cast<unsigned char>(digit - '0');
  }
  if (digit >= 'A' && digit <= 'F') {
    return static_cast<unsigned char>(digit - 'A' + 10);
  }
  return 0xFF;
}

// The GUID of a text such as "{941C7AC0-C559-11D0-8A2B-00A0C9255AC1}" (braces, upper case). Any
// other text fails to compile.
consteval GUID GuidOfText(const char (&text)[39]) {
  constexpr int kByteAt[16] = {1, 3, 5, 7, 10, 12, 15, 17, 20, 22, 25, 27, 29, 31, 33, 35};
  if (text[0] != '{' || text[37] != '}' || text[9] != '-' || text[14] != '-' || text[19] != '-' ||
      text[24] != '-') {
    throw "a GUID is written {8-4-4-4-12}";
  }
  unsigned char bytes[16] = {};
  for (int i = 0; i < 16; ++i) {
    const unsigned char high = HexDigit(text[kByteAt[i]]);
    const unsigned char low = HexDigit(text[kByteAt[i] + 1]);
    if (high > 15 || low > 15) {
      throw "a GUID has upper-case hexadecimal digits only";
    }
    bytes[i] = static_cast<unsigned char>(high << 4 | low);
  }
  GUID guid = {};
  guid.Data1 = static_cast<unsigned int>(bytes[0]) << 24 |
               static_cast<unsigned int>(bytes[1]) << 16 |
               static_cast<unsigned int>(bytes[2]) << 8 | static_cast<unsigned int>(bytes[3]);
  guid.Data2 = static_cast<unsigned short>(bytes[4] << 8 | bytes[5]);
  guid.Data3 = static_cast<unsigned short>(bytes[6] << 8 | bytes[7]);
  for (int i = 0; i < 8; ++i) {
    guid.Data4[i] = bytes[8 + i];
  }
  return guid;
}

// The class id is chosen when the DLL is built, so that a test build never replaces an installed
// virtual camera.
inline constexpr GUID kClassId = GuidOfText(BORVAN_VIRTUAL_CAMERA_CLASS_ID);
inline constexpr wchar_t kVideoInputCategory[] = L"{860BB310-5D01-11D0-BD3B-00A0C911CE86}";

// The property set of the chip's extension unit.
inline constexpr GUID kExtensionUnitSet = GuidOfText("{DD880F8A-1CBA-4954-8A25-F7875967F0F7}");

inline constexpr GUID kKsControlId = GuidOfText("{28F54685-06FD-11D2-B27A-00A0C9223196}");
inline constexpr GUID kTopologyInfoId = GuidOfText("{720D4AC0-7533-11D0-A5D6-28DB04C10000}");

inline constexpr GUID kVendorNode = GuidOfText("{941C7AC0-C559-11D0-8A2B-00A0C9255AC1}");
inline constexpr GUID kStreamingNode = GuidOfText("{DFF229E1-F70F-11D0-B917-00A0C9223196}");
inline constexpr GUID kInputTerminalNode = GuidOfText("{DFF229E2-F70F-11D0-B917-00A0C9223196}");
inline constexpr GUID kOutputTerminalNode = GuidOfText("{DFF229E3-F70F-11D0-B917-00A0C9223196}");
inline constexpr GUID kSelectorNode = GuidOfText("{DFF229E4-F70F-11D0-B917-00A0C9223196}");
inline constexpr GUID kProcessingNode = GuidOfText("{DFF229E5-F70F-11D0-B917-00A0C9223196}");
inline constexpr GUID kCameraTerminalNode = GuidOfText("{DFF229E6-F70F-11D0-B917-00A0C9223196}");

inline constexpr GUID kVideoCategory = GuidOfText("{6994AD05-93EF-11D0-A3CC-00A0C9223196}");
inline constexpr GUID kCaptureCategory = GuidOfText("{65E8773D-8F56-11D0-A3B9-00A0C9223196}");

}  // namespace virtual_camera
