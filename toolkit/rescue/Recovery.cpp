#include "toolkit/rescue/Recovery.h"
#include "toolkit/files/RecorderFiles.h"

#include <tuple>

#include "toolkit/base/Failure.h"
#include "toolkit/files/FileLock.h"
#include "toolkit/files/UndoFile.h"
#include "toolkit/recording/OpenFailure.h"
#include "toolkit/rescue/RecoverFrames.h"

namespace velmar::toolkit {

namespace {

// Half an edit must not get into the output.
void checkNotHalfEdited(const std::string& file, Job& job) {
  if (pathFailure(file)) return;  // there is no such edit of a temporary file
  const FileLock lock(file, FileLock::Kind::Read);
  const UndoState state = undoState(file);
  const std::string words = undoWords(file, state);
  if (state == UndoState::Pending) {
    throw Failure(file, words, VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }
  if (!words.empty()) job.note(file, words);
}

// Whether the new header has all that the old one says; what that leaves open may be filled in.
bool keeps(RecordingDescription after, RecordingDescription before, bool isRtv) {
  for (RecordingDescription* each : {&after, &before}) {
    each->startTime = isRtv ? each->startTime / kMillisecond : 0;
    if (isRtv) each->deviceId.resize(kRtvDeviceIdSize);
  }
  if (before.deviceId.find_first_not_of('\0') == std::string::npos)
    before.deviceId = after.deviceId;
  if (!hasStartPosition(before)) {
    std::tie(before.lng, before.lat, before.alt) = std::tie(after.lng, after.lat, after.alt);
  }
  const std::string nothing = RecordingDescription().cameraParams;
  if (before.cameraParams == nothing) before.cameraParams = after.cameraParams;
  if (before.extendedInfo == nothing) before.extendedInfo = after.extendedInfo;
  return after == before;
}

// What the request says, else what the file says. What neither does is lost.
RecordingDescription describe(const RecoveryRequest& request, const Leftover& leftover,
                              detail::JpegSize firstSize, Job& job) {
  RecordingDescription description = leftover.description;
  if (request.describe) request.describe(description);
  if (request.startTime) description.startTime = *request.startTime;
  const bool isDescribed = leftover.undescribed.empty();
  if (!isDescribed || request.size) description.setSize(request.size.value_or(firstSize));
  if (isDescribed && !request.changesHeader &&
      !keeps(description, leftover.description, isRtvPath(request.output))) {
    throw Failure(request.input,
                  "its header is whole, and the options would change it; --force lets them",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  if (isDescribed) return description;
  job.note(request.input, leftover.undescribed + "; the options provide the new header");
  if (isRtvPath(request.output) && !request.startTime) {
    job.lose(request.input, "the start time is not known; edit --start-time sets it");
  }
  if (description.deviceId.empty()) {
    job.lose(request.input, "the device id is not known; edit --device-id sets it");
  }
  return description;
}

}  // namespace

void checkLeftoverName(const std::string& input, const std::string& output) {
  if (!finalPath(input).ends_with(isRtvPath(output) ? ".img" : ".rtv")) return;
  throw Failure(output, "it is of another container than " + input,
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

Recovered recoverRecording(const RecoveryRequest& request, Job& job) {
  checkNotHalfEdited(request.input, job);
  const FileBytes file(request.input, Unreadable::AsZeros);
  const Leftover leftover = isRtvPath(request.output) ? findRtvLeftover(file, request.version)
                                                      : findImgLeftover(file, request.times);
  const Rescue rescue{file, leftover, request.keepDamaged};
  const auto size = firstSize(rescue);
  if (!size) {
    throw Failure(
        request.input,
        "it holds no frame of an " + std::string(isRtvPath(request.output) ? "rtv" : "img"),
        VELMAR_ERROR_CODE_ALL_IMAGES_CORRUPTED_E);
  }
  const auto description = describe(request, leftover, *size, job);
  const unsigned int kept = recoverFrames(rescue, request.output, description, job);
  if (leftover.strayBytes > 0) {
    job.lose(request.input, std::to_string(leftover.strayBytes) +
                                " bytes belong to no whole frame, perhaps the one that was "
                                "being added");
  }
  return {kept, leftover.framesCount};
}

}  // namespace velmar::toolkit
