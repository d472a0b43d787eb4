#include "toolkit/frames/FramePixels.h"

#include <algorithm>
#include <cstring>

#include "jpeg/PictureFormat.h"
#include "toolkit/base/Failure.h"
#include "toolkit/jpeg/DecodingLimits.h"
#include "toolkit/jpeg/FrameInput.h"

namespace velmar::toolkit {

namespace {

int pixelFormatOf(const PixelForm& form) {
  return detail::tjpfTable[static_cast<std::size_t>(form.format - VELMAR_FORMAT_RGB_E)];
}

detail::ImageGeometry geometryOf(const RecordingDescription& description, const PixelForm& form) {
  return {description.width,
          description.height,
          detail::tjSalingFactor[static_cast<std::size_t>(form.scale)],
          form.cropTop,
          form.cropBottom,
          tjPixelSize[pixelFormatOf(form)]};
}

}  // namespace

FramePixels::FramePixels(const Recording& recording, const PixelForm& form)
    : recording_(recording),
      pixelFormat_(pixelFormatOf(form)),
      geometry_(geometryOf(recording.description(), form)) {
  if (!geometry_.isValid() || geometry_.size() == 0) {
    const bool cuts = form.cropTop > 0 || form.cropBottom > 0;
    throw Failure(recording.path(),
                  cuts ? "cutting the rows leaves nothing of its pictures"
                       : "its header's width and height make no picture",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  if (pictureMemory() > memoryFor(recording.file().size())) {
    throw Failure(recording.path(),
                  "its header claims pictures of " + toText(recording.description().size()) +
                      " pixels, which take too much memory for its size",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
}

FrameFlaw FramePixels::read(unsigned int index, std::uint8_t* pixels) {
  if (FrameFlaw flaw = readFrameBytes(recording_, index, jpeg_)) return flaw;
  const auto size = inspector_.size(jpeg_);
  if (!size) return FrameFlaw(VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
  if (const char* words = refusal(*size)) {
    FrameFlaw flaw(VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
    flaw.words += std::string(": ") + words;
    return flaw;
  }
  // A frame that is smaller than the recording says must not show what was there before.
  const bool fills = size->width == geometry_.sourceWidth && size->height == geometry_.sourceHeight;
  if (!fills) std::memset(pixels, 0, geometry_.size());
  const VELMAR_ERROR_CODE_E code =
      decoder_.decode(reinterpret_cast<const unsigned char*>(jpeg_.data()), jpeg_.size(), geometry_,
                      pixelFormat_, pixels);
  return code == VELMAR_ERROR_CODE_SUCCESS_E ? FrameFlaw() : FrameFlaw(code);
}

std::uint64_t FramePixels::memory() const {
  const std::uint64_t frame = 3 * std::min<std::uint64_t>(recording_.file().size(), kMaxFrameSize);
  const std::uint64_t pixels = std::uint64_t{geometry_.sourceWidth} * geometry_.sourceHeight;
  return frame + pictureMemory() + kKeptBytesPerPixel * pixels;
}

// The pixels, a file that is made of them, and all rows if some are cut.
std::uint64_t FramePixels::pictureMemory() const {
  return 3 * (geometry_.fullHeight * geometry_.pitch());
}

// Why a JPEG of that size is not to be decoded; null if it may be.
const char* FramePixels::refusal(detail::JpegSize size) const {
  if (!canHoldPixels(jpeg_, std::uint64_t{geometry_.width} * geometry_.fullHeight)) {
    return "far too short for the size of the recording";
  }
  const std::uint64_t memory = std::min(memoryLimit_, memoryFor(jpeg_.size()));
  return decodingRefusal(jpeg_, size, memory - std::min(memory, pictureMemory()));
}

}  // namespace velmar::toolkit
