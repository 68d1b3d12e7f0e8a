#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "workbench/http_message.h"

namespace borvanusb {

// Who may ask the workbench anything: the browser that was given the token, and only pages of the
// workbench's own.

struct Session {
  std::uint16_t port = 0;
  std::string token;   // 32 hexadecimal digits, in the address that is printed
  std::string cookie;  // likewise, what the browser gets for the token
  bool token_used = false;
};

// The longest bodies, in bytes.
constexpr std::uint64_t kLongestUpload = 64U << 20U;
constexpr std::uint64_t kLongestJson = 256U << 10U;

// Whether both texts are the same, in a time that depends only on their lengths.
bool SameSecret(std::string_view left, std::string_view right);

// The first header of that name, in lower case; nothing when there is none.
std::optional<std::string> HeaderOf(const HttpRequest& request, std::string_view name);

// "127.0.0.1:8123", as browsers write it.
std::string HostOf(const Session& session);

// Looks at a request before its body is read: form, Host, Origin, token or cookie, length of the
// body. Returns the answer for one that is refused.
std::optional<HttpResponse> CheckHead(const HttpRequest& request, const Session& session);

// Whether the request is the first load, which exchanges the token for the cookie.
bool AsksWithToken(const HttpRequest& request);
// The answer to it: the cookie and the way to the page. The token is used up then.
HttpResponse ExchangeToken(const HttpRequest& request, Session& session);

// Adds the headers that every answer has.
HttpResponse Hardened(HttpResponse response);

// {"error","message","hint"} with this status.
HttpResponse ErrorResponse(int status, std::string_view error, std::string_view message,
                           std::string_view hint = {});

}  // namespace borvanusb
