#include "toolkit/pictures/FilmStrip.h"

#include <algorithm>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

namespace {

// The smallest scale at which pictures are as high.
PixelForm formFor(SharedRecording& recording, unsigned int height) {
  PixelForm form;
  for (const SCALE_FACTOR_E scale :
       {SCALE_FACTOR_1_8_E, SCALE_FACTOR_1_4_E, SCALE_FACTOR_1_2_E, SCALE_FACTOR_1_1_E}) {
    form.scale = scale;
    if (recording.geometry(form).rows() >= height) break;
  }
  return form;
}

}  // namespace

Picture drawFilmStrip(SharedRecording& recording, const std::vector<unsigned int>& frames,
                      unsigned int height) {
  constexpr std::size_t kMostSide = 65500;
  constexpr std::size_t kMostBytes = std::size_t{128} << 20;
  const PixelForm form = formFor(recording, height);
  const auto geometry = recording.geometry(form);
  const std::size_t rowSize = geometry.pitch();
  const std::size_t width = frames.size() * geometry.width;
  if (frames.empty() || width > kMostSide || frames.size() * geometry.size() > kMostBytes) {
    throw Failure(recording.recording().path(), "there is no strip of so many pictures",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  Picture strip{static_cast<unsigned short>(width), static_cast<unsigned short>(geometry.rows()),
                false, std::vector<std::uint8_t>(frames.size() * geometry.size())};
  std::vector<std::uint8_t> pixels(geometry.size());
  for (std::size_t i = 0; i < frames.size(); ++i) {
    if (recording.decode(frames[i], form, pixels.data())) continue;  // stays dark
    for (std::size_t row = 0; row < geometry.rows(); ++row) {
      std::copy_n(pixels.data() + row * rowSize, rowSize,
                  strip.pixels.data() + (row * frames.size() + i) * rowSize);
    }
  }
  return strip;
}

}  // namespace velmar::toolkit
