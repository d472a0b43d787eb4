#include <utility>

#include "toolkit/base/Failure.h"
#include "toolkit/text/FileNames.h"
#include "toolkit/video/VideoWriter.h"

namespace velmar::toolkit {

VideoContainer videoContainer(const std::string& path) {
  constexpr std::pair<const char*, VideoContainer> kEndings[] = {{".mkv", VideoContainer::Mkv},
                                                                 {".mp4", VideoContainer::Mp4},
                                                                 {".mov", VideoContainer::Mov},
                                                                 {".avi", VideoContainer::Avi}};
  for (const auto& [ending, container] : kEndings) {
    if (hasExtension(path, {ending})) return container;
  }
  throw Failure(path, "its name has to end in .mkv, .mp4, .mov or .avi",
                VELMAR_ERROR_CODE_INVALID_FILE_NAME_E);
}

}  // namespace velmar::toolkit
