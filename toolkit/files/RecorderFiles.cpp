#include "toolkit/files/RecorderFiles.h"

#include "base/PublishFile.h"
#include "container/img/FrameIndexJournal.h"

namespace velmar::toolkit {

std::string temporaryPath(const std::string& path) {
  return isTemporaryPath(path) ? path : path + detail::kTemporaryEnding;
}

std::string finalPath(const std::string& path) {
  const std::size_t ending =
      isTemporaryPath(path) ? std::string(detail::kTemporaryEnding).size() : 0;
  return path.substr(0, path.size() - ending);
}

bool isTemporaryPath(const std::string& path) { return path.ends_with(detail::kTemporaryEnding); }

std::string journalPath(const std::string& temporary) { return temporary + detail::kJournalEnding; }

}  // namespace velmar::toolkit
