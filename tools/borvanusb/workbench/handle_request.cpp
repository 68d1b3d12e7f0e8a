#include "workbench/handle_request.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/failure.h"
#include "base/format.h"
#include "base/sha256.h"
#include "workbench/file_names.h"
#include "workbench/json_body.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view kFiles = "/api/files";
constexpr double kHighestRate = 100;
constexpr double kLowestRate = 0.1;
constexpr std::size_t kMostReads = 16;  // of one page, at once

HttpResponse JsonResponse(const Json& body) {
  HttpResponse response;
  response.headers = {{"Content-Type", "application/json"}};
  response.body = body.dump(-1, ' ', false, Json::error_handler_t::replace);
  return response;
}

HttpResponse WrongMethod(const char* allowed) {
  HttpResponse response =
      ErrorResponse(405, "method", Format("method not allowed; use {}", allowed));
  response.headers.emplace_back("Allow", allowed);
  return response;
}

// The answer to a failure: 400 if the page sent something wrong, otherwise 500.
HttpResponse FailureResponse(const Failure& failure) {
  const int status = failure.Code() == ExitCode::kUsage ? 400 : 500;
  return ErrorResponse(status, status == 400 ? "refused" : KindOf(failure.Code()),
                       failure.Message(), failure.Hint());
}

int DigitOf(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Decodes the %xx escapes in a part of an address. Returns nothing if they are invalid.
std::optional<std::string> Unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      plain += text[i];
      continue;
    }
    const int high = i + 2 < text.size() ? DigitOf(text[i + 1]) : -1;
    const int low = i + 2 < text.size() ? DigitOf(text[i + 2]) : -1;
    if (high < 0 || low < 0) {
      return std::nullopt;
    }
    plain += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return plain;
}

std::string FileNameOf(std::string_view escaped) {
  const auto name = Unescaped(escaped);
  const std::string problem = name ? ProblemOfPlainName(*name) : "has a wrong % in it";
  if (!problem.empty()) {
    throw Failure(ExitCode::kUsage, Format("the file's name {}", problem),
                  "Give the file a plain name, such as firmware.bin.");
  }
  return *name;
}

HttpResponse ServePage(const HttpRequest& request, std::string_view path,
                       const WorkbenchServices& services) {
  const auto files = services.Page();
  const auto found = std::ranges::find(files, path, &PageFile::path);
  if (found == files.end()) {
    return ErrorResponse(404, "not-found", "not found");
  }
  if (request.method != "GET") {
    return WrongMethod("GET");
  }
  HttpResponse response;
  response.headers = {{"Content-Type", std::string(found->type)}, {"Content-Encoding", "gzip"}};
  response.body.assign(found->gzip.begin(), found->gzip.end());
  return response;
}

HttpResponse SaveUpload(const HttpRequest& request, WorkbenchServices& services) {
  constexpr std::string_view kQuery = "/api/files?name=";
  if (!request.target.starts_with(kQuery)) {
    throw Failure(ExitCode::kUsage, "the file's name is missing", "Give it as ?name=firmware.bin.");
  }
  const std::string name = FileNameOf(std::string_view(request.target).substr(kQuery.size()));
  services.SaveFile(name, request.body);
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(request.body.data());
  return JsonResponse({{"name", name},
                       {"size", request.body.size()},
                       {"sha256", Sha256({bytes, request.body.size()})}});
}

HttpResponse ListFiles(const WorkbenchServices& services) {
  Json files = Json::array();
  for (const StoredFile& file : services.ListFiles()) {
    files.push_back({{"name", file.name}, {"size", file.size}});
  }
  return JsonResponse({{"files", files}});
}

HttpResponse Download(std::string_view escaped, const WorkbenchServices& services) {
  const std::string name = FileNameOf(escaped);
  auto bytes = services.ReadFile(name);
  if (!bytes) {
    return ErrorResponse(404, "not-found", Format("there is no file {}", name));
  }
  HttpResponse response;
  // Browsers must never show an uploaded file as a page of our origin.
  response.headers = {{"Content-Type", "application/octet-stream"},
                      {"Content-Disposition", "attachment"}};
  response.body = std::move(*bytes);
  return response;
}

HttpResponse HandleFiles(const HttpRequest& request, std::string_view path,
                         WorkbenchServices& services) {
  if (path == kFiles) {
    if (request.method == "POST") {
      return SaveUpload(request, services);
    }
    return request.method == "GET" ? ListFiles(services) : WrongMethod("GET, POST");
  }
  if (request.method != "GET") {
    return WrongMethod("GET");
  }
  return Download(path.substr(kFiles.size() + 1), services);
}

HttpResponse HandleStop(const JsonBody& body, WorkbenchServices& services) {
  const std::string job = body.Text("job");
  body.RefuseOthers({"job"});
  if (!services.StopJob(job)) {
    return ErrorResponse(404, "not-found", "this work is not being done; it may have ended");
  }
  return JsonResponse({{"job", job}});
}

// A name that a page chooses.
std::string NameOf(std::string text, const char* key) {
  constexpr std::size_t kLongest = 64;
  if (text.size() > kLongest || !std::ranges::all_of(text, [](char c) {
        return DigitOf(c) >= 0 || (c >= 'g' && c <= 'z') || (c >= 'G' && c <= 'Z') || c == '-' ||
               c == '_';
      })) {
    throw Failure(ExitCode::kUsage,
                  Format("{}: at most 64 letters, digits, - and _ are possible", key),
                  "Omit it if no name is needed.");
  }
  return text;
}

EventStream OpenStream(const HttpRequest& request) {
  constexpr std::string_view kQuery = "/api/events?page=";
  const std::string_view target = request.target;
  const bool named = target.starts_with(kQuery);
  return {NameOf(named ? std::string(target.substr(kQuery.size())) : "", "page")};
}

RunOrder ReadRun(const JsonBody& body, const WorkbenchRules& rules) {
  body.RefuseOthers({"words", "camera", "job", "wait"});
  RunOrder order;
  order.words = body.Texts("words");
  order.camera = body.OptionalText("camera");
  order.job = NameOf(body.OptionalText("job").value_or(""), "job");
  order.wait = body.OptionalFlag("wait").value_or(true);
  order.accepted = AcceptWords(rules.tool, order.words, rules.limits);
  return order;
}

LiveWish ReadWish(std::vector<std::string> words, const JsonBody& body,
                  const WorkbenchRules& rules) {
  LiveWish wish;
  wish.words = std::move(words);
  wish.rate = body.OptionalNumber("rate").value_or(wish.rate);
  if (!(wish.rate >= kLowestRate && wish.rate <= kHighestRate)) {
    throw Failure(ExitCode::kUsage, "rate: 0.1 to 100 readings a second are possible", "");
  }
  const bool reads = wish.words.size() >= 2 && (wish.words[0] == "reg" || wish.words[0] == "i2c") &&
                     wish.words[1] == "read";
  if (!reads) {
    throw Failure(ExitCode::kUsage, "reads: reg read and i2c read are possible", "");
  }
  static_cast<void>(AcceptWords(rules.tool, wish.words, rules.limits));
  return wish;
}

LiveOrder ReadLive(const JsonBody& body, const WorkbenchRules& rules) {
  body.RefuseOthers({"camera", "page", "words", "rate", "reads"});
  LiveOrder order;
  order.camera = body.Text("camera");
  order.page = NameOf(body.OptionalText("page").value_or(""), "page");
  if (body.Has("reads") && (body.Has("words") || body.Has("rate"))) {
    throw Failure(ExitCode::kUsage, "reads: words and rate belong into its objects", "");
  }
  if (body.Has("reads")) {
    for (const JsonBody& read : body.Objects("reads")) {
      read.RefuseOthers({"words", "rate"});
      order.wishes.push_back(ReadWish(read.Texts("words"), read, rules));
    }
  } else if (const auto registers = body.Texts("words"); !registers.empty()) {
    std::vector<std::string> words = {"reg", "read"};
    words.insert(words.end(), registers.begin(), registers.end());
    order.wishes.push_back(ReadWish(std::move(words), body, rules));
  }
  if (order.wishes.size() > kMostReads) {
    throw Failure(ExitCode::kUsage, Format("reads: at most {} are possible", kMostReads), "");
  }
  return order;
}

Reply HandleOrder(const HttpRequest& request, std::string_view path, const WorkbenchRules& rules,
                  WorkbenchServices& services) {
  if (request.method != "POST") {
    return WrongMethod("POST");
  }
  const std::string type = HeaderOf(request, "content-type").value_or("");
  if (type != "application/json" && !type.starts_with("application/json;")) {
    return ErrorResponse(415, "type", "the body must be application/json");
  }
  const JsonBody body(request.body);
  if (path == "/api/run") {
    return ReadRun(body, rules);
  }
  if (path == "/api/live") {
    return ReadLive(body, rules);
  }
  return HandleStop(body, services);
}

Reply HandleJob(const HttpRequest& request, std::string_view job,
                const WorkbenchServices& services) {
  if (request.method != "GET") {
    return WrongMethod("GET");
  }
  const auto text = services.JobText(std::string(job));
  if (!text) {
    return ErrorResponse(404, "not-found", "this work is not known; only the last ones are kept");
  }
  HttpResponse response;
  response.headers = {{"Content-Type", "application/json"}};
  response.body = *text;
  return response;
}

Reply Route(const HttpRequest& request, const WorkbenchRules& rules, WorkbenchServices& services) {
  constexpr std::string_view kJobs = "/api/jobs/";
  const std::string_view path =
      std::string_view(request.target).substr(0, request.target.find('?'));
  if (path == kFiles || path.starts_with("/api/files/")) {
    return HandleFiles(request, path, services);
  }
  if (path == "/api/run" || path == "/api/live" || path == "/api/stop") {
    return HandleOrder(request, path, rules, services);
  }
  if (path.starts_with(kJobs)) {
    return HandleJob(request, path.substr(kJobs.size()), services);
  }
  if (path == "/api/state" || path == "/api/events") {
    if (request.method != "GET") {
      return WrongMethod("GET");
    }
    return path == "/api/state" ? Reply(StateOrder()) : Reply(OpenStream(request));
  }
  return ServePage(request, path, services);
}

}  // namespace

Reply HandleRequest(const HttpRequest& request, Session& session, const WorkbenchRules& rules,
                    WorkbenchServices& services) {
  if (auto refused = CheckHead(request, session)) {
    return *refused;
  }
  if (AsksWithToken(request)) {
    return ExchangeToken(request, session);
  }
  try {
    return Route(request, rules, services);
  } catch (const Failure& failure) {
    return FailureResponse(failure);
  }
}

}  // namespace borvanusb
