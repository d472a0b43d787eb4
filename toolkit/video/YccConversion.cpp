#include "toolkit/video/YccConversion.h"

#include <algorithm>
#include <cmath>

namespace velmar::toolkit {

namespace {

constexpr int kBits = 16;
constexpr int kHalf = 1 << (kBits - 1);
constexpr int kChromaZero = 128;

int fixed(double value) { return static_cast<int>(std::lround(value * (1 << kBits))); }

std::uint8_t rounded(int value) {
  return static_cast<std::uint8_t>(std::clamp((value + kHalf) >> kBits, 0, 255));
}

// A colour of no luma and little chroma, with the meaning of JPEG.
struct Ycc {
  double y;
  double cb;
  double cr;
};

Ycc asInJpeg(const YccMeaning& from, double cb, double cr) {
  const YccMeaning jpeg;
  const double green = 1 - from.red - from.blue;
  const double r = 2 * (1 - from.red) * cr;
  const double b = 2 * (1 - from.blue) * cb;
  const double g = -(from.red * r + from.blue * b) / green;
  const double y = jpeg.red * r + (1 - jpeg.red - jpeg.blue) * g + jpeg.blue * b;
  return {y, (b - y) / (2 * (1 - jpeg.blue)), (r - y) / (2 * (1 - jpeg.red))};
}

}  // namespace

YccConversion::YccConversion(const YccMeaning& from) {
  const double lumaScale = from.fullRange ? 1 : 255.0 / 219;
  const double chromaScale = from.fullRange ? 1 : 255.0 / 224;
  const Ycc ofCb = asInJpeg(from, chromaScale, 0);
  const Ycc ofCr = asInJpeg(from, 0, chromaScale);
  luma_ = fixed(lumaScale);
  lumaOfCb_ = fixed(ofCb.y);
  lumaOfCr_ = fixed(ofCr.y);
  cbOfCb_ = fixed(ofCb.cb);
  cbOfCr_ = fixed(ofCr.cb);
  crOfCb_ = fixed(ofCb.cr);
  crOfCr_ = fixed(ofCr.cr);
  lumaZero_ = from.fullRange ? 0 : 16;
}

void YccConversion::chroma(const std::uint8_t* cb, const std::uint8_t* cr, int count,
                           std::uint8_t* newCb, std::uint8_t* newCr) const {
  for (int i = 0; i < count; ++i) {
    const int blue = cb[i] - kChromaZero;
    const int red = cr[i] - kChromaZero;
    newCb[i] = rounded(cbOfCb_ * blue + cbOfCr_ * red + (kChromaZero << kBits));
    newCr[i] = rounded(crOfCb_ * blue + crOfCr_ * red + (kChromaZero << kBits));
  }
}

void YccConversion::setChroma(const std::uint8_t* cb, const std::uint8_t* cr, int shift,
                              int width) {
  added_.assign(static_cast<std::size_t>(width), -lumaZero_ * luma_);
  if (cb == nullptr || (lumaOfCb_ == 0 && lumaOfCr_ == 0)) return;
  for (int x = 0; x < width; ++x) {
    const int at = x >> shift;
    added_[static_cast<std::size_t>(x)] +=
        lumaOfCb_ * (cb[at] - kChromaZero) + lumaOfCr_ * (cr[at] - kChromaZero);
  }
}

void YccConversion::luma(const std::uint8_t* y, int width, std::uint8_t* newY) const {
  const int* const added = added_.data();
  for (int x = 0; x < width; ++x) newY[x] = rounded(luma_ * y[x] + added[x]);
}

}  // namespace velmar::toolkit
