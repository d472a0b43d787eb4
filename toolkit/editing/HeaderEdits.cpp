#include "base/HexText.h"
#include "toolkit/base/Failure.h"
#include "toolkit/editing/EditDraft.h"
#include "toolkit/frames/StoredFrame.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/PrintableText.h"
#include "velmar_video/rtv/RtvContainerModifier.h"

namespace velmar::toolkit {

namespace {

std::string hexText(const std::string& bytes) {
  if (bytes.empty()) return "none";
  return detail::bytesToHex(reinterpret_cast<const unsigned char*>(bytes.data()),
                            static_cast<unsigned int>(bytes.size()));
}

std::string onOff(bool value) { return value ? "on" : "off"; }

// None if the id has no bytes.
void planDeviceId(const std::string& id, EditDraft& draft) {
  const std::string before = draft.recording.deviceId();
  if (id.empty() && before.empty()) return;
  std::string stored = id;
  if (draft.recording.isRtv()) {
    if (id.size() > kRtvDeviceIdSize) draft.refuse("--device-id", "an rtv holds 24 bytes");
    stored.resize(kRtvDeviceIdSize);  // or the end of the old one would stay
  }
  draft.add("device id", before.empty() ? "none" : printable(before),
            hexText(id.empty() ? id : stored), [stored](auto& modifier) {
              return modifier.modifyCameraID(reinterpret_cast<const unsigned char*>(stored.data()),
                                             static_cast<unsigned int>(stored.size()));
            });
}

void planUndistorted(bool undistorted, EditDraft& draft) {
  if (draft.recording.isRtv() && draft.description.version == RTV_VER_02) {
    draft.refuse("--undistorted", "version 02 of rtv cannot say so");
  }
  draft.add("undistorted", onOff(draft.description.undistorted), onOff(undistorted),
            [undistorted](auto& modifier) { return modifier.modifyUndistorted(undistorted); });
}

void planTaggingFlags(unsigned int flags, EditDraft& draft) {
  if (!draft.recording.isRtv()) draft.refuse("--tagging-flags", "an img holds none");
  if (draft.description.version == RTV_VER_02) {
    draft.refuse("--tagging-flags", "those of a version 02 cannot be changed");
  }
  unsigned int before = 0;
  draft.recording.parser().getTaggingFlags(before);
  draft.add("tagging flags", std::to_string(before), std::to_string(flags),
            [flags](auto& modifier) {
              dynamic_cast<RtvContainerModifier&>(modifier).setTaggingFlags(flags);
              return VELMAR_ERROR_CODE_SUCCESS_E;
            });
}

void planJson(const std::string& option, const std::string& before, const std::string& after,
              VELMAR_ERROR_CODE_E (VelmarVideoFileModifier::*modify)(const std::string&),
              EditDraft& draft) {
  if (draft.recording.isRtv()) draft.refuse(option, "an rtv holds none");
  draft.add(option.substr(2), shownJson(parseJson(before)), shownJson(parseJson(after)),
            [after, modify](auto& modifier) { return (modifier.*modify)(after); });
}

void planExtendedInfo(const EditRequest& request, EditDraft& draft) {
  const std::string& before = draft.description.extendedInfo;
  const bool clears = request.clears(Contents::ExtendedInfo) && !draft.recording.isRtv() &&
                      !parseJson(before).empty();
  if (!request.extendedInfo && !clears) return;
  planJson("--extended-info", before, request.extendedInfo.value_or("{}"),
           &VelmarVideoFileModifier::modifyExtendedInfo, draft);
}

void planResolution(EditDraft& draft) {
  const Recording& recording = draft.recording;
  if (recording.framesCount() == 0) {
    draft.refuse("--fix-resolution", "there is no frame to look at");
  }
  std::string jpeg;
  const bool isThere = !readFrameBytes(recording, 0, jpeg);
  const auto size = isThere ? JpegInspector().size(jpeg) : std::nullopt;
  if (!size) {
    throw Failure(recording.path(), "--fix-resolution: frame 0 is not a JPEG picture",
                  VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
  }
  if (*size == draft.description.size()) return;
  draft.add("resolution", toText(draft.description.size()), toText(*size),
            [](auto& modifier) { return modifier.correctVideoResolution(); });
}

}  // namespace

void planHeader(const EditRequest& request, EditDraft& draft) {
  if (request.deviceId || request.clears(Contents::DeviceId)) {
    planDeviceId(request.deviceId.value_or(""), draft);
  }
  if (request.undistorted) planUndistorted(*request.undistorted, draft);
  if (request.taggingFlags) planTaggingFlags(*request.taggingFlags, draft);
  if (request.cameraParams) {
    planJson("--camera-params", draft.description.cameraParams, *request.cameraParams,
             &VelmarVideoFileModifier::modifyCameraParams, draft);
  }
  planExtendedInfo(request, draft);
  if (request.fixResolution) planResolution(draft);
  draft.changesMetaData = !draft.recording.isRtv() && !draft.changes.empty();
}

}  // namespace velmar::toolkit
