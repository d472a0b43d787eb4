#include "server/BoundedServer.h"

#include <sys/socket.h>

#include "base/FileDescriptor.h"
#include "server/ClientStream.h"

namespace velmar::viewer {

namespace {

constexpr std::chrono::milliseconds kIdleTime{1000};

}  // namespace

BoundedServer::BoundedServer() {
  set_error_handler([](const httplib::Request&, httplib::Response& response) {
    constexpr int kBadRequest = 400;
    constexpr int kUriTooLong = 414;
    const bool isMalformed = response.status == kBadRequest || response.status == kUriTooLong;
    if (isMalformed) response.set_header("Connection", "close");
  });
}

void BoundedServer::closeClients() {
  const std::lock_guard lock(mutex_);
  isClosing_ = true;
  for (const int socket : clients_) ::shutdown(socket, SHUT_RDWR);
}

bool BoundedServer::process_and_close_socket(socket_t socket) {
  const detail::FileDescriptor descriptor(socket);
  if (!admit(socket)) return false;
  ClientStream stream(socket);
  bool isClosed = false;
  // Where the request behind one that is malformed begins nobody knows.
  bool isWellFormed = true;
  const auto setUp = [&isWellFormed](httplib::Request& request) {
    isWellFormed = true;
    request.ranges.clear();  // cpp-httplib does not compare them with what there is
  };
  while (isWellFormed && !isClosed && stream.waitForRequest(kIdleTime)) {
    isWellFormed = false;
    if (!process_request(stream, false, isClosed, setUp)) break;
  }
  dismiss(socket);
  return true;
}

bool BoundedServer::admit(int socket) {
  const std::lock_guard lock(mutex_);
  if (!isClosing_) clients_.insert(socket);
  return !isClosing_;
}

void BoundedServer::dismiss(int socket) {
  const std::lock_guard lock(mutex_);
  clients_.erase(socket);
}

}  // namespace velmar::viewer
