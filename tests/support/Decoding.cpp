#include "support/Decoding.h"

#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <vector>

namespace {

// What TurboJPEG makes of the whole picture, with the kept rows cut out of it.
std::vector<unsigned char> decodedDirectly(const std::string& jpeg, int width, int height,
                                           tjscalingfactor factor, int pixelFormat, int top,
                                           int bottom) {
  const int w = TJSCALED(width, factor);
  const int h = TJSCALED(height, factor);
  const int pitch = w * tjPixelSize[pixelFormat];
  std::vector<unsigned char> whole(static_cast<std::size_t>(pitch) * h);
  tjhandle handle = tjInitDecompress();
  EXPECT_EQ(tjDecompress2(handle, reinterpret_cast<const unsigned char*>(jpeg.data()), jpeg.size(),
                          whole.data(), w, pitch, h, pixelFormat, 0),
            0);
  tjDestroy(handle);
  return {whole.begin() + static_cast<long>(TJSCALED(top, factor)) * pitch,
          whole.end() - static_cast<long>(TJSCALED(bottom, factor)) * pitch};
}

}  // namespace

void expectExactPixels(VelmarVideoFileReader& reader, const std::string& jpeg, int width,
                       int height) {
  const tjscalingfactor factors[] = {{1, 1}, {7, 8}, {3, 4}, {5, 8}, {1, 2},
                                     {3, 8}, {1, 4}, {1, 8}, {1, 1}};
  const int pixelFormats[] = {TJPF_RGB, TJPF_BGR, TJPF_GRAY};
  const unsigned short cuts[][2] = {{0, 0}, {33, 0}, {0, 17}, {100, 51}};
  for (int scale = SCALE_FACTOR_1_1_E; scale <= SCALE_FACTOR_MAX_E; ++scale) {
    for (int format = VELMAR_FORMAT_RGB_E; format <= VELMAR_FORMAT_GRAY_E; ++format) {
      for (const auto& [top, bottom] : cuts) {
        const auto s = static_cast<SCALE_FACTOR_E>(scale);
        const auto f = static_cast<VELMAR_FORMAT_E>(format);
        const auto expected = decodedDirectly(jpeg, width, height, factors[scale],
                                              pixelFormats[format - 1], top, bottom);
        unsigned int size = 0;
        unsigned short w = 0;
        unsigned short h = 0;
        ASSERT_EQ(reader.getImageSizeInBytes(size, f, s, top, bottom, &w, &h),
                  VELMAR_ERROR_CODE_SUCCESS_E);
        ASSERT_EQ(size, expected.size());
        EXPECT_EQ(w, TJSCALED(width, factors[scale]));
        EXPECT_EQ(h * w * tjPixelSize[pixelFormats[format - 1]], static_cast<int>(size));
        std::vector<unsigned char> pixels(size);
        ASSERT_EQ(reader.getImage(0, size, pixels.data(), f, s, top, bottom),
                  VELMAR_ERROR_CODE_SUCCESS_E);
        ASSERT_TRUE(pixels == expected) << "scale " << scale << " format " << format;
      }
    }
  }
}
