#pragma once

#include <memory>
#include <string>
#include <vector>

#include "camera/host.h"
#include "profile/camera_profile.h"
#include "profile/read_profile.h"

namespace borvanusb {

// The folder with the user's profiles: BORVANUSB_PROFILES, else a folder in the user's data. Empty
// if the system has none.
std::string ProfileFolder(const Host& host);

// The full names of the profiles in the folder, sorted.
std::vector<std::string> ProfileFiles(const Host& host);

// Reads a profile and its maps, from a cache unless one of the files has changed. Throws Failure
// kFile if the file can't be read.
std::shared_ptr<const ProfileReading> ReadKeptProfile(const std::string& file);

// Forces a reload. Call it after writing the file, because the time stamp may not change.
void ForgetKeptProfile(const std::string& file);

// Reads a profile to use it. Throws Failure kFile also if the profile has errors.
std::shared_ptr<const CameraProfile> LoadProfile(const std::string& file);

}  // namespace borvanusb
