#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/command_desk.h"
#include "workbench/run_folder.h"
#include "workbench/server.h"

namespace borvanusb::tool_test {

using std::chrono::milliseconds;

// A worker in this process. It answers each order on a separate thread.
class ThreadWorker : public Worker {
 public:
  ThreadWorker(WorkerEvents events, std::function<std::string(const WorkerOrder&)> answer)
      : events_(std::move(events)), answer_(std::move(answer)) {}
  ~ThreadWorker() override {
    for (std::thread& thread : threads_) {
      thread.join();
    }
  }
  void Send(const WorkerOrder& order) override {
    if (order.kind != WorkerOrder::Kind::kRun) {
      return;
    }
    threads_.emplace_back([this, order] {
      events_.on_report({WorkerReport::Kind::kOut, order.number, answer_(order), 0});
      events_.on_report({WorkerReport::Kind::kEnd, order.number, "", 0});
    });
  }
  void Kill() override {}

 private:
  WorkerEvents events_;
  std::function<std::string(const WorkerOrder&)> answer_;
  std::vector<std::thread> threads_;
};

// A connection that can send anything.
class Client {
 public:
  explicit Client(std::uint16_t port, int receive_buffer = 0)
      : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    if (receive_buffer > 0) {
      setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &receive_buffer, sizeof(receive_buffer));
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    connected_ = ::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
  }
  ~Client() { ::close(socket_); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  bool IsConnected() const { return connected_; }
  bool Send(const std::string& text) const {
    std::size_t sent = 0;
    while (sent < text.size()) {
      const ssize_t part = ::send(socket_, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
      if (part <= 0) {
        return false;
      }
      sent += static_cast<std::size_t>(part);
    }
    return true;
  }
  // Receives until `until` occurs, the connection ends, or the time is over.
  std::string Receive(const std::string& until = "", milliseconds time = milliseconds(10000)) {
    std::string text;
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end &&
           (until.empty() || text.find(until) == std::string::npos)) {
      pollfd waiting{socket_, POLLIN, 0};
      if (::poll(&waiting, 1, 50) <= 0) {
        continue;
      }
      std::array<char, 65536> part{};
      const ssize_t count = ::recv(socket_, part.data(), part.size(), 0);
      if (count <= 0) {
        ended_ = true;
        break;
      }
      text.append(part.data(), static_cast<std::size_t>(count));
    }
    return text;
  }
  bool HasEnded() const { return ended_; }

 private:
  int socket_;
  bool connected_ = false;
  bool ended_ = false;
};

// A server on a free port, on a separate thread.
class ServerRig {
 public:
  static constexpr const char* kCookie = "0123456789abcdef0123456789abcdef";

  explicit ServerRig(ServerLimits limits = {}, std::function<void(ServerSettings&)> change = {}) {
    ServerSettings settings;
    settings.session.token = "00000000000000000000000000000001";
    settings.session.cookie = kCookie;
    settings.connection = limits;
    settings.stay = true;
    settings.page = page_;
    settings.version = "1.2.3";
    settings.stop_requested = [this] { return stop_.load(); };
    settings.start_worker = [this](WorkerEvents events) {
      return std::make_unique<ThreadWorker>(
          std::move(events), [this](const WorkerOrder& order) { return Answer(order); });
    };
    if (change) {
      change(settings);
    }
    server_ = std::make_unique<WorkbenchServer>(std::move(settings), folder_);
    thread_ = std::thread([this] {
      server_->Run();
      ended_ = true;
    });
  }
  ~ServerRig() {
    stop_ = true;
    gate_ = true;
    thread_.join();
  }
  ServerRig(const ServerRig&) = delete;
  ServerRig& operator=(const ServerRig&) = delete;

  std::uint16_t Port() const { return server_->Port(); }
  std::string Host() const { return "127.0.0.1:" + std::to_string(Port()); }
  bool HasEnded() const { return ended_; }
  // The command "reg read 1" runs until this is called.
  void OpenGate() { gate_ = true; }

  // The head of a request as our page sends it, without the empty line.
  std::string Head(const std::string& line) const {
    return line + " HTTP/1.1\r\nHost: " + Host() + "\r\nOrigin: http://" + Host() +
           "\r\nCookie: borvanusb_" + std::to_string(Port()) + "=" + kCookie + "\r\n";
  }
  std::string Get(const std::string& target) const { return Head("GET " + target) + "\r\n"; }
  std::string Post(const std::string& target, const std::string& body) const {
    return Head("POST " + target) +
           "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\n\r\n" + body;
  }

 private:
  std::string Answer(const WorkerOrder& order) {
    if (order.words.back() == "list") {
      return R"({"cameras":[{"index":0,"path":"p","name":"n","vid":"1234","pid":"0001"}]})";
    }
    while (order.words.back() == "1" && !gate_) {
      std::this_thread::sleep_for(milliseconds(5));
    }
    return R"({"done":true})";
  }

  static constexpr unsigned char kPage[] = {1, 2, 3};
  const std::array<PageFile, 1> page_ = {PageFile{"/", "text/html", kPage}};
  TestFolder test_;
  RunFolder folder_{test_.Name("runs"), "ab", test_.Name("journals")};
  std::atomic<bool> stop_{false};
  std::atomic<bool> gate_{false};
  std::atomic<bool> ended_{false};
  std::unique_ptr<WorkbenchServer> server_;
  std::thread thread_;
};

}  // namespace borvanusb::tool_test
