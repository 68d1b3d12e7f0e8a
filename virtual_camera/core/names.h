#pragma once

// Which names the system takes for the same thing: files, however they are spelled, and devices.

#include <cstdint>
#include <string>

namespace virtual_camera {

// A file by what it is. Names whose identities are equal mean one file: other spellings, links, and
// on Windows other cases.
struct FileIdentity {
  std::uint64_t volume = 0;
  // The file on its volume, or the nearest folder of its name that exists.
  std::uint64_t number = 0;
  // The way from that folder to a file that does not exist yet; empty for one that does.
  std::string rest;

  bool operator==(const FileIdentity&) const = default;
};

// Follows links. Opens the file at most for its attributes and changes nothing. A name that can't
// be a file's gets an identity too, which only the same name has.
FileIdentity IdentifyFile(const std::string& name_utf8);

// Whether hosts take two device paths for the same: they compare them without regard to case.
bool SameDevicePath(const std::string& a_utf8, const std::string& b_utf8);

}  // namespace virtual_camera
