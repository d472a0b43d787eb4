#include "toolkit/jpeg/DecodingLimits.h"

#include <string_view>

namespace velmar::toolkit {

namespace {

bool isArithmetic(const std::string& jpeg) {
  return jpeg.find("\xFF\xC9") != jpeg.npos || jpeg.find("\xFF\xCA") != jpeg.npos;
}

std::uint64_t countScans(std::string_view jpeg) {
  std::uint64_t count = 0;
  for (auto at = jpeg.find("\xFF\xDA"); at != jpeg.npos; at = jpeg.find("\xFF\xDA", at + 2)) {
    ++count;
  }
  return count;
}

}  // namespace

bool canHoldPixels(const std::string& jpeg, std::uint64_t pixels) {
  constexpr std::uint64_t kPixelsPerByte = 512;
  return pixels <= kPixelsPerByte * jpeg.size();
}

const char* decodingRefusal(const std::string& jpeg, detail::JpegSize size, std::uint64_t memory) {
  const auto pixels =
      static_cast<std::uint64_t>(size.width) * static_cast<std::uint64_t>(size.height);
  if (!canHoldPixels(jpeg, pixels)) return "far too short for its size";
  const auto* const bytes = reinterpret_cast<const unsigned char*>(jpeg.data());
  if (!detail::isKeptWhole(bytes, jpeg.size())) return nullptr;
  if (pixels * kKeptBytesPerPixel > memory) return "too much memory for its size";
  // Encoders write about ten scans. This is more than those of a picture of one colour take and,
  // with arithmetic coding, whose scans take ten times as long, than those of any other picture.
  const std::uint64_t scannedPixelsPerByte = isArithmetic(jpeg) ? 1 << 9 : 1 << 12;
  const std::uint64_t most = scannedPixelsPerByte * jpeg.size();
  return countScans(jpeg) * pixels > most ? "too many scans for its size" : nullptr;
}

}  // namespace velmar::toolkit
