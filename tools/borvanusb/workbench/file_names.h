#pragma once

#include <string>
#include <string_view>

namespace borvanusb {

// Why a text is not a plain file name, as the rest of a sentence that starts with the name. Empty
// if it is one. A plain name has no folder, drive or stream, and is not a Windows device name, so
// on every system it names a file in the expected folder.
std::string ProblemOfPlainName(std::string_view name);

// A text in which files of a folder, which are named in full, get their plain names. Of the letters
// and separators in the folder's name every spelling counts that Windows takes for the same.
std::string WithPlainNames(std::string_view text, std::string_view folder);

}  // namespace borvanusb
