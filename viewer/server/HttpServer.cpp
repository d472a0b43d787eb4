// startServer() of the module.
#include "server/ViewerServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "base/FileDescriptor.h"
#include "base/HexText.h"
#include "server/BoundedServer.h"
#include "server/RecordingShelf.h"
#include "server/Router.h"
#include "toolkit/base/Failure.h"

namespace velmar::viewer {

namespace {

using toolkit::Failure;

constexpr std::size_t kThreads = 256;  // each page and each connection that is kept holds one

std::string drawToken() {
  std::array<unsigned char, 16> bytes;
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    throw Failure::ofSystem("token", "cannot draw it", errno);
  }
  return detail::bytesToHex(bytes.data(), bytes.size());
}

bool isNumeric(const std::string& host) {
  in6_addr address;
  return inet_pton(AF_INET, host.c_str(), &address) == 1 ||
         inet_pton(AF_INET6, host.c_str(), &address) == 1;
}

std::string hostInUrl(const std::string& address) {
  return address.find(':') == address.npos ? address : "[" + address + "]";
}

// The scheme and the host of an address.
std::string originOf(const std::string& url) {
  const std::size_t host = url.find("://");
  return host == url.npos ? "" : url.substr(0, url.find('/', host + 3));
}

// Not SO_REUSEPORT, with which two servers could have one port.
void setSocketOptions(int socket) {
  const int yes = 1;
  setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

// Counts the pages that are open. Can be waited for: it ends a while after the last one has gone,
// since a page that is loaded again is away for a moment.
class OpenPages {
 public:
  explicit OpenPages(bool once)
      : once_(once), end_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {
    if (!end_.isOpen()) throw Failure::ofSystem("timer", "cannot make it", errno);
  }

  int endDescriptor() const { return end_.get(); }
  void open() { change(1); }
  void close() { change(-1); }
  void end() { endAfter({0, 1}); }

 private:
  void change(int by) {
    const std::lock_guard lock(mutex_);
    count_ += by;
    constexpr timespec kUntilEnd{3, 0};
    endAfter(once_ && count_ == 0 ? kUntilEnd : timespec{});
  }

  void endAfter(timespec time) {
    const itimerspec end{{}, time};
    timerfd_settime(end_.get(), 0, &end, nullptr);
  }

  const bool once_;
  detail::FileDescriptor end_;
  std::mutex mutex_;
  int count_ = 0;
};

class HttpServer final : public ViewerServer {
 public:
  explicit HttpServer(const ServerOptions& options)
      : address_(options.address),
        policy_(
            "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
            "frame-src 'self'; frame-ancestors 'self'; img-src 'self' blob: data: " +
            originOf(options.tiles) + "; base-uri 'none'; form-action 'none'"),
        shelf_(options.recordings),
        router_(shelf_, options.tiles),
        pages_(options.once) {
    setUp();
    bind(options.port);
    thread_ = std::thread([this] {
      server_.listen_after_bind();
      hasEnded_ = true;
      pages_.end();
    });
  }

  ~HttpServer() override {
    {
      const std::lock_guard lock(mutex_);
      isStopped_ = true;
    }
    stopped_.notify_all();
    shelf_.stop();
    server_.closeClients();
    // Before it runs, it cannot be stopped.
    while (!server_.is_running() && !hasEnded_)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    server_.stop();
    thread_.join();
  }

  std::string url() const override {
    return "http://" + hostInUrl(address_) + ":" + std::to_string(port_) + "/" + token_ + "/";
  }
  int endedDescriptor() const override { return pages_.endDescriptor(); }
  void checkListens() const override {
    if (hasEnded_)
      throw Failure(address_, "the server cannot take connections any more",
                    VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E);
  }

 private:
  void setUp() {
    constexpr std::size_t kLongestBody = 1024;
    server_.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
    server_.set_socket_options(setSocketOptions);
    server_.set_tcp_nodelay(true);
    server_.set_payload_max_length(kLongestBody);
    server_.set_pre_routing_handler([this](const auto& request, auto& response) {
      answer(request, response);
      return httplib::Server::HandlerResponse::Handled;
    });
  }

  void bind(int port) {
    errno = 0;
    if (port == 0) {
      port_ = server_.bind_to_any_port(address_);
    } else {
      port_ = server_.bind_to_port(address_, port) ? port : -1;
    }
    if (port_ > 0) return;
    throw Failure::ofSystem(hostInUrl(address_) + ":" + std::to_string(port), "cannot listen there",
                            errno == 0 ? EADDRNOTAVAIL : errno);
  }

  void answer(const httplib::Request& request, httplib::Response& response) {
    response.set_header("Content-Security-Policy", policy_);
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("X-Frame-Options", "SAMEORIGIN");
    response.set_header("Referrer-Policy", "no-referrer");
    response.set_header("Cross-Origin-Resource-Policy", "same-origin");
    const std::string start = "/" + token_ + "/";
    if (request.method != "GET" && request.method != "HEAD") {
      response.set_header("Connection", "close");
      return send(Answer::problem(405, "only GET is answered"), request, response);
    }
    if (!isForThis(request) || !request.path.starts_with(start)) {
      return send(Answer::problem(403, "this is not the address that the viewer has printed"),
                  request, response);
    }
    const std::string path = request.path.substr(start.size());
    if (path == "alive") return keepAlive(response);
    const auto parameter = [&request](const std::string& name) {
      return request.has_param(name.c_str()) ? request.get_param_value(name.c_str()) : "";
    };
    send(router_.answer({path, parameter}), request, response);
  }

  // Whether it names this server as its host. A page from elsewhere whose name was made to lead
  // here names another one.
  bool isForThis(const httplib::Request& request) const {
    if (request.get_header_value_count("Host") != 1) return false;
    const std::string port = ":" + std::to_string(port_);
    std::string host = request.get_header_value("Host");
    if (!host.ends_with(port)) return false;
    host.resize(host.size() - port.size());
    if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
    const bool isAny = address_ == "0.0.0.0" || address_ == "::";
    return host == address_ || host == "localhost" || host == "127.0.0.1" ||
           (isAny && isNumeric(host));
  }

  void send(const Answer& answer, const httplib::Request& request, httplib::Response& response) {
    response.status = answer.status;
    response.set_header("Cache-Control", answer.etag.empty() ? "no-store" : "private, no-cache");
    if (!answer.fileName.empty()) {
      response.set_header("Content-Disposition", dispositionOf(answer.fileName));
    }
    if (!answer.etag.empty()) {
      response.set_header("ETag", answer.etag);
      if (request.get_header_value("If-None-Match") == answer.etag) {
        response.status = 304;
        return;
      }
    }
    // Not as its body, which would be copied and compressed.
    response.set_content_provider(
        answer.size, answer.type,
        [answer](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
          return sink.write(answer.data + offset, length);
        });
  }

  // As RFC 6266 has it: bytes that are not plain are escaped.
  static std::string dispositionOf(const std::string& fileName) {
    std::string escaped;
    for (const char byte : fileName) {
      const auto value = static_cast<unsigned char>(byte);
      const bool isPlain = std::isalnum(value) != 0 || byte == '-' || byte == '_' || byte == '.';
      escaped += isPlain ? std::string(1, byte) : "%" + detail::bytesToHex(&value, 1);
    }
    return "attachment; filename*=UTF-8''" + escaped;
  }

  // An event stream in which nothing ever happens: its end tells either side that the other has
  // gone.
  void keepAlive(httplib::Response& response) {
    pages_.open();
    response.status = 200;
    response.set_header("Cache-Control", "no-store");
    response.set_chunked_content_provider(
        "text/event-stream",
        [this](std::size_t, httplib::DataSink& sink) {
          constexpr std::string_view kBeat = ":\n\n";
          if (!sink.write(kBeat.data(), kBeat.size())) return false;
          std::unique_lock lock(mutex_);
          return !stopped_.wait_for(lock, std::chrono::seconds(1), [this] { return isStopped_; });
        },
        [this](bool) { pages_.close(); });
  }

  const std::string address_;
  const std::string policy_;
  const std::string token_ = drawToken();
  int port_ = -1;
  RecordingShelf shelf_;
  const Router router_;
  OpenPages pages_;
  std::mutex mutex_;
  std::condition_variable stopped_;
  bool isStopped_ = false;
  BoundedServer server_;
  std::atomic<bool> hasEnded_ = false;
  std::thread thread_;
};

}  // namespace

std::unique_ptr<ViewerServer> startServer(const ServerOptions& options) {
  return std::make_unique<HttpServer>(options);
}

}  // namespace velmar::viewer
