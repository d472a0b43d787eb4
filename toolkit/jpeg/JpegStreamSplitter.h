#ifndef VELMAR_TOOLKIT_JPEG_STREAM_SPLITTER_H
#define VELMAR_TOOLKIT_JPEG_STREAM_SPLITTER_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace velmar::toolkit {

/// Cuts a stream of JPEGs, which comes in pieces of any size, into its frames.
///
/// It follows each JPEG from marker to marker, so that a thumbnail inside one is no frame of its
/// own. Bytes that fit into no frame are skipped up to the next start of an image.
class JpegStreamSplitter {
 public:
  /// \param maxFrameSize  what grows beyond is no frame
  explicit JpegStreamSplitter(std::size_t maxFrameSize) : maxFrameSize_(maxFrameSize) {}

  void feed(std::string_view piece);
  /// The next whole frame; nothing until more is fed.
  std::optional<std::string> next();
  /// Where in the stream the last frame that next() gave begins.
  std::uint64_t frameOffset() const { return frameOffset_; }

  /// Whether the stream so far ends inside a frame, once next() gave nothing.
  bool isInsideFrame() const { return state_ != State::Between; }
  /// Bytes that belong to no frame so far, apart from 0x00 and 0xFF, which may pad frames.
  std::uint64_t skippedBytes() const { return skippedBytes_; }

 private:
  enum class State { Between, Marker, Scan };
  enum class Step { Go, Wait, Frame };

  Step findStart();
  Step readMarker();
  Step readSegment(unsigned char marker);
  Step readScan();
  void findMarkers();
  void startFrame();
  Step abandon(std::size_t resumeAt);

  std::size_t size() const { return buffer_.size(); }
  unsigned char byte(std::size_t at) const { return static_cast<unsigned char>(buffer_[at]); }

  std::size_t maxFrameSize_;
  std::string buffer_;
  State state_ = State::Between;
  std::size_t start_ = 0;        // of the frame, or of what is not looked at yet
  std::size_t position_ = 0;     // all before is understood; may lie behind the buffer's end
  std::size_t lastSegment_ = 0;  // where the segment before position_ starts
  std::size_t segmentsEnd_ = 0;  // what follows up to position_ is no segment
  // Where in the stream coded data would end, found once for all frames that may lead there.
  std::deque<std::uint64_t> markers_;
  std::uint64_t searched_ = 0;  // the stream up to there
  bool hasScan_ = false;
  std::uint64_t skippedBytes_ = 0;
  std::uint64_t forgottenBytes_ = 0;  // of the stream, before the buffer
  std::uint64_t frameOffset_ = 0;
};

}  // namespace velmar::toolkit

#endif
