// Input from the workbench's socket: a request is refused, or it has everything that a request of
// our page has; and the resulting work follows the rules.

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <map>
#include <optional>
#include <string>
#include <variant>

#include "base/failure.h"
#include "command/command_line.h"
#include "support/check.h"
#include "support/input.h"
#include "workbench/handle_request.h"
#include "workbench/request_parser.h"

namespace {
using namespace borvanusb;

using borvan_fuzz::Check;
using borvan_fuzz::Input;

const std::string kToken = "00112233445566778899aabbccddeeff";
const std::string kCookie = "ffeeddccbbaa99887766554433221100";
const std::string kHost = "127.0.0.1:8123";

// Checks that a name can only refer to a file in one folder.
void CheckPlainName(const std::string& name) {
  Check(!name.empty() && name.find_first_of("/\\:*?\"<>|") == std::string::npos,
        "a file's name has a folder");
  Check(name != "." && name != ".." && name.back() != '.' && name.back() != ' ',
        "a file's name is changed by Windows");
  Check(std::ranges::none_of(name, [](char c) { return static_cast<unsigned char>(c) < 0x20U; }),
        "a file's name has a control character");
}

struct MemoryServices : WorkbenchServices {
  std::span<const PageFile> Page() const override { return {}; }
  void SaveFile(const std::string& name, std::string_view bytes) override {
    CheckPlainName(name);
    saved += bytes.size() + 1;
  }
  std::vector<StoredFile> ListFiles() const override { return {{"a.bin", 1}}; }
  std::optional<std::string> ReadFile(const std::string& name) const override {
    CheckPlainName(name);
    return name == "a.bin" ? std::optional<std::string>("x") : std::nullopt;
  }
  bool StopJob(const std::string& job) override {
    ++stops;
    return job == "j1";
  }
  std::optional<std::string> JobText(const std::string& /*job*/) const override { return "{}"; }

  std::size_t saved = 0;
  std::size_t stops = 0;
};

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// Parses a request. Returns nothing if it is incomplete or the parser rejects it.
std::optional<HttpRequest> Parse(const std::string& bytes) {
  RequestParser parser;
  SetLimits(parser);
  parser.eager(true);
  boost::beast::error_code error;
  std::size_t used = 0;
  while (!parser.is_done() && !error && used < bytes.size()) {
    const std::size_t part =
        parser.put(boost::asio::buffer(bytes.data() + used, bytes.size() - used), error);
    if (part == 0) {
      break;
    }
    used += part;
  }
  if (!parser.is_header_done() || error) {
    return std::nullopt;
  }
  HttpRequest request = HeadOf(parser);
  request.body = parser.get().body();
  return request;
}

// A request of our page: the first line is the target, the rest is the body.
HttpRequest OwnRequest(const std::string& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  HttpRequest request;
  request.method = "POST";
  request.target = text.substr(0, end);
  request.body = end < text.size() ? text.substr(end + 1) : "";
  request.headers = {{"Host", kHost},
                     {"Origin", "http://" + kHost},
                     {"Cookie", "borvanusb_8123=" + kCookie},
                     {"Content-Type", "application/json"},
                     {"Content-Length", std::to_string(request.body.size())}};
  return request;
}

void CheckAllowed(const HttpRequest& request) {
  std::string all;
  for (const auto& [name, value] : request.headers) {
    all += name + ": " + value + "\n";
  }
  Check(Contains(all, kHost), "a request without our host was let in");
  const bool with_token = request.target == "/?token=" + kToken;
  Check(with_token || Contains(all, "borvanusb_8123=" + kCookie),
        "a request without the cookie was let in");
  Check(request.method != "POST" || Contains(all, "http://" + kHost),
        "a POST without our origin was let in");
}

void CheckWords(const std::vector<std::string>& words, bool read_only) {
  for (const std::string& word : words) {
    Check(std::ranges::none_of(word, [](char c) { return static_cast<unsigned char>(c) < 0x20U; }),
          "a word has a control character");
  }
  try {
    const auto parsed = ParseCommandLine(words);
    const auto* const arguments = std::get_if<Arguments>(&parsed);
    Check(arguments != nullptr, "words that ask for a text were let in");
    for (const char* const refused : {"run", "workbench", "completion", "manual"}) {
      Check(arguments->words != refused, "a command was let in that the workbench must not run");
    }
    for (const char* const writes : {"reg write", "reg load", "i2c write", "i2c load",
                                     "flash erase", "preset apply", "preset save"}) {
      Check(!read_only || arguments->words != writes, "a write was let in");
    }
    Check(arguments->common.trace.empty() && arguments->common.cameras.empty() &&
              arguments->common.profile.empty(),
          "an option of the server's was let in");
  } catch (const Failure&) {
    // The command itself rejects other mistakes.
    return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ToolDescription tool = DescribeTool();
  Input input(data, size);
  const std::uint8_t kind = input.Byte();
  const bool read_only = (kind & 2U) != 0;
  const std::vector<std::uint8_t> bytes = input.Rest();
  const std::string text(bytes.begin(), bytes.end());
  const std::optional<HttpRequest> request = (kind & 1U) != 0 ? OwnRequest(text) : Parse(text);
  if (!request) {
    return 0;
  }
  Session session{8123, kToken, kCookie, (kind & 4U) != 0};
  MemoryServices services;
  const Reply reply = HandleRequest(*request, session, {tool, {read_only, "/journals"}}, services);
  const auto* const response = std::get_if<HttpResponse>(&reply);
  if (response != nullptr && response->status >= 400) {
    Check(services.saved == 0, "a refused request saved a file");
    return 0;
  }
  CheckAllowed(*request);
  if (const auto* const run = std::get_if<RunOrder>(&reply)) {
    CheckWords(run->words, read_only);
  }
  if (const auto* const live = std::get_if<LiveOrder>(&reply)) {
    for (const LiveWish& wish : live->wishes) {
      Check(wish.rate >= 0.1 && wish.rate <= 100, "the rate is out of its range");
      Check(wish.words.size() >= 2 && wish.words[1] == "read", "live reading does not read");
    }
  }
  return 0;
}
