#include "toolkit/jpeg/JpegMetaData.h"

#include "toolkit/jpeg/JpegInspector.h"

namespace velmar::toolkit {

namespace {

bool isMetaData(unsigned int marker) {
  constexpr unsigned int kExifAndXmp = 0xE1;
  constexpr unsigned int kIptc = 0xED;
  constexpr unsigned int kComment = 0xFE;
  return marker == kExifAndXmp || marker == kIptc || marker == kComment;
}

}  // namespace

std::string withoutMetaData(const std::string& jpeg) {
  constexpr unsigned int kStartOfScan = 0xDA;
  if (!beginsAsJpeg(jpeg)) return jpeg;
  const auto byteAt = [&jpeg](std::size_t at) { return static_cast<unsigned char>(jpeg[at]); };
  std::string kept = jpeg.substr(0, 2);
  std::size_t at = 2;
  // Segments: a marker of two bytes, perhaps fill bytes before it, a length that counts itself.
  while (at + 4 <= jpeg.size() && byteAt(at) == 0xFF) {
    const unsigned int marker = byteAt(at + 1);
    if (marker == 0xFF) {
      kept += jpeg[at++];
      continue;
    }
    const std::size_t length = 2 + byteAt(at + 2) * 256UL + byteAt(at + 3);
    if (marker == kStartOfScan || length < 4 || length > jpeg.size() - at) break;
    if (!isMetaData(marker)) kept.append(jpeg, at, length);
    at += length;
  }
  return kept.append(jpeg, at);
}

}  // namespace velmar::toolkit
