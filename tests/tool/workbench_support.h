#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "command/command_line.h"
#include "workbench/handle_request.h"

namespace borvanusb::tool_test {

inline const std::string kToken = "00112233445566778899aabbccddeeff";
inline const std::string kCookie = "ffeeddccbbaa99887766554433221100";

// Files in memory and one job, "j1".
struct FakeServices : WorkbenchServices {
  std::span<const PageFile> Page() const override { return page; }
  void SaveFile(const std::string& name, std::string_view bytes) override { files[name] = bytes; }
  std::vector<StoredFile> ListFiles() const override {
    std::vector<StoredFile> list;
    for (const auto& [name, bytes] : files) {
      list.push_back({name, bytes.size()});
    }
    return list;
  }
  std::optional<std::string> ReadFile(const std::string& name) const override {
    const auto found = files.find(name);
    return found != files.end() ? std::optional(found->second) : std::nullopt;
  }
  bool StopJob(const std::string& job) override {
    stopped.push_back(job);
    return job == "j1";
  }
  std::optional<std::string> JobText(const std::string& job) const override {
    return job == "j1" ? std::optional<std::string>("{}") : std::nullopt;
  }

  static constexpr unsigned char kPage[] = {0x1F, 0x8B};
  std::vector<PageFile> page = {{"/", "text/html; charset=utf-8", kPage},
                                {"/page.js", "text/javascript; charset=utf-8", kPage}};
  std::map<std::string, std::string> files;
  std::vector<std::string> stopped;
};

// A server whose cookie a browser has received.
struct RequestDesk {
  Session session{8123, kToken, kCookie, true};
  ToolDescription tool = DescribeTool();
  WordLimits limits;
  FakeServices services;

  Reply Handle(const HttpRequest& request) {
    return HandleRequest(request, session, {tool, limits}, services);
  }
  HttpResponse Answer(const HttpRequest& request) {
    const Reply reply = Handle(request);
    const auto* const response = std::get_if<HttpResponse>(&reply);
    return response != nullptr ? *response : HttpResponse{-1, {}, "not answered at once"};
  }
};

// A request as our page sends it.
inline HttpRequest Get(const std::string& target) {
  return {"GET", target, {{"Host", "127.0.0.1:8123"}, {"Cookie", "borvanusb_8123=" + kCookie}}, ""};
}
inline HttpRequest Post(const std::string& target, const std::string& body) {
  HttpRequest request = Get(target);
  request.method = "POST";
  request.headers.emplace_back("Origin", "http://127.0.0.1:8123");
  request.headers.emplace_back("Content-Type", "application/json");
  request.headers.emplace_back("Content-Length", std::to_string(body.size()));
  request.body = body;
  return request;
}
inline HttpRequest RunRequest(const std::vector<std::string>& words) {
  return Post("/api/run", nlohmann::json{{"words", words}}.dump());
}
// Replaces or adds a header. An empty value removes it.
inline HttpRequest With(HttpRequest request, const std::string& name, const std::string& value) {
  std::erase_if(request.headers, [&](const auto& header) { return header.first == name; });
  if (!value.empty()) {
    request.headers.emplace_back(name, value);
  }
  return request;
}

}  // namespace borvanusb::tool_test
