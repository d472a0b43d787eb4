#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <spawn.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include "Bench.h"
#include "Files.h"
#include "base/FileDescriptor.h"

namespace {

namespace detail = velmar::detail;

constexpr int kRepetitions = 7;
constexpr char kEndOfHead[] = "\r\n\r\n";

// `velmar-video view`, as long as the object lives.
class RunningViewer {
 public:
  explicit RunningViewer(const std::string& path) {
    const std::string command =
        "exec '" + std::string(VELMAR_TOOL) + "' view --no-browser '" + path + "'";
    output_ = ::popen(("echo $$; " + command).c_str(), "r");
    require(output_ != nullptr, "no viewer");
    std::array<char, 200> url{};
    require(
        std::fscanf(output_, "%d http://127.0.0.1:%hu%199s", &process_, &port_, url.data()) == 3,
        "the viewer does not start");
    start_ = url.data();
  }
  ~RunningViewer() {
    ::kill(process_, SIGTERM);
    ::pclose(output_);
  }
  RunningViewer(const RunningViewer&) = delete;
  RunningViewer& operator=(const RunningViewer&) = delete;

  unsigned short port() const { return port_; }
  std::string path(const std::string& what) const { return start_ + what; }
  double anonymousBytes() const {
    std::ifstream status("/proc/" + std::to_string(process_) + "/status");
    std::string field;
    while (status >> field && field != "RssAnon:") continue;
    double kilobytes = 0;
    status >> kilobytes;
    return kilobytes * 1024;
  }

 private:
  FILE* output_ = nullptr;
  pid_t process_ = 0;
  unsigned short port_ = 0;
  std::string start_;
};

detail::FileDescriptor newSocket() {
  detail::FileDescriptor made(::socket(AF_INET, SOCK_STREAM, 0));
  require(made.isOpen(), "no socket");
  return made;
}

sockaddr_in loopback(unsigned short port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// A connection that asks for one thing after the other.
class Client {
 public:
  explicit Client(unsigned short port) : socket_(newSocket()), port_(port), buffer_(1 << 20, '\0') {
    const sockaddr_in address = loopback(port);
    require(
        ::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
        "nobody listens");
  }

  /// How many bytes the answer has.
  std::size_t get(const std::string& path) {
    const std::string request =
        "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port_) + kEndOfHead;
    require(::send(socket_.get(), request.data(), request.size(), 0) ==
                static_cast<ssize_t>(request.size()),
            "not asked");
    std::size_t have = 0;
    std::size_t head = std::string::npos;
    while (head == std::string::npos) {
      have += receive(have);
      head = std::string_view(buffer_.data(), have).find(kEndOfHead);
    }
    constexpr std::string_view kLength = "Content-Length: ";
    const std::size_t length = buffer_.find(kLength);
    require(length < head, path + ": no answer");
    const std::size_t size = std::strtoul(buffer_.data() + length + kLength.size(), nullptr, 10);
    for (have -= head + sizeof kEndOfHead - 1; have < size;) have += receive(0);
    return size;
  }

 private:
  std::size_t receive(std::size_t at) {
    const ssize_t count = ::recv(socket_.get(), buffer_.data() + at, buffer_.size() - at, 0);
    require(count > 0, "the server has gone");
    return static_cast<std::size_t>(count);
  }

  detail::FileDescriptor socket_;
  unsigned short port_;
  std::string buffer_;
};

// The least that serves frames: it answers one connection, each request with the next frame.
class BareServer {
 public:
  explicit BareServer(const std::string& path)
      : file_(path, O_RDONLY), places_(framePlaces(path)), listener_(newSocket()) {
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    auto* const bound = reinterpret_cast<sockaddr*>(&address);
    require(::bind(listener_.get(), bound, size) == 0 && ::listen(listener_.get(), 1) == 0 &&
                ::getsockname(listener_.get(), bound, &size) == 0,
            "no port");
    port_ = ntohs(address.sin_port);
    thread_ = std::jthread([this] { serve(); });
  }

  unsigned short port() const { return port_; }

 private:
  void serve() const {
    const detail::FileDescriptor client(::accept(listener_.get(), nullptr, nullptr));
    const int yes = 1;
    ::setsockopt(client.get(), IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    std::array<char, 4096> request{};
    for (std::size_t i = 0; ::recv(client.get(), request.data(), request.size(), 0) > 0; ++i) {
      const Place& place = places_[i % places_.size()];
      const std::string head =
          "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(place.size) + kEndOfHead;
      ::send(client.get(), head.data(), head.size(), MSG_MORE);
      auto offset = static_cast<off_t>(place.offset);
      for (std::size_t left = place.size; left > 0;) {
        const ssize_t sent = ::sendfile(client.get(), file_.get(), &offset, left);
        require(sent > 0, "not sent");
        left -= static_cast<std::size_t>(sent);
      }
    }
  }

  OpenFile file_;
  std::vector<Place> places_;
  detail::FileDescriptor listener_;
  unsigned short port_ = 0;
  std::jthread thread_;
};

template <typename PathOf>
double getFrames(unsigned short port, unsigned int count, PathOf pathOf) {
  Client client(port);
  const WallTimer timer;
  for (unsigned int i = 0; i < count; ++i) client.get(pathOf(i));
  return timer.seconds();
}

Row servingRow() {
  constexpr double kShareOfTheRate = 0.7;
  const std::string path = cameraRecording(Container::Img);
  const unsigned int count = cameraFrames();
  const auto viewer = std::make_shared<RunningViewer>(path);
  return {.limitName = "sendfile by a bare server",
          .limit =
              [=] {
                const BareServer server(path);
                return getFrames(server.port(), count, [](unsigned int) { return "/"; });
              },
          .ours =
              [=] {
                return getFrames(viewer->port(), count, [&](unsigned int i) {
                  return viewer->path("0/frames/" + std::to_string(i) + ".jpg");
                });
              },
          .reach = 1 / kShareOfTheRate,
          .reachExtra = {},
          .operations = count};
}

// What the first look at a long drive needs.
double memoryOfViewer(const std::string& path) {
  const RunningViewer viewer(path);
  Client client(viewer.port());
  double most = 0;
  for (const char* what :
       {"recordings", "0/columns", "0/columns?names=sensor_time_us,size",
        "0/small?frames=0,1,2,3&height=72", "0/table?range=0:1000", "0/frames/1000.jpg"}) {
    client.get(viewer.path(what));
    most = std::max(most, viewer.anonymousBytes());
  }
  return most;
}

Row memoryRow() {
  constexpr double kMost = 60e6;
  constexpr unsigned int kFrameSize = 310'000;  // 65,535 of them are 20 GB
  const std::string path = Workspace::path("viewed.img");
  const std::string write = VELMAR_BENCH_MEMORY_PROBE " write '" + path + "' " +
                            std::to_string(frameCount(kRtvFramesMax)) + " " +
                            std::to_string(kFrameSize) + " >/dev/null";
  require(std::system(write.c_str()) == 0, path + ": not written");
  return {.limitName = "60 MB",
          .limit = [=] { return kMost; },
          .ours = [=] { return memoryOfViewer(path); },
          .reach = 1,
          .reachExtra = {},
          .unit = Unit::Bytes};
}

// Seconds, as the probe prints them.
double probe(const std::string& task) {
  return printedBy("node '" VELMAR_BENCH_BROWSER_PROBE "' " + task);
}

std::string onPage(const std::string& task, const std::string& path) {
  return task + " '" VELMAR_TOOL "' '" + path + "' ";
}

Row firstPictureRow() {
  const std::string path =
      recording(Container::Img, Frames::small(), "small", frameCount(kRtvFramesMax));
  return {.limitName = "1.2 of Chromium opening an empty page, and 150 ms",
          .limit = [] { return 1.2 * probe("empty") + 0.15; },
          .ours = [=] { return probe(onPage("first-picture", path)); },
          .reach = 1,
          .reachExtra = {}};
}

Row playingRow() {
  constexpr unsigned int kRate = 30;
  const unsigned int seconds = std::max(4U, frameCount(20));
  const std::string path =
      recording(Container::Img, Frames::camera(), "played", (seconds + 5) * kRate);
  return {.limitName = "the time until the next frame",
          .limit = [] { return 1.0 / kRate; },
          .ours = [=] { return probe(onPage("playing", path) + std::to_string(seconds)); },
          .reach = 1,
          .reachExtra = {}};
}

}  // namespace

void addViewerRows() {
  addRow("viewer: stored frames over one connection", servingRow, kRepetitions);
  addRow("viewer: memory for an img of 20 GB", memoryRow, kRepetitions);
  addRow("viewer: to the first picture of 65,535 frames", firstPictureRow, kRepetitions);
  addRow("viewer: how late a frame is at most, 20 s of 1280 x 800", playingRow, kRepetitions);
}
