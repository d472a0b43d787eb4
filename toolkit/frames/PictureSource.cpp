#include "toolkit/frames/PictureSource.h"

#include <algorithm>

#include "toolkit/jpeg/FrameInput.h"

namespace velmar::toolkit {

const char* PictureForm::extension() const {
  if (kind == Kind::Stored || kind == Kind::Jpeg) return "jpg";
  if (kind == Kind::Png) return "png";
  return format == VELMAR_FORMAT_GRAY_E ? "pgm" : "ppm";
}

PictureSource::PictureSource(const std::string& path, const PictureForm& form)
    : form_(form), recording_(path, Accept::Running) {
  if (!form.decodes()) return;
  const detail::ImageGeometry& geometry = pixels_.emplace(recording_, form).geometry();
  picture_.width = static_cast<unsigned short>(geometry.width);
  picture_.height = static_cast<unsigned short>(geometry.rows());
  picture_.gray = form.format == VELMAR_FORMAT_GRAY_E;
  picture_.pixels.resize(geometry.size());
}

FrameFlaw PictureSource::read(unsigned int index, std::string& bytes) {
  if (!pixels_) return readStoredFrame(recording_, index, bytes);
  if (FrameFlaw flaw = pixels_->read(index, picture_.pixels.data())) return flaw;
  bytes = form_.kind == PictureForm::Kind::Png    ? encodePng(picture_, form_.compression)
          : form_.kind == PictureForm::Kind::Jpeg ? encodeJpeg(picture_, form_.quality)
                                                  : encodePnm(picture_);
  return {};
}

std::uint64_t PictureSource::memory() const {
  return pixels_ ? pixels_->memory()
                 : 3 * std::min<std::uint64_t>(recording_.file().size(), kMaxFrameSize);
}

void PictureSource::limitMemory(std::uint64_t bytes) {
  if (pixels_) pixels_->limitMemory(bytes);
}

}  // namespace velmar::toolkit
