#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace borvanusb {

// Converts between the three encodings of a Windows program: UTF-8 inside the tool, UTF-16 for the
// system, the ANSI code page for the library.

std::wstring ToWide(std::string_view utf8);
std::string ToUtf8(std::wstring_view wide);
std::string AnsiToUtf8(std::string_view ansi);

// Converts to the ANSI code page. Returns nothing if it does not have one of the characters.
std::optional<std::string> ToAnsi(std::wstring_view wide);

// The system's text for an error code from GetLastError or COM, without a line end.
std::string SystemMessage(unsigned long code);

// Quotes an argument for a command line, so that the new process receives it unchanged.
std::wstring QuoteArgument(std::wstring_view argument);

}  // namespace borvanusb
