#ifndef VELMAR_JPEG_JPEG_DECODER_H
#define VELMAR_JPEG_JPEG_DECODER_H

#include <cstddef>
#include <memory>

#include "jpeg/ImageGeometry.h"
#include "jpeg/JpegHeader.h"
#include "jpeg/TjHandle.h"
#include "velmar_video/VelmarVideoErrMsg.h"

namespace velmar::detail {

/// Decodes JPEG frames with a handle and a scratch image that are kept between frames.
class JpegDecoder {
 public:
  /// \param flags  TJFLAG_... for TurboJPEG
  explicit JpegDecoder(int flags = 0);

  /// Decodes to exactly geometry.size() bytes at `out`, straight into it unless rows are cut. After
  /// a failure the handle is replaced, so that a refused frame does not affect the next one.
  /// \param geometry     valid, width and height not 0
  /// \param pixelFormat  a TJPF_... value with geometry.bytesPerPixel bytes a pixel
  /// \retval VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E      the frame is refused; cause() says why
  /// \retval VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E  no memory for the scratch image
  VELMAR_ERROR_CODE_E decode(const unsigned char* jpeg, unsigned long jpegSize,
                             const ImageGeometry& geometry, int pixelFormat, unsigned char* out);
  /// Why the last decode() answered VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E. Read it in the same
  /// thread, before anything else calls TurboJPEG.
  const char* cause() const { return cause_; }

 private:
  VELMAR_ERROR_CODE_E decodeFrame(const unsigned char* jpeg, unsigned long jpegSize,
                                  const ImageGeometry& geometry, int pixelFormat,
                                  unsigned char* out);
  VELMAR_ERROR_CODE_E decompress(const unsigned char* jpeg, unsigned long jpegSize,
                                 const ImageGeometry& geometry, int pixelFormat,
                                 unsigned char* out);
  /// False, with the cause, if the frame cannot or should not be decoded.
  bool readSize(const unsigned char* jpeg, unsigned long jpegSize, JpegSize& size);
  unsigned char* scratch(std::size_t size);

  int flags_;
  TjHandle tjHandle_;
  std::unique_ptr<unsigned char[]> scratch_;
  std::size_t scratchCapacity_ = 0;
  const char* cause_ = "";
};

}  // namespace velmar::detail

#endif
