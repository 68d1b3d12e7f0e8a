// The server on its socket: with normal pages, and with clients that misbehave.
#include <gtest/gtest.h>

#include "workbench_server_support.h"

namespace borvanusb::tool_test {
namespace {

ServerLimits Short() {
  ServerLimits limits;
  limits.header = milliseconds(150);
  limits.body = milliseconds(300);
  limits.idle = milliseconds(400);
  limits.heartbeat = milliseconds(100);
  limits.event = milliseconds(300);
  limits.event_bytes = 64U << 10U;
  return limits;
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(WorkbenchServerTest, PageIsServedOnOneConnectionAgainAndAgain) {
  const ServerRig rig;
  Client client(rig.Port());
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(client.Send(rig.Get("/")));
    const std::string answer = client.Receive("\x01\x02\x03");
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 200 OK\r\n")) << answer;
    EXPECT_TRUE(Contains(answer, "Content-Security-Policy: default-src 'none'"));
    EXPECT_TRUE(Contains(answer, "Content-Encoding: gzip"));
  }
}

TEST(WorkbenchServerTest, TwoRequestsAtOnceAreAnsweredInTheirOrder) {
  const ServerRig rig;
  Client client(rig.Port());
  client.Send(rig.Get("/") + rig.Get("/api/nothing"));
  const std::string answer = client.Receive("\"not-found\"");
  EXPECT_LT(answer.find("200 OK"), answer.find("404 Not Found"));
}

TEST(WorkbenchServerTest, StateAndRunGoThroughTheWorkers) {
  ServerRig rig;
  rig.OpenGate();
  Client client(rig.Port());
  client.Send(rig.Get("/api/state"));
  EXPECT_TRUE(Contains(client.Receive("\"jobs\""), R"("version":"1.2.3","read_only":false)"));
  client.Send(rig.Post("/api/run", R"({"words":["reg","read","1"],"camera":"p"})"));
  EXPECT_TRUE(Contains(client.Receive("\"job\""), R"({"exit":0,"result":{"done":true})"));
}

TEST(WorkbenchServerTest, UploadComesBackByteForByte) {
  const ServerRig rig;
  std::string bytes(3U << 20U, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<char>(i * 31);
  }
  bytes += "the end";
  Client client(rig.Port());
  client.Send(rig.Post("/api/files?name=a.bin", bytes));
  EXPECT_TRUE(Contains(client.Receive("}"), R"("size":3145735)"));
  client.Send(rig.Get("/api/files/a.bin"));
  EXPECT_TRUE(client.Receive("the end").ends_with(bytes));
}

TEST(WorkbenchServerTest, EventsTellOfWorkAndBeat) {
  ServerRig rig(Short());
  rig.OpenGate();
  Client page(rig.Port());
  page.Send(rig.Get("/api/events"));
  EXPECT_TRUE(Contains(page.Receive("retry"), "Content-Type: text/event-stream"));
  EXPECT_TRUE(Contains(page.Receive(":\n\n"), ":\n\n"));
  Client client(rig.Port());
  client.Send(rig.Post("/api/run", R"({"words":["list"]})"));
  const std::string events = page.Receive("\"ended\"");
  EXPECT_TRUE(Contains(events, "event: job\ndata: {\"job\":{\"id\":\"job-1\"")) << events;
}

TEST(WorkbenchServerTest, WorkGoesOnWhenTheBrowserCloses) {
  ServerRig rig;
  {
    Client client(rig.Port());
    client.Send(rig.Post("/api/run", R"({"words":["reg","read","1"],"camera":"p","job":"long"})"));
    client.Receive("x", milliseconds(200));
  }
  Client again(rig.Port());
  again.Send(rig.Get("/api/state"));
  EXPECT_TRUE(Contains(again.Receive("\"progress\""), R"("jobs":[{"id":"long")"));
  rig.OpenGate();
  std::string answer;
  for (int i = 0; i < 100 && !Contains(answer, "\"exit\":0"); ++i) {
    again.Send(rig.Get("/api/jobs/long"));
    answer = again.Receive("}");
    std::this_thread::sleep_for(milliseconds(20));
  }
  EXPECT_TRUE(Contains(answer, "\"exit\":0")) << answer;
}

// ---- Clients that misbehave ----

TEST(WorkbenchServerTest, ConnectionThatSaysNothingEnds) {
  const ServerRig rig(Short());
  Client client(rig.Port());
  EXPECT_EQ(client.Receive("", milliseconds(3000)), "");
  EXPECT_TRUE(client.HasEnded());
}

TEST(WorkbenchServerTest, SlowHeadEnds) {
  const ServerRig rig(Short());
  Client client(rig.Port());
  const std::string head = rig.Get("/");
  bool open = true;
  for (std::size_t i = 0; i < head.size() && open; ++i) {
    open = client.Send(head.substr(i, 1)) && client.Receive("", milliseconds(20)).empty() &&
           !client.HasEnded();
  }
  EXPECT_TRUE(client.HasEnded() || !open);
}

TEST(WorkbenchServerTest, SlowBodyEnds) {
  const ServerRig rig(Short());
  Client client(rig.Port());
  client.Send(rig.Head("POST /api/files?name=a") + "Content-Length: 1000\r\n\r\nabc");
  EXPECT_EQ(client.Receive("", milliseconds(3000)), "");
  EXPECT_TRUE(client.HasEnded());
}

TEST(WorkbenchServerTest, EndlessHeadIsCutOff) {
  const ServerRig rig;
  Client client(rig.Port());
  client.Send("GET / HTTP/1.1\r\n");
  bool open = true;
  for (int i = 0; i < 2000 && open; ++i) {
    open = client.Send("X-" + std::to_string(i) + ": aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\r\n");
  }
  const std::string answer = client.Receive("", milliseconds(3000));
  EXPECT_TRUE(answer.empty() || answer.starts_with("HTTP/1.1 431")) << answer;
  EXPECT_TRUE(client.HasEnded() || !open);
}

TEST(WorkbenchServerTest, BodyBeyondTheLimitIsRefusedBeforeItIsRead) {
  const ServerRig rig;
  Client client(rig.Port());
  client.Send(rig.Head("POST /api/files?name=a") + "Content-Length: 100000000000\r\n\r\n");
  EXPECT_TRUE(client.Receive("", milliseconds(3000)).starts_with("HTTP/1.1 413"));
  EXPECT_TRUE(client.HasEnded());
}

TEST(WorkbenchServerTest, BodyOfAStrangerIsNotRead) {
  const ServerRig rig;
  Client client(rig.Port());
  client.Send("POST /api/files?name=a HTTP/1.1\r\nHost: " + rig.Host() +
              "\r\nContent-Length: 60000000\r\n\r\n");
  EXPECT_TRUE(client.Receive("", milliseconds(3000)).starts_with("HTTP/1.1 403"));
  EXPECT_TRUE(client.HasEnded());
}

TEST(WorkbenchServerTest, NonsenseIsRefused) {
  const ServerRig rig(Short());
  for (const std::string& text :
       {std::string("\x16\x03\x01\x02", 4), std::string("GET\r\n\r\n"),
        std::string("GET / HTTP/9.9\r\n\r\n"), std::string("\0\0\0\0\r\n\r\n", 8),
        std::string("GET / HTTP/1.1\r\nHost\r\n\r\n"),
        std::string("POST / HTTP/1.1\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\nab"),
        std::string(
            "POST / HTTP/1.1\r\nContent-Length: 1\r\nTransfer-Encoding: chunked\r\n\r\n")}) {
    Client client(rig.Port());
    client.Send(text);
    const std::string answer = client.Receive("", milliseconds(3000));
    EXPECT_TRUE(answer.empty() || answer.starts_with("HTTP/1.1 4")) << answer;
    EXPECT_TRUE(client.HasEnded());
  }
  Client good(rig.Port());
  good.Send(rig.Get("/"));
  EXPECT_TRUE(good.Receive("\x01\x02\x03").starts_with("HTTP/1.1 200"));
}

TEST(WorkbenchServerTest, SeventeenthConnectionIsTurnedAway) {
  const ServerRig rig;
  std::vector<std::unique_ptr<Client>> clients;
  for (int i = 0; i < 16; ++i) {
    clients.push_back(std::make_unique<Client>(rig.Port()));
    clients.back()->Send(rig.Get("/"));
    EXPECT_TRUE(clients.back()->Receive("\x01\x02\x03").starts_with("HTTP/1.1 200")) << i;
  }
  Client more(rig.Port());
  const std::string answer = more.Receive("", milliseconds(3000));
  EXPECT_TRUE(answer.empty() || answer.starts_with("HTTP/1.1 503"));
  EXPECT_TRUE(more.HasEnded());
  clients.pop_back();
  std::string last;
  for (int i = 0; i < 50 && last.empty(); ++i) {
    Client next(rig.Port());
    next.Send(rig.Get("/"));
    last = next.Receive("\x01\x02\x03", milliseconds(500));
    last = last.starts_with("HTTP/1.1 200") ? last : "";
  }
  EXPECT_FALSE(last.empty());
}

TEST(WorkbenchServerTest, PageThatStopsReadingIsCutOffAndTheOthersHearOn) {
  ServerLimits limits = Short();
  limits.event = milliseconds(2000);  // the other page may be slow on a busy machine
  ServerRig rig(limits);
  rig.OpenGate();
  Client deaf(rig.Port(), 4096);
  deaf.Send(rig.Get("/api/events"));
  Client page(rig.Port());
  page.Send(rig.Get("/api/events"));
  page.Receive("retry");
  Client client(rig.Port());
  const std::string name(200, '1');
  // Much more than the buffers on both ends can hold.
  for (int i = 0; i < 3000; ++i) {
    client.Send(
        rig.Post("/api/run", R"({"words":["reg","read","2",")" + name + R"("],"camera":"p"})"));
    ASSERT_TRUE(Contains(client.Receive("\"job\""), "\"exit\":0"));
    page.Receive("\"ended\"");
  }
  const std::string rest = deaf.Receive("", milliseconds(20000));
  EXPECT_TRUE(deaf.HasEnded());
  client.Send(rig.Post("/api/run", R"({"words":["list"]})"));
  // Events of earlier commands may still be under way to a slow page.
  bool heard = false;
  for (std::string event = "-"; !heard && !event.empty();) {
    event = page.Receive("\"ended\"");
    heard = Contains(event, "borvanusb list") && Contains(event, "\"ended\"");
  }
  EXPECT_TRUE(heard);
}

TEST(WorkbenchServerTest, EndsWhenTheLastPageIsGone) {
  ServerRig rig(Short(), [](ServerSettings& settings) {
    settings.stay = false;
    settings.patience = milliseconds(200);
  });
  std::this_thread::sleep_for(milliseconds(400));
  EXPECT_FALSE(rig.HasEnded());
  {
    Client page(rig.Port());
    page.Send(rig.Get("/api/events"));
    page.Receive("retry");
    Client client(rig.Port());
    client.Send(rig.Post("/api/run", R"({"words":["reg","read","1"],"camera":"p","wait":false})"));
    client.Receive("\"job\"");
  }
  std::this_thread::sleep_for(milliseconds(500));
  EXPECT_FALSE(rig.HasEnded()) << "work was being done";
  rig.OpenGate();
  for (int i = 0; i < 200 && !rig.HasEnded(); ++i) {
    std::this_thread::sleep_for(milliseconds(20));
  }
  EXPECT_TRUE(rig.HasEnded());
}

TEST(WorkbenchServerTest, PortThatIsTakenIsAFailure) {
  const ServerRig rig;
  const TestFolder test;
  const RunFolder folder(test.Name("other"), "cd", test.Name("journals"));
  ServerSettings settings;
  settings.port = rig.Port();
  EXPECT_THROW(WorkbenchServer(std::move(settings), folder), Failure);
}

}  // namespace
}  // namespace borvanusb::tool_test
