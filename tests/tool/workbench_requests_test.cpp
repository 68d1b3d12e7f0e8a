// The answers of the workbench to its own page.
#include <gtest/gtest.h>

#include "workbench_support.h"

namespace borvanusb::tool_test {
namespace {

std::string HeaderOfResponse(const HttpResponse& response, const std::string& name) {
  for (const auto& [key, value] : response.headers) {
    if (key == name) {
      return value;
    }
  }
  return "";
}

TEST(WorkbenchRequestsTest, TokenIsExchangedForACookieOnce) {
  RequestDesk desk;
  desk.session.token_used = false;
  const HttpResponse response = desk.Answer(With(Get("/?token=" + kToken), "Cookie", ""));
  EXPECT_EQ(response.status, 303);
  EXPECT_EQ(HeaderOfResponse(response, "Location"), "/");
  EXPECT_EQ(HeaderOfResponse(response, "Set-Cookie"),
            "borvanusb_8123=ffeeddccbbaa99887766554433221100; HttpOnly; SameSite=Strict; Path=/");
  EXPECT_TRUE(desk.session.token_used);
}

TEST(WorkbenchRequestsTest, BrowserThatHasTheCookieMayOpenTheAddressAgain) {
  RequestDesk desk;
  const HttpResponse response = desk.Answer(Get("/?token=" + kToken));
  EXPECT_EQ(response.status, 303);
  EXPECT_EQ(HeaderOfResponse(response, "Set-Cookie"), "");
}

TEST(WorkbenchRequestsTest, PageIsServedCompressed) {
  RequestDesk desk;
  const HttpResponse response = desk.Answer(Get("/"));
  EXPECT_EQ(response.status, 200);
  EXPECT_EQ(HeaderOfResponse(response, "Content-Type"), "text/html; charset=utf-8");
  EXPECT_EQ(HeaderOfResponse(response, "Content-Encoding"), "gzip");
  EXPECT_EQ(response.body, "\x1F\x8B");
}

TEST(WorkbenchRequestsTest, CookieIsFoundAmongOthers) {
  RequestDesk desk;
  EXPECT_EQ(
      desk.Answer(With(Get("/"), "Cookie", "a=b; borvanusb_8123=" + kCookie + "; c=d")).status,
      200);
}

TEST(WorkbenchRequestsTest, UsualPortIsNotPartOfTheHost) {
  RequestDesk desk;
  desk.session.port = 80;
  const HttpRequest request =
      With(With(Get("/"), "Cookie", "borvanusb_80=" + kCookie), "Host", "127.0.0.1");
  EXPECT_EQ(desk.Answer(request).status, 200);
  EXPECT_EQ(desk.Answer(With(request, "Host", "127.0.0.1:80")).status, 403);
}

TEST(WorkbenchRequestsTest, EveryAnswerIsHardened) {
  const HttpResponse response = Hardened(HttpResponse());
  EXPECT_EQ(HeaderOfResponse(response, "Content-Security-Policy"),
            "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data: blob:; "
            "connect-src 'self'; media-src 'self' blob:; base-uri 'none'; form-action 'none'; "
            "frame-ancestors 'none'");
  EXPECT_EQ(HeaderOfResponse(response, "X-Content-Type-Options"), "nosniff");
  EXPECT_EQ(HeaderOfResponse(response, "Cache-Control"), "no-store");
  EXPECT_EQ(HeaderOfResponse(response, "Cross-Origin-Resource-Policy"), "same-origin");
}

TEST(WorkbenchRequestsTest, FileGoesInAndComesOut) {
  RequestDesk desk;
  const HttpResponse saved = desk.Answer(Post("/api/files?name=M%C3%BCller.bin", "abc"));
  EXPECT_EQ(saved.body,
            "{\"name\":\"M\xC3\xBCller.bin\",\"size\":3,\"sha256\":"
            "\"ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad\"}");
  EXPECT_EQ(desk.Answer(Get("/api/files")).body,
            "{\"files\":[{\"name\":\"M\xC3\xBCller.bin\",\"size\":3}]}");
  const HttpResponse file = desk.Answer(Get("/api/files/M%c3%bcller.bin"));
  EXPECT_EQ(file.body, "abc");
  EXPECT_EQ(HeaderOfResponse(file, "Content-Type"), "application/octet-stream");
  EXPECT_EQ(HeaderOfResponse(file, "Content-Disposition"), "attachment");
  EXPECT_EQ(desk.Answer(Get("/api/files/other.bin")).status, 404);
}

TEST(WorkbenchRequestsTest, RunBecomesAnOrder) {
  RequestDesk desk;
  const Reply reply = desk.Handle(
      Post("/api/run", R"({"words":["reg","read","1"],"camera":"p","job":"a-1","wait":false})"));
  const auto& order = std::get<RunOrder>(reply);
  EXPECT_EQ(order.words, (std::vector<std::string>{"reg", "read", "1"}));
  EXPECT_EQ(order.camera, "p");
  EXPECT_EQ(order.job, "a-1");
  EXPECT_FALSE(order.wait);
}

TEST(WorkbenchRequestsTest, LiveBecomesAnOrderAndMayEnd) {
  RequestDesk desk;
  const Reply reply =
      desk.Handle(Post("/api/live", R"({"camera":"p","words":["1","--wide"],"rate":20})"));
  const auto& order = std::get<LiveOrder>(reply);
  EXPECT_EQ(order.page, "");
  ASSERT_EQ(order.wishes.size(), 1U);
  EXPECT_EQ(order.wishes[0].rate, 20);
  EXPECT_EQ(order.wishes[0].words, (std::vector<std::string>{"reg", "read", "1", "--wide"}));
  for (const char* const end : {R"({"camera":"p","words":[]})", R"({"camera":"p","reads":[]})"}) {
    EXPECT_TRUE(std::get<LiveOrder>(desk.Handle(Post("/api/live", end))).wishes.empty());
  }
}

TEST(WorkbenchRequestsTest, LiveReadingOfAPageHasCommandLinesEachWithItsRate) {
  RequestDesk desk;
  const Reply reply = desk.Handle(Post("/api/live", R"({"camera":"p","page":"a-1","reads":[
    {"words":["reg","read","0x100"]},
    {"words":["i2c","read","0","--slave","0x6c"],"rate":0.5}]})"));
  const auto& order = std::get<LiveOrder>(reply);
  EXPECT_EQ(order.page, "a-1");
  ASSERT_EQ(order.wishes.size(), 2U);
  EXPECT_EQ(order.wishes[0].rate, 10);
  EXPECT_EQ(order.wishes[1].rate, 0.5);
  EXPECT_EQ(order.wishes[1].words[0], "i2c");
  EXPECT_EQ(std::get<EventStream>(desk.Handle(Get("/api/events?page=a-1"))).page, "a-1");
}

TEST(WorkbenchRequestsTest, LiveReadingOfAnythingElseIsRefused) {
  RequestDesk desk;
  for (const char* const body :
       {R"({"camera":"p","reads":[{"words":["reg","write","1","2"]}]})",
        R"({"camera":"p","reads":[{"words":["watch","--reg","1"]}]})",
        R"({"camera":"p","reads":[{"words":["reg"]}]})",
        R"({"camera":"p","reads":[{"words":["reg","read","1"],"rate":101}]})",
        R"({"camera":"p","reads":[{"words":["reg","read","1","--camera","2"]}]})",
        R"({"camera":"p","reads":[{"words":["reg","read","1"],"other":1}]})",
        R"({"camera":"p","reads":["reg read 1"]})", R"({"camera":"p","reads":{}})",
        R"({"camera":"p","reads":[],"words":["1"]})", R"({"camera":"p","words":["1"],"rate":0})",
        R"({"camera":"p","page":"a b","words":["1"]})"}) {
    EXPECT_EQ(desk.Answer(Post("/api/live", body)).status, 400) << body;
  }
  nlohmann::json many = {{"camera", "p"}, {"reads", nlohmann::json::array()}};
  for (int i = 0; i < 17; ++i) {
    many["reads"].push_back({{"words", {"reg", "read", std::to_string(i)}}});
  }
  EXPECT_EQ(desk.Answer(Post("/api/live", many.dump())).status, 400);
  EXPECT_EQ(desk.Answer(Get("/api/events?page=a%20b")).status, 400);
}

TEST(WorkbenchRequestsTest, StateEventsStopAndJobsAreReached) {
  RequestDesk desk;
  EXPECT_TRUE(std::holds_alternative<StateOrder>(desk.Handle(Get("/api/state"))));
  EXPECT_TRUE(std::holds_alternative<EventStream>(desk.Handle(Get("/api/events"))));
  EXPECT_EQ(desk.Answer(Post("/api/stop", R"({"job":"j1"})")).status, 200);
  EXPECT_EQ(desk.services.stopped, std::vector<std::string>{"j1"});
  EXPECT_EQ(desk.Answer(Get("/api/jobs/j1")).status, 200);
  EXPECT_EQ(desk.Answer(Get("/api/jobs/j2")).status, 404);
}

TEST(WorkbenchRequestsTest, RefusalSaysWhatToDo) {
  RequestDesk desk;
  const HttpResponse response = desk.Answer(RunRequest({"run", "a.txt"}));
  EXPECT_EQ(response.status, 400);
  EXPECT_EQ(
      response.body,
      R"({"error":"refused","message":"run: is not possible in the workbench","hint":"Run it on the command line."})");
}

}  // namespace
}  // namespace borvanusb::tool_test
