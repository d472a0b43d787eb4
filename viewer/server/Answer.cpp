#include "server/Answer.h"

#include <utility>

#include "toolkit/text/JsonText.h"

namespace velmar::viewer {

Answer::Answer(std::string contentType, std::shared_ptr<const void> owner, const char* bytes,
               std::size_t length)
    : type(std::move(contentType)), keeper(std::move(owner)), data(bytes), size(length) {}

Answer::Answer(std::string contentType, std::string text) : type(std::move(contentType)) {
  const auto kept = std::make_shared<const std::string>(std::move(text));
  keeper = kept;
  data = kept->data();
  size = kept->size();
}

Answer Answer::problem(int status, const std::string& words) {
  Answer answer("application/json", "{\"problem\":" + toolkit::toJsonText(words) + "}");
  answer.status = status;
  return answer;
}

}  // namespace velmar::viewer
