#ifndef VELMAR_VIEWER_ANSWER_H
#define VELMAR_VIEWER_ANSWER_H

#include <cstddef>
#include <memory>
#include <string>

namespace velmar::viewer {

/// What the server answers a request. The bytes stay where they are until they are sent.
struct Answer {
  /// Of bytes that are kept elsewhere.
  Answer(std::string contentType, std::shared_ptr<const void> owner, const char* bytes,
         std::size_t length);
  /// Of text that is kept by the answer.
  Answer(std::string contentType, std::string text);
  /// What is wrong, as JSON.
  static Answer problem(int status, const std::string& words);

  int status = 200;
  std::string type;
  std::shared_ptr<const void> keeper;
  const char* data = nullptr;
  std::size_t size = 0;
  std::string etag = {};      ///< if it is the same each time
  std::string fileName = {};  ///< if it is to be saved
};

}  // namespace velmar::viewer

#endif
