/// Colours of videos as JPEGs have them.
#ifndef VELMAR_TOOLKIT_YCC_CONVERSION_H
#define VELMAR_TOOLKIT_YCC_CONVERSION_H

#include <cstdint>
#include <vector>

namespace velmar::toolkit {

/// What the numbers of a picture in Y'CbCr mean.
struct YccMeaning {
  double red = 0.299;  ///< its share in Y'
  double blue = 0.114;
  bool fullRange = true;  ///< 0 to 255, not 16 to 235 and 16 to 240
};

/// From some meaning to that of JPEG (BT.601 coefficients, full range), 8 bits each. The chroma is
/// not resampled: neither Cb nor Cr of one depends on Y' of the other.
class YccConversion {
 public:
  explicit YccConversion(const YccMeaning& from);

  void chroma(const std::uint8_t* cb, const std::uint8_t* cr, int count, std::uint8_t* newCb,
              std::uint8_t* newCr) const;
  /// The row of chroma that the next rows of luma belong to, each of its samples to `1 << shift`
  /// pixels; none for a grey picture.
  void setChroma(const std::uint8_t* cb, const std::uint8_t* cr, int shift, int width);
  void luma(const std::uint8_t* y, int width, std::uint8_t* newY) const;

 private:
  // Fixed point.
  int luma_;
  int lumaOfCb_;
  int lumaOfCr_;
  int cbOfCb_;
  int cbOfCr_;
  int crOfCb_;
  int crOfCr_;
  int lumaZero_;
  std::vector<int> added_;  ///< to each pixel's luma, for its chroma
};

}  // namespace velmar::toolkit

#endif
