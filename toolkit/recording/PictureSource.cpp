#include "toolkit/recording/PictureSource.h"

#include <algorithm>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

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
  // A frame that is smaller than the recording says must not show the one before.
  std::fill(picture_.pixels.begin(), picture_.pixels.end(), std::uint8_t{0});
  const VELMAR_ERROR_CODE_E code = recording_.reader().getImage(
      index, static_cast<unsigned int>(picture_.pixels.size()), picture_.pixels.data(),
      form_.format, form_.scale, form_.cropTop, form_.cropBottom);
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) return FrameFlaw(code);
  bytes = form_.kind == PictureForm::Kind::Png ? encodePng(picture_) : encodePnm(picture_);
  return {};
}

void PictureSource::preparePicture() {
  unsigned int size = 0;
  const VELMAR_ERROR_CODE_E code =
      recording_.reader().getImageSizeInBytes(size, form_.format, form_.scale, form_.cropTop,
                                              form_.cropBottom, &picture_.width, &picture_.height);
  if (code == VELMAR_ERROR_CODE_INVALID_PARAMETER_E || (code == 0 && size == 0)) {
    const bool cuts = form_.cropTop > 0 || form_.cropBottom > 0;
    throw Failure(recording_.path(),
                  cuts ? "cutting the rows leaves nothing of its pictures"
                       : "its header's width and height make no picture",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) throw Failure(recording_.path(), code);
  picture_.gray = form_.format == VELMAR_FORMAT_GRAY_E;
  picture_.pixels.resize(size);
}

}  // namespace velmar::toolkit
