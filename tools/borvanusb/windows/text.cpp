#include "windows/text.h"

#include <windows.h>

#include <array>

namespace borvanusb {

namespace {

std::wstring Widen(std::string_view text, UINT code_page) {
  const auto size = static_cast<int>(text.size());
  const int length = MultiByteToWideChar(code_page, 0, text.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(code_page, 0, text.data(), size, wide.data(), length);
  return wide;
}

}  // namespace

std::wstring ToWide(std::string_view utf8) {
  return Widen(utf8, CP_UTF8);
}

std::string ToUtf8(std::wstring_view wide) {
  const auto size = static_cast<int>(wide.size());
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
  std::string text(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, text.data(), length, nullptr, nullptr);
  return text;
}

std::string AnsiToUtf8(std::string_view ansi) {
  return ToUtf8(Widen(ansi, CP_ACP));
}

std::optional<std::string> ToAnsi(std::wstring_view wide) {
  const auto size = static_cast<int>(wide.size());
  // Does not accept a similar character, because it would name another file. If the code page is
  // UTF-8, all characters exist and the flag is not allowed.
  const DWORD flags = GetACP() == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS;
  BOOL lacks = FALSE;
  BOOL* const asks = GetACP() == CP_UTF8 ? nullptr : &lacks;
  const int length =
      WideCharToMultiByte(CP_ACP, flags, wide.data(), size, nullptr, 0, nullptr, asks);
  std::string text(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_ACP, flags, wide.data(), size, text.data(), length, nullptr, asks);
  if (lacks != FALSE || (length == 0 && size > 0)) {
    return std::nullopt;
  }
  return text;
}

std::string SystemMessage(unsigned long code) {
  std::array<wchar_t, 512> text{};
  const DWORD length = FormatMessageW(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
      nullptr, code, 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
  std::wstring_view message(text.data(), length);
  while (!message.empty() && (message.back() == L' ' || message.back() == L'.')) {
    message.remove_suffix(1);
  }
  return ToUtf8(message);
}

std::wstring QuoteArgument(std::wstring_view argument) {
  if (!argument.empty() && argument.find_first_of(L" \t\n\v\"") == std::wstring_view::npos) {
    return std::wstring(argument);
  }
  // Backslashes are literal, except before a quote, where they must be doubled.
  std::wstring quoted = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t character : argument) {
    if (character == L'\\') {
      ++backslashes;
      continue;
    }
    if (character == L'"') {
      quoted.append(2 * backslashes + 1, L'\\');
    } else {
      quoted.append(backslashes, L'\\');
    }
    backslashes = 0;
    quoted += character;
  }
  quoted.append(2 * backslashes, L'\\');
  return quoted + L"\"";
}

}  // namespace borvanusb
