#pragma once

// A connection to a browser. Only the server includes this file, because it needs Boost.

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/string_body.hpp>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "workbench/http_message.h"
#include "workbench/request_parser.h"
#include "workbench/server.h"

namespace borvanusb {

// The interface of the server for its connections. Answers may arrive later, on the same thread.
class ConnectionOwner {
 public:
  using Respond = std::function<void(HttpResponse)>;
  using OpenStream = std::function<void(const std::string& page)>;

  ConnectionOwner() = default;
  ConnectionOwner(const ConnectionOwner&) = delete;
  ConnectionOwner& operator=(const ConnectionOwner&) = delete;
  virtual ~ConnectionOwner() = default;

  virtual const ServerLimits& Limits() const = 0;
  // Checks a request before its body is read. Returns the answer if it is refused.
  virtual std::optional<HttpResponse> CheckHead(const HttpRequest& request) = 0;
  // Calls `respond` with the answer, or `stream` once, which turns the connection into an event
  // stream.
  virtual void Handle(const HttpRequest& request, Respond respond, OpenStream stream) = 0;
  // Called when an event stream ends.
  virtual void OnClosed(std::uint64_t connection) = 0;
};

class Connection : public std::enable_shared_from_this<Connection> {
 public:
  Connection(boost::asio::ip::tcp::socket socket, std::uint64_t number, ConnectionOwner& owner);

  void Start();
  std::uint64_t Number() const { return number_; }
  bool Streams() const { return streams_; }
  // The name of the page that receives the events; may be empty.
  const std::string& Page() const { return page_; }
  // Sends an event on an event stream. A page that does not read its events is disconnected.
  void SendEvent(const std::shared_ptr<const std::string>& text);
  void Close();

 private:
  using Response = boost::beast::http::response<boost::beast::http::string_body>;
  using Error = boost::beast::error_code;

  void AwaitRequest(std::chrono::milliseconds time);
  void ReadHead();
  void OnHead(Error error);
  void OnBody(Error error);
  void OnReadFailed(Error error);
  void Handle();
  void Respond(HttpResponse response, bool keep);
  void BeginStream(const std::string& page);
  void WatchReader();
  void SendNext();
  void Beat();

  boost::beast::tcp_stream stream_;
  const std::uint64_t number_;
  ConnectionOwner& owner_;
  boost::beast::flat_buffer buffer_;
  std::optional<RequestParser> parser_;
  HttpRequest request_;
  std::shared_ptr<Response> response_;
  boost::asio::steady_timer heartbeat_;
  std::deque<std::shared_ptr<const std::string>> events_;
  std::size_t event_bytes_ = 0;
  bool streams_ = false;
  std::string page_;
  bool closed_ = false;
};

}  // namespace borvanusb
