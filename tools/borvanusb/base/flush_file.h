#pragma once

#include <filesystem>
#include <system_error>

namespace borvanusb {

// File functions that each operating system implements differently.

// Waits until the content of a closed file is on the disk, so that it survives a power failure of
// the computer. Does not report errors.
void FlushFile(const std::filesystem::path& file);

// Renames `from` to `to`, replaces an existing `to`, and waits until the change is on the disk.
std::error_code ReplaceThrough(const std::filesystem::path& from, const std::filesystem::path& to);

// Whether `error` may mean that another process has the file open, which Windows also reports as a
// lack of rights. Other systems replace, remove and read files that are in use.
bool IsInUse(const std::error_code& error);

// Whether the system treats two full file names as equal. Windows ignores case.
bool SameName(const std::filesystem::path& left, const std::filesystem::path& right);

}  // namespace borvanusb
