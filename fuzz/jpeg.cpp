#include <algorithm>
#include <vector>

#include "support.h"
#include "toolkit/jpeg/JpegStreamSplitter.h"

using namespace velmar::toolkit;

namespace {

struct Split {
  std::vector<std::string> frames;
  bool isInsideFrame = false;
  std::uint64_t skippedBytes = 0;

  bool operator==(const Split&) const = default;
};

Split split(std::string_view stream, std::size_t pieceSize, std::size_t maxFrameSize) {
  JpegStreamSplitter splitter(maxFrameSize);
  Split result;
  for (std::size_t at = 0; at < stream.size(); at += pieceSize) {
    splitter.feed(stream.substr(at, pieceSize));
    while (auto frame = splitter.next()) result.frames.push_back(*frame);
  }
  result.isInsideFrame = splitter.isInsideFrame();
  result.skippedBytes = splitter.skippedBytes();
  return result;
}

}  // namespace

// The first byte says how the rest comes in.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view stream(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::size_t pieceSize = 1 + data[0] % 64;
  const std::size_t maxFrameSize = data[0] < 128 ? stream.size() : 200;

  const Split pieces = split(stream, pieceSize, maxFrameSize);
  std::size_t total = pieces.skippedBytes;
  for (const std::string& frame : pieces.frames) {
    require(frame.starts_with("\xFF\xD8") && frame.ends_with("\xFF\xD9"));
    require(frame.size() <= maxFrameSize);
    total += frame.size();
  }
  require(total <= stream.size());
  // Where frames are too large, it matters when that is noticed.
  require(maxFrameSize < stream.size() ||
          pieces == split(stream, std::max<std::size_t>(stream.size(), 1), maxFrameSize));
  return 0;
}
