#include "toolkit/jpeg/JpegInspector.h"

#include <algorithm>
#include <vector>

#include "toolkit/base/Failure.h"
#include "toolkit/files/FileBytes.h"
#include "toolkit/files/InputFile.h"
#include "toolkit/jpeg/DecodingLimits.h"
#include "toolkit/jpeg/FrameInput.h"
#include "toolkit/jpeg/JpegStreamSplitter.h"

namespace velmar::toolkit {

namespace {

const unsigned char* bytesOf(const std::string& jpeg) {
  return reinterpret_cast<const unsigned char*>(jpeg.data());
}

}  // namespace

std::optional<detail::JpegSize> JpegInspector::size(const std::string& jpeg) const {
  const char* cause = nullptr;
  return detail::readAnyJpegSize(handle_.get(), bytesOf(jpeg), jpeg.size(), cause);
}

detail::JpegSize JpegInspector::sizeOfFile(const std::string& path) const {
  // The header nearly always lies in the first bytes, unless large thumbnails precede it.
  for (const std::size_t limit : {std::size_t{1} << 17, kMaxFrameSize}) {
    const std::string start = readFile(path, limit);
    if (const auto found = size(start)) return *found;
    if (start.size() < limit) break;
  }
  throw Failure(path, "it is not a JPEG picture", VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
}

JpegInspector::DecodingProblem JpegInspector::decodingProblem(const std::string& jpeg) {
  constexpr tjscalingfactor kSmall{1, 8};
  // By itself: a decoder keeps tables for the next frame.
  const detail::TjHandle handle(tjInitDecompress());
  const char* cause = nullptr;
  const auto picture = detail::readAnyJpegSize(handle.get(), bytesOf(jpeg), jpeg.size(), cause);
  if (!picture) return {cause, true};
  if (const char* words = decodingRefusal(jpeg, *picture, memoryFor(jpeg.size())))
    return {words, true};
  const int width = TJSCALED(picture->width, kSmall);
  const int height = TJSCALED(picture->height, kSmall);
  std::vector<unsigned char> pixels(static_cast<std::size_t>(width) *
                                    static_cast<std::size_t>(height));
  if (tjDecompress2(handle.get(), bytesOf(jpeg), jpeg.size(), pixels.data(), width, width, height,
                    TJPF_GRAY, TJFLAG_LIMITSCANS) == 0) {
    return {};
  }
  return {tjGetErrorStr2(handle.get()), tjGetErrorCode(handle.get()) == TJERR_FATAL};
}

std::string toText(detail::JpegSize size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string differenceText(detail::JpegSize size, detail::JpegSize first) {
  return "the picture is " + toText(size) + ", but the first one is " + toText(first);
}

bool beginsAsJpeg(std::string_view bytes) { return bytes.starts_with("\xFF\xD8"); }

bool endsAsJpeg(std::string_view bytes) {
  using namespace std::string_view_literals;
  const auto last = bytes.find_last_not_of("\0\xFF"sv);
  return last != bytes.npos && bytes.substr(0, last + 1).ends_with("\xFF\xD9");
}

bool isWholeJpeg(const std::string& jpeg) {
  if (endsAsJpeg(jpeg)) return true;
  JpegStreamSplitter splitter(jpeg.size());
  splitter.feed(jpeg);
  return splitter.next() && splitter.frameOffset() == 0;
}

bool isWholeJpegFile(const std::string& path) {
  constexpr std::uint64_t kEnd = 256;
  const FileBytes file(path);
  const std::uint64_t size = std::min(file.size(), kEnd);
  return endsAsJpeg(file.read(file.size() - size, size)) ||
         isWholeJpeg(file.read(0, kMaxFrameSize));
}

}  // namespace velmar::toolkit
