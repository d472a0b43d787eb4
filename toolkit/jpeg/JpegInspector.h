#ifndef VELMAR_TOOLKIT_JPEG_INSPECTOR_H
#define VELMAR_TOOLKIT_JPEG_INSPECTOR_H

#include <optional>
#include <string>
#include <string_view>

#include "jpeg/JpegHeader.h"
#include "jpeg/TjHandle.h"

namespace velmar::toolkit {

/// Reads the sizes of JPEGs from their headers. Use it from one thread at a time.
class JpegInspector {
 public:
  JpegInspector() : handle_(tjInitDecompress()) {}

  /// Nothing if the bytes hold no JPEG header.
  std::optional<detail::JpegSize> size(const std::string& jpeg) const;
  /// The same from no more of the file than it takes. Throws Failure if the file cannot be read or
  /// holds no JPEG header.
  detail::JpegSize sizeOfFile(const std::string& path) const;

  struct DecodingProblem {
    std::string text;  ///< the decoder's words; empty if there is none
    bool isFatal = false;
  };
  /// Decodes the picture, at a small size, which takes all of its data.
  static DecodingProblem decodingProblem(const std::string& jpeg);

 private:
  detail::TjHandle handle_;
};

/// The marker that a JPEG begins with.
bool beginsAsJpeg(std::string_view bytes);

/// The marker that a JPEG ends with; bytes 0x00 and 0xFF may follow, which
/// some cameras fill frames up with.
bool endsAsJpeg(std::string_view bytes);

/// Whether the JPEG has its end marker, whatever follows that.
bool isWholeJpeg(const std::string& jpeg);
/// The same of a file. Throws Failure if it cannot be read.
bool isWholeJpegFile(const std::string& path);

/// "1280x800"
std::string toText(detail::JpegSize size);

/// What is wrong with a picture of another size than the recording's first.
std::string differenceText(detail::JpegSize size, detail::JpegSize first);

}  // namespace velmar::toolkit

#endif
