#ifndef VELMAR_VIEWER_VIEWER_SERVER_H
#define VELMAR_VIEWER_VIEWER_SERVER_H

#include <memory>
#include <string>
#include <vector>

namespace velmar::viewer {

struct ServerOptions {
  std::vector<std::string> recordings;  ///< paths
  std::string address = "127.0.0.1";    ///< to listen at
  int port = 0;                         ///< 0 for any that is free
  std::string tiles;                    ///< address of the tiles of a map; empty if there are none
  bool once = false;                    ///< ends when the last page has gone
};

/// Shows recordings to browsers until it is destroyed. Each request has to know a token, which is
/// drawn anew for each server, and to name the server as its host, so that no other page can ask
/// for anything.
class ViewerServer {
 public:
  ViewerServer() = default;
  ViewerServer(const ViewerServer&) = delete;
  ViewerServer& operator=(const ViewerServer&) = delete;
  virtual ~ViewerServer() = default;

  /// The address of the page.
  virtual std::string url() const = 0;
  /// Can be read when the server has ended by itself.
  virtual int endedDescriptor() const = 0;
  /// Throws Failure if it ended because it could not listen any more.
  virtual void checkListens() const = 0;
};

/// Listens. Throws Failure.
std::unique_ptr<ViewerServer> startServer(const ServerOptions& options);

}  // namespace velmar::viewer

#endif
