#ifndef VELMAR_VIEWER_CLIENT_STREAM_H
#define VELMAR_VIEWER_CLIENT_STREAM_H

#include <httplib.h>

#include <array>
#include <chrono>

namespace velmar::viewer {

/// A connection to a client, who may be anybody: how much a request has, how long it takes to come
/// and how long nothing of an answer is taken are limited. Where a limit is passed, the connection
/// fails.
class ClientStream final : public httplib::Stream {
 public:
  /// \param socket  stays the caller's
  explicit ClientStream(int socket) : socket_(socket) {}

  /// Whether another request begins to come before that time has passed.
  bool waitForRequest(std::chrono::milliseconds longest);

  bool is_readable() const override;
  bool is_writable() const override;
  ssize_t read(char* bytes, std::size_t size) override;
  ssize_t write(const char* bytes, std::size_t size) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  int socket() const override { return socket_; }

 private:
  using Clock = std::chrono::steady_clock;

  std::size_t buffered() const { return end_ - next_; }
  bool fill();
  ssize_t fail();

  int socket_;
  std::array<char, 4096> buffer_;
  std::size_t next_ = 0;
  std::size_t end_ = 0;
  std::size_t requestBytes_ = 0;
  Clock::time_point deadline_;  ///< of the request
  bool hasFailed_ = false;
};

}  // namespace velmar::viewer

#endif
