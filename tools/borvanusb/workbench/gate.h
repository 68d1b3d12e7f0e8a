#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "workbench/http_message.h"

namespace borvanusb {

// Access control: only a browser that has the token, and only pages from the workbench's own
// origin.

struct Session {
  std::uint16_t port = 0;
  std::string token;   // 32 hexadecimal digits, part of the printed address
  std::string cookie;  // 32 hexadecimal digits; the browser gets it in exchange for the token
  bool token_used = false;
};

// The maximum size of a request body, in bytes.
constexpr std::uint64_t kLongestUpload = 64U << 20U;
constexpr std::uint64_t kLongestJson = 256U << 10U;

// Whether both texts are equal. The time depends only on their lengths.
bool SameSecret(std::string_view left, std::string_view right);

// The first header with this lower-case name. Returns nothing if there is none.
std::optional<std::string> HeaderOf(const HttpRequest& request, std::string_view name);

// The Host header as browsers send it: "127.0.0.1:8123".
std::string HostOf(const Session& session);

// Checks a request before its body is read: form, Host, Origin, token or cookie, and the length of
// the body. Returns the answer if the request is refused.
std::optional<HttpResponse> CheckHead(const HttpRequest& request, const Session& session);

// Whether the request is the first one, which exchanges the token for the cookie.
bool AsksWithToken(const HttpRequest& request);
// Answers the first request with the cookie and a redirection to the page. The token becomes
// invalid.
HttpResponse ExchangeToken(const HttpRequest& request, Session& session);

// Adds the security headers that every answer has.
HttpResponse Hardened(HttpResponse response);

// An answer with the body {"error","message","hint"}.
HttpResponse ErrorResponse(int status, std::string_view error, std::string_view message,
                           std::string_view hint = {});

}  // namespace borvanusb
