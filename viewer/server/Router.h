#ifndef VELMAR_VIEWER_ROUTER_H
#define VELMAR_VIEWER_ROUTER_H

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "server/Answer.h"
#include "server/RecordingShelf.h"

namespace velmar::viewer {

/// What a request asks for, behind the token.
struct Request {
  std::string path;  ///< "0/frames/12.jpg"
  /// A parameter of the address; empty if it is not there.
  std::function<std::string(const std::string& name)> parameter;
};

/// Answers requests. Nothing in them leads to a file: recordings are meant by their numbers.
class Router {
 public:
  /// \param tiles  address of the tiles of a map; empty if there are none
  Router(RecordingShelf& shelf, std::string tiles);

  /// Never throws for what a request asks.
  Answer answer(const Request& request) const;

 private:
  Answer answerOrThrow(const Request& request) const;
  Answer ofRecording(std::size_t number, const std::vector<std::string>& parts,
                     const Request& request) const;

  RecordingShelf& shelf_;
  const std::string tiles_;
  /// Of work that takes as long as the recording is: one at a time.
  mutable std::mutex longWork_;
};

}  // namespace velmar::viewer

#endif
