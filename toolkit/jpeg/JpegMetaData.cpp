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

// Where the next segment begins, or the end of the bytes: a scan has markers of its own in it, and
// fill bytes may stand before one.
std::size_t nextMarker(const std::string& jpeg, std::size_t from) {
  for (std::size_t at = jpeg.find('\xFF', from); at < jpeg.size() - 1;
       at = jpeg.find('\xFF', at + 1)) {
    const auto marker = static_cast<unsigned char>(jpeg[at + 1]);
    const bool isRestart = marker >= 0xD0 && marker <= 0xD7;
    if (marker != 0 && marker != 0xFF && !isRestart) return at;
  }
  return jpeg.size();
}

}  // namespace

std::optional<std::string> withoutMetaData(const std::string& jpeg) {
  constexpr unsigned char kStartOfScan = 0xDA;
  constexpr unsigned char kEnd = 0xD9;
  if (!beginsAsJpeg(jpeg)) return std::nullopt;
  const auto byteAt = [&jpeg](std::size_t at) { return static_cast<unsigned char>(jpeg[at]); };
  std::string kept = jpeg.substr(0, 2);
  bool hasScan = false;
  std::size_t at = nextMarker(jpeg, 2);
  while (at < jpeg.size() && byteAt(at + 1) != kEnd) {
    // A segment: a marker of two bytes and a length that counts itself.
    const std::size_t length =
        at + 4 <= jpeg.size() ? 2 + byteAt(at + 2) * 256UL + byteAt(at + 3) : 0;
    const bool isWhole = length >= 4 && length <= jpeg.size() - at;
    if (!isWhole) break;
    const unsigned char marker = byteAt(at + 1);
    const std::size_t next = nextMarker(jpeg, at + length);
    hasScan = hasScan || marker == kStartOfScan;
    if (!isMetaData(marker)) kept.append(jpeg, at, marker == kStartOfScan ? next - at : length);
    at = next;
  }
  if (!hasScan) return std::nullopt;
  if (at < jpeg.size() && byteAt(at + 1) == kEnd) kept.append(jpeg, at, 2);
  return kept;
}

}  // namespace velmar::toolkit
