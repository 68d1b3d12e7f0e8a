#include "base/folders.h"

#include <filesystem>
#include <system_error>

namespace borvanusb {

bool IsFolder(const std::string& name) {
  std::error_code error;
  return std::filesystem::is_directory(
      std::filesystem::path(std::u8string(name.begin(), name.end())), error);
}

}  // namespace borvanusb
