#ifndef VELMAR_VIEWER_BOUNDED_SERVER_H
#define VELMAR_VIEWER_BOUNDED_SERVER_H

#include <httplib.h>

#include <mutex>
#include <set>

namespace velmar::viewer {

/// A server that no client can hold up, fill or keep from ending (see ClientStream). It answers
/// with the whole where a range is asked for.
class BoundedServer final : public httplib::Server {
 public:
  BoundedServer();

  /// Before stop(): ends all connections, and those that are still to come.
  void closeClients();

 private:
  bool process_and_close_socket(socket_t socket) override;
  bool admit(int socket);
  void dismiss(int socket);

  std::mutex mutex_;
  std::set<int> clients_;
  bool isClosing_ = false;
};

}  // namespace velmar::viewer

#endif
