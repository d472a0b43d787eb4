#include "toolkit/frames/StoredFrame.h"

#include "toolkit/base/Failure.h"
#include "toolkit/jpeg/JpegInspector.h"

namespace velmar::toolkit {

FrameFlaw::FrameFlaw(VELMAR_ERROR_CODE_E cause)
    : code(cause),
      words(cause == VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E
                ? "its bytes reach past the end of the file"
                : plainWords(cause)) {}

FrameFlaw FrameFlaw::ofRepetition() {
  FrameFlaw flaw(VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  flaw.words = kSharedWords;
  return flaw;
}

FrameFlaw readFrameBytes(const Recording& recording, unsigned int index, std::string& bytes) {
  const FilePlace& place = recording.places().at(index);
  FrameFlaw flaw(VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  if (!recording.file().contains(place.offset, place.size)) return flaw;
  flaw.words = recording.tryReadFrame(index, bytes);
  return flaw.words.empty() ? FrameFlaw() : flaw;
}

FrameFlaw readStoredFrame(const Recording& recording, unsigned int index, std::string& bytes) {
  FrameFlaw flaw = readFrameBytes(recording, index, bytes);
  if (flaw) return flaw;
  if (recording.codec() == VELMAR_CODEC_H264_E || beginsAsJpeg(bytes)) return {};
  flaw = FrameFlaw(VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
  flaw.words = "its bytes are no JPEG picture";
  flaw.hasBytes = true;
  return flaw;
}

FrameFlaw StoredFrames::read(unsigned int index, std::string& bytes) {
  if (shared_.repeats(recording_.places().at(index))) return FrameFlaw::ofRepetition();
  return readStoredFrame(recording_, index, bytes);
}

}  // namespace velmar::toolkit
