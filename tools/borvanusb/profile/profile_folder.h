#pragma once

#include <memory>
#include <string>
#include <vector>

#include "camera/host.h"
#include "profile/camera_profile.h"
#include "profile/read_profile.h"

namespace borvanusb {

// The folder in which cameras find their profiles: BORVANUSB_PROFILES, else one in the user's data.
// Empty when the system names none.
std::string ProfileFolder(const Host& host);

// The profiles in the folder, by full names, in order.
std::vector<std::string> ProfileFiles(const Host& host);

// A profile and its maps; read again only when one of the files has changed. Throws Failure kFile
// when the file can't be read.
std::shared_ptr<const ProfileReading> ReadKeptProfile(const std::string& file);

// Forces a reload. Call it after writing the file, because the time stamp may not change.
void ForgetKeptProfile(const std::string& file);

// The same for a profile that is used. Throws Failure kFile when it has errors.
std::shared_ptr<const CameraProfile> LoadProfile(const std::string& file);

}  // namespace borvanusb
