#include "workbench/gate.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <nlohmann/json.hpp>
#include <vector>

#include "base/format.h"

namespace borvanusb {

namespace {

constexpr std::size_t kMostHeaders = 64;
constexpr std::size_t kLongestTarget = 1024;
constexpr std::string_view kTokenQuery = "/?token=";

constexpr std::string_view kContentPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; "
    "connect-src 'self'; media-src 'self' blob:; base-uri 'none'; form-action 'none'; "
    "frame-ancestors 'none'";

std::string Lower(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return text;
}

std::size_t CountOf(const HttpRequest& request, std::string_view name) {
  return static_cast<std::size_t>(std::ranges::count_if(
      request.headers, [&](const auto& header) { return Lower(header.first) == name; }));
}

std::string CookieName(const Session& session) {
  // Cookies are not separated by port: browsers send them to all ports of a host. So the name has
  // the port.
  return Format("borvanusb_{}", session.port);
}

bool HasCookie(const HttpRequest& request, const Session& session) {
  const std::string wanted = Format("{}=", CookieName(session));
  const std::string cookies = HeaderOf(request, "cookie").value_or("");
  bool found = false;
  for (std::size_t begin = 0; begin < cookies.size();) {
    const std::size_t end = std::min(cookies.find(';', begin), cookies.size());
    std::string_view cookie(cookies.data() + begin, end - begin);
    while (cookie.starts_with(' ')) {
      cookie.remove_prefix(1);
    }
    if (cookie.starts_with(wanted)) {
      found = found || SameSecret(cookie.substr(wanted.size()), session.cookie);
    }
    begin = end + 1;
  }
  return found;
}

// The Content-Length of the request. Returns nothing if it is not a number.
std::optional<std::uint64_t> AnnouncedLength(const HttpRequest& request) {
  const std::string text = HeaderOf(request, "content-length").value_or("0");
  std::uint64_t length = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
  if (error != std::errc() || end != text.data() + text.size()) {
    return std::nullopt;
  }
  return length;
}

HttpResponse Malformed(std::string_view what) {
  return ErrorResponse(400, "malformed", Format("the request can't be understood: {}", what));
}

HttpResponse Foreign(std::string_view what) {
  return ErrorResponse(403, "foreign",
                       Format("the request is not from a page of this workbench: {}", what),
                       "Open the address that borvanusb workbench printed.");
}

std::optional<HttpResponse> CheckForm(const HttpRequest& request) {
  if (request.headers.size() > kMostHeaders) {
    return ErrorResponse(431, "malformed", "the request has too many headers");
  }
  const bool printable =
      std::ranges::all_of(request.target, [](char c) { return c > ' ' && c <= '~'; });
  if (!request.target.starts_with('/') || !printable) {
    return Malformed("its target is not a path");
  }
  if (request.target.size() > kLongestTarget) {
    return ErrorResponse(414, "malformed", "the request's target is too long");
  }
  constexpr std::array<std::string_view, 6> kSingle = {
      "host", "origin", "cookie", "content-length", "content-type", "sec-fetch-site"};
  for (const std::string_view name : kSingle) {
    if (CountOf(request, name) > 1) {
      return Malformed(Format("the header {} is there more than once", name));
    }
  }
  if (CountOf(request, "transfer-encoding") > 0) {
    return ErrorResponse(411, "malformed", "the body needs a Content-Length");
  }
  return std::nullopt;
}

bool HasBody(const HttpRequest& request) {
  return request.method == "POST" || !request.body.empty() ||
         CountOf(request, "content-length") > 0;
}

std::optional<HttpResponse> CheckOrigin(const HttpRequest& request, const Session& session) {
  if (HeaderOf(request, "host") != HostOf(session)) {
    return Foreign("the header Host is of another server");
  }
  const auto origin = HeaderOf(request, "origin");
  if (origin && *origin != Format("http://{}", HostOf(session))) {
    return Foreign("the header Origin is of another page");
  }
  if (!origin && HasBody(request)) {
    return Foreign("the header Origin is missing");
  }
  const auto site = HeaderOf(request, "sec-fetch-site");
  if (site && *site != "same-origin" && *site != "none") {
    return Foreign("another page asks");
  }
  return std::nullopt;
}

std::optional<HttpResponse> CheckLength(const HttpRequest& request) {
  const auto length = AnnouncedLength(request);
  if (!length) {
    return Malformed("Content-Length is not a valid number");
  }
  const bool upload = request.target == "/api/files" || request.target.starts_with("/api/files?");
  const std::uint64_t limit = request.method != "POST" ? 0 : upload ? kLongestUpload : kLongestJson;
  if (*length > limit || request.body.size() > limit) {
    return ErrorResponse(413, "too-large", Format("the body is larger than {} bytes", limit));
  }
  return std::nullopt;
}

}  // namespace

bool SameSecret(std::string_view left, std::string_view right) {
  if (left.size() != right.size() || left.empty()) {
    return false;
  }
  unsigned difference = 0;
  for (std::size_t i = 0; i < left.size(); ++i) {
    difference |= static_cast<unsigned>(left[i] ^ right[i]);
  }
  // `volatile` keeps the compiler from ending the loop early.
  volatile unsigned seen = difference;
  return seen == 0;
}

std::optional<std::string> HeaderOf(const HttpRequest& request, std::string_view name) {
  for (const auto& [key, value] : request.headers) {
    if (Lower(key) == name) {
      return value;
    }
  }
  return std::nullopt;
}

std::string HostOf(const Session& session) {
  // Browsers omit the default port.
  constexpr std::uint16_t kUsualPort = 80;
  return session.port == kUsualPort ? "127.0.0.1" : Format("127.0.0.1:{}", session.port);
}

bool AsksWithToken(const HttpRequest& request) {
  return request.method == "GET" && request.target.starts_with(kTokenQuery);
}

std::optional<HttpResponse> CheckHead(const HttpRequest& request, const Session& session) {
  for (const auto& check : {CheckForm(request), CheckOrigin(request, session)}) {
    if (check) {
      return check;
    }
  }
  if (!AsksWithToken(request) && !HasCookie(request, session)) {
    return ErrorResponse(403, "no-session", "this browser was not given access to the workbench",
                         "Open the address that borvanusb workbench printed.");
  }
  return CheckLength(request);
}

HttpResponse ExchangeToken(const HttpRequest& request, Session& session) {
  const bool known = HasCookie(request, session);
  const std::string_view token = std::string_view(request.target).substr(kTokenQuery.size());
  if (!known && session.token_used) {
    return ErrorResponse(403, "used", "the address was opened before; it works once",
                         "Use the browser that opened it, or start borvanusb workbench again.");
  }
  if (!known && !SameSecret(token, session.token)) {
    return ErrorResponse(403, "no-session", "the token in the address is wrong",
                         "Open the address that borvanusb workbench printed, whole.");
  }
  HttpResponse response;
  response.status = 303;
  response.headers = {{"Location", "/"}};
  if (!known) {
    session.token_used = true;
    response.headers.emplace_back("Set-Cookie", Format("{}={}; HttpOnly; SameSite=Strict; Path=/",
                                                       CookieName(session), session.cookie));
  }
  return response;
}

HttpResponse Hardened(HttpResponse response) {
  const HttpHeaders common = {
      {"Content-Security-Policy", std::string(kContentPolicy)},
      {"X-Content-Type-Options", "nosniff"},
      {"X-Frame-Options", "DENY"},
      {"Referrer-Policy", "no-referrer"},
      {"Cross-Origin-Opener-Policy", "same-origin"},
      {"Cross-Origin-Resource-Policy", "same-origin"},
      {"Permissions-Policy", "camera=(self), microphone=(), geolocation=(), usb=(), serial=()"},
      {"Cache-Control", "no-store"}};
  response.headers.insert(response.headers.end(), common.begin(), common.end());
  return response;
}

HttpResponse ErrorResponse(int status, std::string_view error, std::string_view message,
                           std::string_view hint) {
  const nlohmann::ordered_json body = {{"error", error}, {"message", message}, {"hint", hint}};
  HttpResponse response;
  response.status = status;
  response.headers = {{"Content-Type", "application/json"}};
  response.body = body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  return response;
}

}  // namespace borvanusb
