#pragma once

#include <string>
#include <utility>
#include <vector>

namespace borvanusb {

// HTTP as values: what the socket took in, and what it gives back.

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

struct HttpRequest {
  std::string method;
  std::string target;  // as it came: path and query
  HttpHeaders headers;
  std::string body;
};

struct HttpResponse {
  int status = 200;
  HttpHeaders headers;
  std::string body;
};

}  // namespace borvanusb
