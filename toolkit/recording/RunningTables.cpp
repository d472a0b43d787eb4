#include "toolkit/recording/RunningTables.h"

#include "toolkit/base/Failure.h"
#include "toolkit/files/RecorderFiles.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/RunningImg.h"
#include "toolkit/recording/RunningRtv.h"

namespace velmar::toolkit {

RecordingDescription RunningTables::description() const {
  RecordingDescription description;
  if (places_.empty()) return description;
  std::string jpeg;
  const bool isRead = tryReadFrame(0, jpeg).empty();
  const auto size = isRead ? JpegInspector().size(jpeg) : std::nullopt;
  if (size) description.setSize(*size);
  return description;
}

unsigned int RunningTables::frameSize(unsigned int index) const {
  return static_cast<unsigned int>(placeOf(index).size);
}

const FilePlace& RunningTables::placeOf(unsigned int index) const {
  if (index < places_.size()) return places_[index];
  throw Failure(file_.path(), VELMAR_ERROR_CODE_OUT_RANGE_E);
}

std::unique_ptr<RunningTables> openRunningTables(const std::string& path) {
  std::unique_ptr<RunningTables> tables;
  if (isRtvPath(finalPath(path))) {
    tables = std::make_unique<RunningRtv>(path);
  } else {
    tables = std::make_unique<RunningImg>(path);
  }
  tables->update();
  return tables;
}

}  // namespace velmar::toolkit
