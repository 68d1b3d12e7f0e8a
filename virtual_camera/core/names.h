#pragma once

// Finds out whether two names refer to the same file, or two paths to the same device.

#include <cstdint>
#include <string>

namespace virtual_camera {

// The identity of a file. Two names with equal identities refer to the same file, for example by
// another spelling, by a link, or on Windows by another case.
struct FileIdentity {
  std::uint64_t volume = 0;
  // The file on its volume. If it does not exist, the nearest parent folder that exists.
  std::uint64_t number = 0;
  // The path from that folder to the file. Empty if the file exists.
  std::string rest;

  bool operator==(const FileIdentity&) const = default;
};

// Returns the identity of a file. Follows links. Reads at most the attributes of the file and
// changes nothing. An invalid file name has an identity that only the same name has.
FileIdentity IdentifyFile(const std::string& name_utf8);

// Whether hosts treat two device paths as equal. Hosts ignore case.
bool SameDevicePath(const std::string& a_utf8, const std::string& b_utf8);

}  // namespace virtual_camera
