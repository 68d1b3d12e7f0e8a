#pragma once

#include <string>
#include <string_view>

namespace borvanusb {

// Why a text can't be the plain name of a file in a folder, as the continuation of the name; empty
// when it can. A plain name has no folder, no drive, no stream, and is no device of Windows, so
// that the file it names is in the folder that one means, on every system.
std::string ProblemOfPlainName(std::string_view name);

// A text in which files of a folder, which are named in full, get their plain names. Of the letters
// and separators in the folder's name every spelling counts that Windows takes for the same.
std::string WithPlainNames(std::string_view text, std::string_view folder);

}  // namespace borvanusb
