#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace borvanusb {

// Texts between the three encodings of a Windows program: UTF-8 inside, UTF-16 for the system, the
// ANSI code page for the library.

std::wstring ToWide(std::string_view utf8);
std::string ToUtf8(std::wstring_view wide);
std::string AnsiToUtf8(std::string_view ansi);

// The text in the ANSI code page; nothing when it holds a character that the code page lacks.
std::optional<std::string> ToAnsi(std::wstring_view wide);

// The system's text for an error, such as GetLastError gives or a COM result; without a line end.
std::string SystemMessage(unsigned long code);

// An argument as a program's command line needs it, so that the program's start code gives it back.
std::wstring QuoteArgument(std::wstring_view argument);

}  // namespace borvanusb
