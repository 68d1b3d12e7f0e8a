#pragma once

// Parses HTTP requests with Boost. Only the server and its fuzz target include this file.

#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <cstdint>

#include "workbench/gate.h"
#include "workbench/http_message.h"

namespace borvanusb {

using RequestParser = boost::beast::http::request_parser<boost::beast::http::string_body>;

constexpr std::uint32_t kLongestHead = 16U << 10U;

// Every new parser needs its limits.
inline void SetLimits(RequestParser& parser) {
  parser.header_limit(kLongestHead);
  parser.body_limit(kLongestUpload);
}

// The head of the request, once it is complete.
inline HttpRequest HeadOf(const RequestParser& parser) {
  const auto& message = parser.get();
  HttpRequest request;
  request.method = std::string(message.method_string());
  request.target = std::string(message.target());
  for (const auto& field : message) {
    request.headers.emplace_back(std::string(field.name_string()), std::string(field.value()));
  }
  return request;
}

}  // namespace borvanusb
