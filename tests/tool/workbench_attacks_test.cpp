// Requests that the workbench must refuse: one row for each attack.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "workbench_support.h"

namespace borvanusb::tool_test {
namespace {

struct Attack {
  std::string what;
  HttpRequest request;
  int status = 403;
};

const std::string kList = R"({"words":["list"]})";

std::vector<Attack> Strangers() {
  return {
      {"no cookie", With(Get("/"), "Cookie", ""), 403},
      {"no cookie, page", With(Get("/page.js"), "Cookie", ""), 403},
      {"no cookie, state", With(Get("/api/state"), "Cookie", ""), 403},
      {"no cookie, events", With(Get("/api/events"), "Cookie", ""), 403},
      {"no cookie, run", With(Post("/api/run", kList), "Cookie", ""), 403},
      {"cookie of another run", With(Get("/"), "Cookie", "borvanusb_8123=" + std::string(32, '0')),
       403},
      {"cookie of another port", With(Get("/"), "Cookie", "borvanusb_8124=" + kCookie), 403},
      {"beginning of the cookie",
       With(Get("/"), "Cookie", "borvanusb_8123=" + kCookie.substr(0, 31)), 403},
      {"longer cookie", With(Get("/"), "Cookie", "borvanusb_8123=" + kCookie + "0"), 403},
      {"empty cookie", With(Get("/"), "Cookie", "borvanusb_8123="), 403},
      {"cookie in another's value", With(Get("/"), "Cookie", "a=borvanusb_8123=" + kCookie), 403},
      {"token instead of cookie", With(Get("/"), "Cookie", "borvanusb_8123=" + kToken), 403},
      {"token in another target", With(Get("/api/state?token=" + kToken), "Cookie", ""), 403},
  };
}

std::vector<Attack> ForeignPages() {
  return {
      {"DNS rebinding", With(Get("/"), "Host", "evil.example:8123"), 403},
      {"host without port", With(Get("/"), "Host", "127.0.0.1"), 403},
      {"host with another port", With(Get("/"), "Host", "127.0.0.1:80"), 403},
      {"localhost", With(Get("/"), "Host", "localhost:8123"), 403},
      {"host that begins alike", With(Get("/"), "Host", "127.0.0.1:8123.evil.example"), 403},
      {"no host", With(Get("/"), "Host", ""), 403},
      {"IPv6 host", With(Get("/"), "Host", "[::1]:8123"), 403},
      {"foreign origin", With(Post("/api/run", kList), "Origin", "http://evil.example"), 403},
      {"origin with another port", With(Post("/api/run", kList), "Origin", "http://127.0.0.1:8124"),
       403},
      {"origin over TLS", With(Post("/api/run", kList), "Origin", "https://127.0.0.1:8123"), 403},
      {"null origin", With(Post("/api/run", kList), "Origin", "null"), 403},
      {"body without origin", With(Post("/api/run", kList), "Origin", ""), 403},
      {"upload without origin", With(Post("/api/files?name=a", "x"), "Origin", ""), 403},
      {"read with a foreign origin", With(Get("/api/state"), "Origin", "http://evil.example"), 403},
      {"events with a null origin", With(Get("/api/events"), "Origin", "null"), 403},
      {"cross-site", With(Get("/api/state"), "Sec-Fetch-Site", "cross-site"), 403},
      {"same site, other port", With(Get("/api/state"), "Sec-Fetch-Site", "same-site"), 403},
      {"form of another page", With(Post("/api/run", kList), "Content-Type", "text/plain"), 415},
      {"form", With(Post("/api/run", kList), "Content-Type", "application/x-www-form-urlencoded"),
       415},
      {"no type", With(Post("/api/run", kList), "Content-Type", ""), 415},
  };
}

HttpRequest WithMethod(HttpRequest request, const std::string& method) {
  request.method = method;
  return request;
}

HttpRequest WithTwo(HttpRequest request, const std::string& name, const std::string& value) {
  request.headers.emplace_back(name, value);
  return request;
}

HttpRequest Flood() {
  HttpRequest request = Get("/");
  for (int i = 0; i < 100; ++i) {
    request.headers.emplace_back("X-" + std::to_string(i), "a");
  }
  return request;
}

std::vector<Attack> BrokenForms() {
  return {
      {"two hosts", WithTwo(Get("/"), "host", "evil.example"), 400},
      {"two origins", WithTwo(Post("/api/run", kList), "ORIGIN", "http://evil.example"), 400},
      {"two cookies", WithTwo(Get("/"), "Cookie", "a=b"), 400},
      {"two lengths", WithTwo(Post("/api/run", kList), "Content-Length", "1"), 400},
      {"chunked", WithTwo(Post("/api/run", kList), "Transfer-Encoding", "chunked"), 411},
      {"length that is no number", With(Post("/api/run", kList), "Content-Length", "1e3"), 400},
      {"negative length", With(Post("/api/run", kList), "Content-Length", "-1"), 400},
      {"huge length", With(Post("/api/run", kList), "Content-Length", "99999999999999999999999"),
       400},
      {"header flood", Flood(), 431},
      {"whole address as target", Get("http://127.0.0.1:8123/"), 400},
      {"asterisk", WithMethod(Get("*"), "OPTIONS"), 400},
      {"tunnel", WithMethod(Get("evil.example:443"), "CONNECT"), 400},
      {"control character in the target", Get("/\x01"), 400},
      {"high byte in the target", Get("/\xE4"), 400},
      {"long target", Get("/" + std::string(2000, 'a')), 414},
      {"oversized JSON", Post("/api/run", std::string((256U << 10U) + 1, ' ')), 413},
      {"oversized upload, announced",
       With(Post("/api/files?name=a", ""), "Content-Length", "67108865"), 413},
      {"oversized JSON, announced", With(Post("/api/run", ""), "Content-Length", "67108864"), 413},
      {"body with a read",
       With(With(Get("/api/state"), "Content-Length", "5"), "Origin", "http://127.0.0.1:8123"),
       413},
  };
}

std::vector<Attack> WrongMethods() {
  return {
      {"preflight", WithMethod(Get("/api/run"), "OPTIONS"), 405},
      {"run by GET", Get("/api/run"), 405},
      {"stop by GET", Get("/api/stop?job=j1"), 405},
      {"live by GET", Get("/api/live"), 405},
      {"PUT a file", WithMethod(Get("/api/files/a.bin"), "PUT"), 405},
      {"DELETE a file", WithMethod(Get("/api/files/a.bin"), "DELETE"), 405},
      {"POST to a file", Post("/api/files/a.bin", "x"), 405},
      {"POST to the state", Post("/api/state", "{}"), 405},
      {"POST to the events", Post("/api/events", "{}"), 405},
      {"POST to the page", Post("/", ""), 405},
      {"POST with the token", Post("/?token=" + kToken, ""), 405},
      {"lower-case method", WithMethod(Get("/"), "get"), 405},
      {"HEAD", WithMethod(Get("/"), "HEAD"), 405},
      {"unknown address", Get("/etc/passwd"), 404},
      {"folder of the page", Get("/page.js/../index.html"), 404},
      {"unknown interface", Get("/api/"), 404},
  };
}

std::vector<Attack> WrongNames() {
  std::vector<Attack> attacks;
  for (const char* const name :
       {"",         ".",          "..",         "../a",        "..%2fa",
        "..%5Ca",   "%2e%2e%2fa", "%2e%2e/a",   "/etc/passwd", "%2fetc%2fpasswd",
        "C:%5Ca",   "C:a",        "a%3Astream", "CON",         "nul.txt",
        "a.",       "a%20",       "a%00.bin",   "%c0%af",      "%ff",
        "%",        "%4",         "%zz",        "a/b",         "a%2Fb",
        "COM1.txt", "-x",         "..%252fa%2f"}) {
    attacks.push_back(
        {std::string("upload ") + name, Post("/api/files?name=" + std::string(name), "x"), 400});
    attacks.push_back(
        {std::string("download ") + name, Get("/api/files/" + std::string(name)), 400});
  }
  attacks.push_back({"upload without a name", Post("/api/files", "x"), 400});
  attacks.push_back({"upload by another key", Post("/api/files?file=a", "x"), 400});
  return attacks;
}

std::vector<Attack> WrongBodies() {
  std::string deep = R"({"words":)";
  for (int i = 0; i < 50000; ++i) {
    deep += '[';
  }
  std::vector<Attack> attacks;
  for (const std::string& body :
       {std::string(), std::string("x"), std::string("[]"), std::string("null"),
        std::string("\"list\""), std::string("{"), std::string("{}"),
        std::string(R"({"words":"list"})"), std::string(R"({"words":[1]})"),
        std::string(R"({"words":[["list"]]})"), std::string(R"({"words":["list"],"camera":5})"),
        std::string(R"({"words":["list"],"job":"../a"})"),
        std::string(R"({"words":["list"],"other":1})"),
        std::string(R"({"words":["list"],"wait":"no"})"), std::string(R"({"words":["list"]} {})"),
        std::string("{\"words\":[\"\xFF\"]}"), std::string(R"({"words":[]})"), deep}) {
    attacks.push_back({"run " + body.substr(0, 60), Post("/api/run", body), 400});
  }
  for (const char* const body :
       {R"({"words":["1"]})", R"({"camera":"a","words":["1"],"rate":0})",
        R"({"camera":"a","words":["1"],"rate":1e9})", R"({"camera":"a","words":["1","--trace=x"]})",
        R"({"camera":"a","words":["1","--camera","b"]})",
        R"({"camera":"a","words":["1"],"rate":"fast"})", R"({"camera":null,"words":[]})"}) {
    attacks.push_back({std::string("live ") + body, Post("/api/live", body), 400});
  }
  attacks.push_back({"stop nothing", Post("/api/stop", "{}"), 400});
  attacks.push_back({"stop what is not there", Post("/api/stop", R"({"job":"j2"})"), 404});
  return attacks;
}

std::vector<Attack> WrongWords() {
  std::vector<Attack> attacks;
  for (const std::vector<std::string>& words :
       std::vector<std::vector<std::string>>{{"run", "script.txt"},
                                             {"workbench"},
                                             {"shell"},
                                             {"completion", "bash"},
                                             {"manual"},
                                             {"flash", "program", "C:\\windows\\win.ini"},
                                             {"flash", "program", "..\\fw.bin"},
                                             {"flash", "read", "all", "\\\\host\\share\\x"},
                                             {"flash", "read", "all", "CON"},
                                             {"flash", "verify", "a", "--diff", "/tmp/x"},
                                             {"reg", "read", "1", "--trace", "x"},
                                             {"reg", "read", "1", "--camera", "0"},
                                             {"flash", "program", "a", "--all"},
                                             {"--help"},
                                             {"--version"},
                                             {"list", "--json"}}) {
    attacks.push_back({"run " + words.back(), RunRequest(words), 400});
  }
  return attacks;
}

void ExpectRefused(const std::vector<Attack>& attacks) {
  for (const Attack& attack : attacks) {
    RequestDesk desk;
    desk.services.files["a.bin"] = "secret";
    const HttpResponse response = desk.Answer(attack.request);
    EXPECT_EQ(response.status, attack.status) << attack.what << ": " << response.body;
    EXPECT_EQ(response.body.find("secret"), std::string::npos) << attack.what;
    EXPECT_EQ(desk.services.files.size(), 1U) << attack.what;
    EXPECT_NE(response.body.find("\"message\""), std::string::npos) << attack.what;
  }
}

TEST(WorkbenchAttacksTest, StrangersAreRefused) {
  ExpectRefused(Strangers());
}
TEST(WorkbenchAttacksTest, PagesOfOthersAreRefused) {
  ExpectRefused(ForeignPages());
}
TEST(WorkbenchAttacksTest, BrokenRequestsAreRefused) {
  ExpectRefused(BrokenForms());
}
TEST(WorkbenchAttacksTest, OtherMethodsAreRefused) {
  ExpectRefused(WrongMethods());
}
TEST(WorkbenchAttacksTest, FilesOutsideOfTheFolderAreRefused) {
  ExpectRefused(WrongNames());
}
TEST(WorkbenchAttacksTest, WrongBodiesAreRefused) {
  ExpectRefused(WrongBodies());
}
TEST(WorkbenchAttacksTest, WordsThatLeaveTheWorkbenchAreRefused) {
  ExpectRefused(WrongWords());
}

TEST(WorkbenchAttacksTest, ReadOnlyRefusesEveryWrite) {
  RequestDesk desk;
  desk.limits.read_only = true;
  for (const std::vector<std::string>& words :
       std::vector<std::vector<std::string>>{{"reg", "write", "1", "2"},
                                             {"flash", "word", "0", "1"},
                                             {"flash", "erase", "0+4K", "--yes"},
                                             {"flash", "program", "a"},
                                             {"flash", "program", "a", "--", "--dry-run"},
                                             {"preset", "apply", "x"},
                                             {"i2c", "load", "a"},
                                             {"reg", "load", "a"}}) {
    EXPECT_EQ(desk.Answer(RunRequest(words)).status, 400) << words.back();
  }
  EXPECT_TRUE(std::holds_alternative<RunOrder>(desk.Handle(RunRequest({"reg", "read", "1"}))));
}

TEST(WorkbenchAttacksTest, NewTokenDoesNotComeFromAnOldOne) {
  RequestDesk desk;
  desk.session.token_used = false;
  const HttpRequest wrong = With(Get("/?token=" + std::string(32, '0')), "Cookie", "");
  EXPECT_EQ(desk.Answer(wrong).status, 403);
  EXPECT_EQ(desk.Answer(With(Get("/?token=" + kToken + "0"), "Cookie", "")).status, 403);
  EXPECT_EQ(desk.Answer(With(Get("/?token="), "Cookie", "")).status, 403);
  EXPECT_FALSE(desk.session.token_used);
  const HttpRequest right = With(Get("/?token=" + kToken), "Cookie", "");
  EXPECT_EQ(desk.Answer(right).status, 303);
  EXPECT_EQ(desk.Answer(right).status, 403);
}

}  // namespace
}  // namespace borvanusb::tool_test
