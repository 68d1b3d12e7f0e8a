#pragma once

#include <filesystem>
#include <system_error>

namespace borvanusb {

// What the systems do in ways of their own to keep files.

// Waits until a closed file's bytes have reached the disk, so that a cut of the computer's own
// power can't take them back. A system that can't tell is believed.
void FlushFile(const std::filesystem::path& file);

// Gives a file another file's name, and waits until the change has reached the disk.
std::error_code ReplaceThrough(const std::filesystem::path& from, const std::filesystem::path& to);

// Whether the system takes two full names of files for one: Windows knows no case.
bool SameName(const std::filesystem::path& left, const std::filesystem::path& right);

}  // namespace borvanusb
