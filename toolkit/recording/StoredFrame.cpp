#include "toolkit/recording/StoredFrame.h"

#include "toolkit/base/Failure.h"
#include "toolkit/jpeg/JpegInspector.h"

namespace velmar::toolkit {

FrameFlaw::FrameFlaw(VELMAR_ERROR_CODE_E cause)
    : code(cause),
      words(cause == VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E
                ? "its bytes reach past the end of the file"
                : plainWords(cause)) {}

FrameFlaw readStoredFrame(const Recording& recording, unsigned int index, std::string& bytes) {
  bytes.clear();
  if (const auto code = recording.reader().getRawImage(index, bytes)) return FrameFlaw(code);
  VELMAR_CODEC_E codec{};
  recording.reader().getCodec(codec);  // does not fail on an open recording
  if (codec == VELMAR_CODEC_H264_E || beginsAsJpeg(bytes)) return {};
  FrameFlaw flaw(VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
  flaw.words = "its bytes are no JPEG picture";
  flaw.hasBytes = true;
  return flaw;
}

}  // namespace velmar::toolkit
