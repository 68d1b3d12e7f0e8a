#include "workbench/connection.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <utility>

#include "workbench/gate.h"

namespace borvanusb {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;

constexpr std::size_t kFirstPart = 4096;

HttpResponse ProblemResponse(const beast::error_code& error) {
  if (error == http::error::header_limit) {
    return ErrorResponse(431, "malformed", "the request's head is too long");
  }
  if (error == http::error::body_limit) {
    return ErrorResponse(413, "too-large", "the request's body is too large");
  }
  return ErrorResponse(400, "malformed", "the request can't be understood");
}

bool IsMalformed(const beast::error_code& error) {
  return error.category() == http::make_error_code(http::error::bad_method).category() &&
         error != http::error::end_of_stream && error != http::error::partial_message;
}

}  // namespace

Connection::Connection(asio::ip::tcp::socket socket, std::uint64_t number, ConnectionOwner& owner)
    : stream_(std::move(socket)),
      number_(number),
      owner_(owner),
      heartbeat_(stream_.get_executor()) {}

void Connection::Start() {
  AwaitRequest(owner_.Limits().header);
}

void Connection::Close() {
  if (std::exchange(closed_, true)) {
    return;
  }
  beast::error_code ignored;
  heartbeat_.cancel();
  stream_.socket().shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
  stream_.close();
  owner_.OnClosed(number_);
}

// ---- Requests and answers ----

void Connection::AwaitRequest(std::chrono::milliseconds time) {
  if (buffer_.size() > 0) {
    ReadHead();
    return;
  }
  stream_.expires_after(time);
  stream_.async_read_some(buffer_.prepare(kFirstPart),
                          [self = shared_from_this()](Error error, std::size_t size) {
                            if (error) {
                              self->Close();
                              return;
                            }
                            self->buffer_.commit(size);
                            self->ReadHead();
                          });
}

void Connection::ReadHead() {
  parser_.emplace();
  SetLimits(*parser_);
  stream_.expires_after(owner_.Limits().header);
  http::async_read_header(
      stream_, buffer_, *parser_,
      [self = shared_from_this()](Error error, std::size_t /*size*/) { self->OnHead(error); });
}

void Connection::OnHead(Error error) {
  if (error) {
    OnReadFailed(error);
    return;
  }
  request_ = HeadOf(*parser_);
  if (auto refused = owner_.CheckHead(request_)) {
    // If the request has a body, it was not read, so the connection can't be reused.
    Respond(std::move(*refused), parser_->is_done() && parser_->keep_alive());
    return;
  }
  stream_.expires_after(owner_.Limits().body);
  http::async_read(
      stream_, buffer_, *parser_,
      [self = shared_from_this()](Error failed, std::size_t /*size*/) { self->OnBody(failed); });
}

void Connection::OnBody(Error error) {
  if (error) {
    OnReadFailed(error);
    return;
  }
  request_.body = std::move(parser_->get().body());
  Handle();
}

// A malformed request is answered. Without a browser, or with one that is too slow, the connection
// ends.
void Connection::OnReadFailed(Error error) {
  if (IsMalformed(error)) {
    Respond(ProblemResponse(error), false);
  } else {
    Close();
  }
}

void Connection::Handle() {
  const bool keep = parser_->keep_alive();
  parser_.reset();
  // A command may take any time.
  stream_.expires_never();
  const HttpRequest request = std::move(request_);
  request_ = {};
  owner_.Handle(
      request,
      [self = shared_from_this(), keep](HttpResponse response) {
        self->Respond(std::move(response), keep);
      },
      [self = shared_from_this()](const std::string& page) { self->BeginStream(page); });
}

void Connection::Respond(HttpResponse response, bool keep) {
  if (closed_) {
    return;
  }
  const HttpResponse hardened = Hardened(std::move(response));
  response_ = std::make_shared<Response>(static_cast<http::status>(hardened.status), 11);
  for (const auto& [name, value] : hardened.headers) {
    response_->insert(name, value);
  }
  response_->keep_alive(keep);
  response_->body() = hardened.body;
  response_->prepare_payload();
  stream_.expires_after(owner_.Limits().body);
  http::async_write(stream_, *response_,
                    [self = shared_from_this(), keep](Error error, std::size_t /*size*/) {
                      self->response_.reset();
                      if (error || !keep) {
                        self->Close();
                        return;
                      }
                      self->AwaitRequest(self->owner_.Limits().idle);
                    });
}

// ---- Events ----

void Connection::BeginStream(const std::string& page) {
  if (closed_) {
    return;
  }
  streams_ = true;
  page_ = page;
  std::string head = "HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\nConnection: close\r\n";
  for (const auto& [name, value] : Hardened(HttpResponse()).headers) {
    head += name;
    head += ": ";
    head += value;
    head += "\r\n";
  }
  head += "\r\nretry: 1000\n\n";
  WatchReader();
  SendEvent(std::make_shared<const std::string>(std::move(head)));
  Beat();
}

// A browser sends nothing on this connection. Any data, or its end, ends the stream.
void Connection::WatchReader() {
  stream_.expires_never();
  buffer_.clear();
  stream_.async_read_some(
      buffer_.prepare(1),
      [self = shared_from_this()](Error /*error*/, std::size_t /*size*/) { self->Close(); });
}

void Connection::SendEvent(const std::shared_ptr<const std::string>& text) {
  if (closed_ || !streams_) {
    return;
  }
  event_bytes_ += text->size();
  if (event_bytes_ > owner_.Limits().event_bytes) {
    Close();
    return;
  }
  events_.push_back(text);
  if (events_.size() == 1) {
    SendNext();
  }
}

void Connection::SendNext() {
  stream_.expires_after(owner_.Limits().event);
  asio::async_write(stream_, asio::buffer(*events_.front()),
                    [self = shared_from_this()](Error error, std::size_t /*size*/) {
                      if (error) {
                        self->Close();
                        return;
                      }
                      self->event_bytes_ -= self->events_.front()->size();
                      self->events_.pop_front();
                      if (!self->events_.empty() && !self->closed_) {
                        self->SendNext();
                      }
                    });
}

void Connection::Beat() {
  heartbeat_.expires_after(owner_.Limits().heartbeat);
  heartbeat_.async_wait([weak = weak_from_this()](Error error) {
    const auto self = weak.lock();
    if (!error && self && !self->closed_) {
      self->SendEvent(std::make_shared<const std::string>(":\n\n"));
      self->Beat();
    }
  });
}

}  // namespace borvanusb
