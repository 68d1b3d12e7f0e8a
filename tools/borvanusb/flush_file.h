#pragma once

#include <filesystem>

// Waits until a closed file's bytes have reached the disk, so that a cut of the computer's own
// power can't take them back. A system that can't tell is believed.
void FlushFile(const std::filesystem::path& file);
