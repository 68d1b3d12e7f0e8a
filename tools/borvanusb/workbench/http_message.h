#pragma once

#include <string>
#include <utility>
#include <vector>

namespace borvanusb {

// HTTP requests and responses as values.

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

struct HttpRequest {
  std::string method;
  std::string target;  // path and query, not decoded
  HttpHeaders headers;
  std::string body;
};

struct HttpResponse {
  int status = 200;
  HttpHeaders headers;
  std::string body;
};

}  // namespace borvanusb
