#ifndef VELMAR_COMMON_JPEG_DECODER_H
#define VELMAR_COMMON_JPEG_DECODER_H

#include <cstddef>
#include <memory>

#include "common/ImageGeometry.h"
#include "common/JpegHeader.h"
#include "common/TjHandle.h"
#include "velmar_video/VelmarVideoErrMsg.h"

/// Decodes JPEG frames with a handle and a scratch image that are kept between frames.
class JpegDecoder {
 public:
  JpegDecoder();

  /// Decodes to exactly geometry.size() bytes at `out`, straight into it unless rows are cut.
  /// \param geometry     valid, width and height not 0
  /// \param pixelFormat  a TJPF_... value with geometry.bytesPerPixel bytes a pixel
  /// Errors: VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E, with the cause in tjGetErrorStr() unless the
  /// frame is far too short for the size that it claims; the handle is replaced after a fault, so
  /// that a bad frame leaves no trace on the next.
  /// VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E: no memory for the scratch image.
  VELMAR_ERROR_CODE_E decode(const unsigned char* jpeg, unsigned long jpegSize,
                             const ImageGeometry& geometry, int pixelFormat, unsigned char* out);

 private:
  bool decompress(const unsigned char* jpeg, unsigned long jpegSize, const ImageGeometry& geometry,
                  int pixelFormat, unsigned char* out);
  /// 0 x 0 for what cannot be decoded.
  JpegSize readSize(const unsigned char* jpeg, unsigned long jpegSize);
  unsigned char* scratch(std::size_t size);

  TjHandle tjHandle_;
  std::unique_ptr<unsigned char[]> scratch_;
  std::size_t scratchCapacity_ = 0;
};

#endif
