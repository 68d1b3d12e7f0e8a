#pragma once

// From bytes to a request, by Boost. Only the server and its fuzz target include this.

#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <cstdint>

#include "workbench/gate.h"
#include "workbench/http_message.h"

namespace borvanusb {

using RequestParser = boost::beast::http::request_parser<boost::beast::http::string_body>;

constexpr std::uint32_t kLongestHead = 16U << 10U;

// A new parser must be told what is too long.
inline void SetLimits(RequestParser& parser) {
  parser.header_limit(kLongestHead);
  parser.body_limit(kLongestUpload);
}

// The request without its body, when its head is complete.
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
