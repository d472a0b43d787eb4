#include "server/ClientStream.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace velmar::viewer {

namespace {

using std::chrono::milliseconds;

constexpr std::size_t kRequestMax = 32768;
constexpr milliseconds kRequestTime{5000};
constexpr milliseconds kSendTime{10000};

bool isReady(int socket, short event, milliseconds longest) {
  pollfd wanted{socket, event, 0};
  const auto time = static_cast<int>(std::max<milliseconds::rep>(0, longest.count()));
  return ::poll(&wanted, 1, time) == 1 && (wanted.revents & event) != 0;
}

}  // namespace

bool ClientStream::waitForRequest(milliseconds longest) {
  if (hasFailed_ || (buffered() == 0 && !isReady(socket_, POLLIN, longest))) return false;
  requestBytes_ = 0;
  deadline_ = Clock::now() + kRequestTime;
  return true;
}

bool ClientStream::is_readable() const { return buffered() > 0 || isReady(socket_, POLLIN, {}); }

// Writing waits until it can.
bool ClientStream::is_writable() const { return !hasFailed_; }

ssize_t ClientStream::read(char* bytes, std::size_t size) {
  if (hasFailed_ || (buffered() == 0 && !fill())) return fail();
  const std::size_t count = std::min(size, buffered());
  requestBytes_ += count;
  if (requestBytes_ > kRequestMax) return fail();
  std::memcpy(bytes, buffer_.data() + next_, count);
  next_ += count;
  return static_cast<ssize_t>(count);
}

bool ClientStream::fill() {
  const auto left = std::chrono::duration_cast<milliseconds>(deadline_ - Clock::now());
  if (left.count() <= 0) return false;
  const auto receive = [this] {
    return ::recv(socket_, buffer_.data(), buffer_.size(), MSG_DONTWAIT);
  };
  ssize_t count = receive();
  if (count < 0 && errno == EAGAIN && isReady(socket_, POLLIN, left)) count = receive();
  next_ = 0;
  end_ = count > 0 ? static_cast<std::size_t>(count) : 0;
  return end_ > 0;
}

ssize_t ClientStream::write(const char* bytes, std::size_t size) {
  if (hasFailed_) return fail();
  const auto send = [&] { return ::send(socket_, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT); };
  ssize_t count = send();
  if (count < 0 && errno == EAGAIN && isReady(socket_, POLLOUT, kSendTime)) count = send();
  return count < 0 ? fail() : count;
}

// cpp-httplib goes on with the next request after some failures.
ssize_t ClientStream::fail() {
  hasFailed_ = true;
  return -1;
}

// Nobody asks.
void ClientStream::get_remote_ip_and_port(std::string& /*ip*/, int& /*port*/) const {}
void ClientStream::get_local_ip_and_port(std::string& /*ip*/, int& /*port*/) const {}

}  // namespace velmar::viewer
