#pragma once

// File names are UTF-8 everywhere. These functions convert them to and from the system's form.

#include <filesystem>
#include <string>

namespace virtual_camera {

inline std::filesystem::path PathFromUtf8(const std::string& text) {
  return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

inline std::string Utf8FromPath(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return std::string(text.begin(), text.end());
}

}  // namespace virtual_camera
