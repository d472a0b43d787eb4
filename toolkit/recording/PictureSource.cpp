#include "toolkit/recording/PictureSource.h"

#include <algorithm>

#include "jpeg/PictureFormat.h"
#include "toolkit/base/Failure.h"
#include "toolkit/jpeg/DecodingLimits.h"
#include "toolkit/jpeg/FrameInput.h"

namespace velmar::toolkit {

namespace {

int pixelFormatOf(const PictureForm& form) {
  return detail::tjpfTable[static_cast<std::size_t>(form.format - VELMAR_FORMAT_RGB_E)];
}

}  // namespace

const char* PictureForm::extension() const {
  if (kind == Kind::Stored) return "jpg";
  if (kind == Kind::Png) return "png";
  return format == VELMAR_FORMAT_GRAY_E ? "pgm" : "ppm";
}

PictureSource::PictureSource(const std::string& path, const PictureForm& form)
    : form_(form), recording_(path) {
  if (form.decodes()) preparePicture();
}

FrameFlaw PictureSource::read(unsigned int index, std::string& bytes) {
  if (!form_.decodes()) return readStoredFrame(recording_, index, bytes);
  if (FrameFlaw flaw = readFrameBytes(recording_, index, jpeg_)) return flaw;
  const auto size = inspector_.size(jpeg_);
  if (!size) return FrameFlaw(VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
  if (const char* words = refusal(*size)) {
    FrameFlaw flaw(VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
    flaw.words += std::string(": ") + words;
    return flaw;
  }
  // A frame that is smaller than the recording says must not show the one before.
  picture_.pixels.assign(geometry_->size(), 0);
  const VELMAR_ERROR_CODE_E code =
      decoder_.decode(reinterpret_cast<const unsigned char*>(jpeg_.data()), jpeg_.size(),
                      *geometry_, pixelFormatOf(form_), picture_.pixels.data());
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) return FrameFlaw(code);
  bytes = form_.kind == PictureForm::Kind::Png ? encodePng(picture_) : encodePnm(picture_);
  return {};
}

std::uint64_t PictureSource::memory() const {
  const std::uint64_t frame = 3 * std::min<std::uint64_t>(recording_.file().size(), kMaxFrameSize);
  if (!geometry_) return frame;
  const std::uint64_t pixels = std::uint64_t{geometry_->sourceWidth} * geometry_->sourceHeight;
  return frame + pictureMemory() + kKeptBytesPerPixel * pixels;
}

std::uint64_t PictureSource::pictureMemory() const {
  // The pixels, the file that is made of them, and all rows if some are cut.
  return 3 * (geometry_->fullHeight * geometry_->pitch());
}

const char* PictureSource::refusal(detail::JpegSize size) const {
  if (!canHoldPixels(jpeg_, std::uint64_t{geometry_->width} * geometry_->fullHeight)) {
    return "far too short for the size of the recording";
  }
  const std::uint64_t memory = std::min(memoryLimit_, memoryFor(jpeg_.size()));
  return decodingRefusal(jpeg_, size, memory - std::min(memory, pictureMemory()));
}

void PictureSource::preparePicture() {
  const RecordingDescription description = recording_.description();
  geometry_.emplace(description.width, description.height,
                    detail::tjSalingFactor[static_cast<std::size_t>(form_.scale)], form_.cropTop,
                    form_.cropBottom, tjPixelSize[pixelFormatOf(form_)]);
  if (!geometry_->isValid() || geometry_->size() == 0) {
    const bool cuts = form_.cropTop > 0 || form_.cropBottom > 0;
    throw Failure(recording_.path(),
                  cuts ? "cutting the rows leaves nothing of its pictures"
                       : "its header's width and height make no picture",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  if (pictureMemory() > memoryFor(recording_.file().size())) {
    throw Failure(recording_.path(),
                  "its header claims pictures of " + toText(description.size()) +
                      " pixels, which take too much memory for its size",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  picture_.width = static_cast<unsigned short>(geometry_->width);
  picture_.height = static_cast<unsigned short>(geometry_->rows());
  picture_.gray = form_.format == VELMAR_FORMAT_GRAY_E;
}

}  // namespace velmar::toolkit
