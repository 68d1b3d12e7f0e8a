#include "workbench/server.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "base/failure.h"
#include "base/format.h"
#include "workbench/connection.h"
#include "workbench/desk.h"
#include "workbench/handle_request.h"

namespace borvanusb {

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using Json = nlohmann::ordered_json;
using Clock = std::chrono::steady_clock;

// How often the server checks for Ctrl-C and for absent pages.
constexpr std::chrono::milliseconds kBetweenChecks{100};

HttpResponse JsonResponse(int status, const Json& body) {
  HttpResponse response;
  response.status = status;
  response.headers = {{"Content-Type", "application/json"}};
  response.body = body.dump(-1, ' ', false, Json::error_handler_t::replace);
  return response;
}

#ifdef _WIN32
// Without this option, another program could listen on the same port.
using OwnPort = asio::detail::socket_option::boolean<SOL_SOCKET, SO_EXCLUSIVEADDRUSE>;
#else
using OwnPort = asio::socket_base::reuse_address;
#endif

tcp::acceptor Listen(asio::io_context& context, std::uint16_t port) {
  tcp::acceptor acceptor(context);
  try {
    acceptor.open(tcp::v4());
    acceptor.set_option(OwnPort(true));
    acceptor.bind({asio::ip::address_v4::loopback(), port});
    acceptor.listen();
  } catch (const boost::system::system_error& error) {
    throw Failure(ExitCode::kInternal,
                  Format("port {} of this machine can't be used: {}", port, error.code().message()),
                  "Another program has it; choose another one with --port.");
  }
  return acceptor;
}

}  // namespace

// Connects the connections with the work.
class WorkbenchServer::Hall : public ConnectionOwner, public WorkbenchServices {
 public:
  Hall(ServerSettings settings, const RunFolder& folder)
      : settings_(std::move(settings)),
        folder_(folder),
        acceptor_(Listen(context_, settings_.port)),
        checks_(context_) {
    settings_.session.port = acceptor_.local_endpoint().port();
    tool_ = DescribeTool();
  }

  std::uint16_t Port() const { return settings_.session.port; }
  std::string Address() const {
    return Format("http://{}/?token={}", HostOf(settings_.session), settings_.session.token);
  }

  void Run() {
    desk_ = std::make_unique<Desk>(Tools());
    Accept();
    Check();
    context_.run();
    // Ends the workers before the objects that receive their reports.
    desk_.reset();
  }

  // ---- ConnectionOwner ----

  const ServerLimits& Limits() const override { return settings_.connection; }

  std::optional<HttpResponse> CheckHead(const HttpRequest& request) override {
    return borvanusb::CheckHead(request, settings_.session);
  }

  void Handle(const HttpRequest& request, Respond respond, OpenStream stream) override {
    Reply reply = HandleRequest(request, settings_.session, {tool_, settings_.limits}, *this);
    if (auto* const response = std::get_if<HttpResponse>(&reply)) {
      respond(std::move(*response));
    } else if (const auto* const run = std::get_if<RunOrder>(&reply)) {
      desk_->Run(*run,
                 [respond](int status, const Json& body) { respond(JsonResponse(status, body)); });
    } else if (const auto* const live = std::get_if<LiveOrder>(&reply)) {
      respond(JsonResponse(200, desk_->SetLive(*live)));
    } else if (std::holds_alternative<StateOrder>(reply)) {
      TellState(respond);
    } else {
      stream(std::get<EventStream>(reply).page);
      CountPages();
    }
  }

  void OnClosed(std::uint64_t connection) override {
    connections_.erase(connection);
    CountPages();
  }

  // ---- WorkbenchServices ----

  std::span<const PageFile> Page() const override { return settings_.page; }
  void SaveFile(const std::string& name, std::string_view bytes) override {
    folder_.Save(name, bytes);
  }
  std::vector<StoredFile> ListFiles() const override { return folder_.List(); }
  std::optional<std::string> ReadFile(const std::string& name) const override {
    return folder_.Read(name);
  }
  bool StopJob(const std::string& job) override { return desk_->StopJob(job); }
  std::optional<std::string> JobText(const std::string& job) const override {
    return desk_->JobText(job);
  }

 private:
  DeskTools Tools() {
    DeskTools tools;
    tools.post = [this](std::function<void()> work) { asio::post(context_, std::move(work)); };
    tools.after = [this](std::chrono::milliseconds time, std::function<void()> work) {
      const auto timer = std::make_shared<asio::steady_timer>(context_, time);
      timer->async_wait([timer, work = std::move(work)](boost::system::error_code error) {
        if (!error) {
          work();
        }
      });
    };
    tools.clock = Clock::now;
    tools.now = std::chrono::system_clock::now;
    tools.start_worker = settings_.start_worker;
    tools.publish = [this](std::string_view name, const Json& data) { Publish(name, data); };
    tools.folder = folder_.Name();
    tools.profile_words = settings_.profile_words;
    tools.tool = tool_;
    return tools;
  }

  void Accept() {
    acceptor_.async_accept([this](boost::system::error_code error, tcp::socket socket) {
      if (!error) {
        Welcome(std::move(socket));
      }
      if (error != asio::error::operation_aborted) {
        Accept();
      }
    });
  }

  void Welcome(tcp::socket socket) {
    if (connections_.size() >= settings_.connection.connections) {
      boost::system::error_code ignored;
      socket.non_blocking(true, ignored);
      const std::string_view full =
          "HTTP/1.1 503 Service Unavailable\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
      socket.write_some(asio::buffer(full), ignored);
      socket.shutdown(tcp::socket::shutdown_both, ignored);
      return;
    }
    boost::system::error_code ignored;
    socket.set_option(tcp::no_delay(true), ignored);
    const std::uint64_t number = ++last_connection_;
    const auto connection = std::make_shared<Connection>(std::move(socket), number, *this);
    connections_[number] = connection;
    connection->Start();
  }

  void Publish(std::string_view name, const Json& data) {
    const auto text = std::make_shared<const std::string>(
        Format("event: {}\ndata: {}\n\n", name,
               data.dump(-1, ' ', false, Json::error_handler_t::replace)));
    // A copy, because sending may disconnect a page, which changes the map.
    const auto connections = connections_;
    for (const auto& [number, connection] : connections) {
      connection->SendEvent(text);
    }
  }

  void TellState(const Respond& respond) {
    desk_->TellState([this, respond](const Json& cameras, const Json& jobs) {
      respond(JsonResponse(200, {{"version", settings_.version},
                                 {"read_only", settings_.limits.read_only},
                                 {"library", desk_->Library()},
                                 {"cameras", cameras},
                                 {"jobs", jobs}}));
    });
  }

  void CountPages() {
    std::vector<std::string> pages;
    for (const auto& [number, connection] : connections_) {
      if (connection->Streams()) {
        pages.push_back(connection->Page());
      }
    }
    if (pages == pages_) {
      return;
    }
    pages_ = std::move(pages);
    if (pages_.empty()) {
      pages_gone_ = Clock::now();
    }
    if (desk_) {
      desk_->SetPages(pages_);
    }
  }

  // Whether the last page has been gone for longer than `patience`.
  bool IsLeft() const {
    return !settings_.stay && pages_.empty() && pages_gone_ &&
           Clock::now() - *pages_gone_ > settings_.patience;
  }

  void Check() {
    if (!stopping_ && settings_.stop_requested()) {
      stopping_ = true;
      desk_->StopAll();
    }
    if ((stopping_ || IsLeft()) && !desk_->HasWork()) {
      context_.stop();
      return;
    }
    checks_.expires_after(kBetweenChecks);
    checks_.async_wait([this](boost::system::error_code error) {
      if (!error) {
        Check();
      }
    });
  }

  ServerSettings settings_;
  const RunFolder& folder_;
  ToolDescription tool_;
  asio::io_context context_{1};
  tcp::acceptor acceptor_;
  asio::steady_timer checks_;
  std::unique_ptr<Desk> desk_;
  std::map<std::uint64_t, std::shared_ptr<Connection>> connections_;
  std::uint64_t last_connection_ = 0;
  std::vector<std::string> pages_;  // that listen, by name
  std::optional<Clock::time_point> pages_gone_;
  bool stopping_ = false;
};

WorkbenchServer::WorkbenchServer(ServerSettings settings, const RunFolder& folder)
    : hall_(std::make_unique<Hall>(std::move(settings), folder)) {}

WorkbenchServer::~WorkbenchServer() = default;

std::string WorkbenchServer::Address() const {
  return hall_->Address();
}

std::uint16_t WorkbenchServer::Port() const {
  return hall_->Port();
}

void WorkbenchServer::Run() {
  hall_->Run();
}

}  // namespace borvanusb
