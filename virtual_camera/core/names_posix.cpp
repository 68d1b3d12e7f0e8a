#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "core/format.h"
#include "core/names.h"
#include "core/utf8_path.h"

namespace virtual_camera {
namespace {

constexpr int kMostLinks = 40;  // the system itself follows no more

// Returns the file that is created if `path` is opened for writing and is a link to a missing file.
std::filesystem::path EndOfLinks(std::filesystem::path path) {
  std::error_code none;
  for (int links = 0; links < kMostLinks; ++links) {
    const std::filesystem::path target = std::filesystem::read_symlink(path, none);
    if (none) {
      break;
    }
    path = path.parent_path() / target;
  }
  return path;
}

std::filesystem::path WithoutDots(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::path canonical = std::filesystem::weakly_canonical(path, error);
  return error ? path.lexically_normal() : canonical;
}

bool Identify(const std::filesystem::path& path, FileIdentity& identity) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    return false;
  }
  identity.volume = status.st_dev;
  identity.number = status.st_ino;
  return true;
}

}  // namespace

FileIdentity IdentifyFile(const std::string& name_utf8) {
  FileIdentity identity;
  std::error_code error;
  const std::filesystem::path name = PathFromUtf8(name_utf8);
  std::filesystem::path path = std::filesystem::absolute(name, error);
  if (error) {
    identity.rest = name_utf8;
    return identity;
  }
  if (Identify(path, identity)) {
    return identity;
  }
  path = WithoutDots(EndOfLinks(path));
  while (!Identify(path, identity) && path.has_relative_path()) {
    identity.rest = Format("/{}{}", Utf8FromPath(path.filename()), identity.rest);
    path = path.parent_path();
  }
  return identity;
}

bool SameDevicePath(const std::string& a_utf8, const std::string& b_utf8) {
  const auto lower = [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  return std::equal(a_utf8.begin(), a_utf8.end(), b_utf8.begin(), b_utf8.end(),
                    [&](char a, char b) { return lower(a) == lower(b); });
}

}  // namespace virtual_camera
