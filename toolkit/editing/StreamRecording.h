#ifndef VELMAR_TOOLKIT_STREAM_RECORDING_H
#define VELMAR_TOOLKIT_STREAM_RECORDING_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "toolkit/base/Losses.h"
#include "toolkit/base/Progress.h"
#include "toolkit/base/StopSignal.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/jpeg/JpegStreamSplitter.h"
#include "toolkit/recording/FrameTimes.h"
#include "toolkit/recording/RecordingWriter.h"

/// Records a stream of JPEGs on standard input, which are checked as they come: what does not fit
/// is left out and said.
class StreamRecording {
 public:
  /// \param output  for messages
  /// \param writer  of the recording, whose size comes from the first frame
  StreamRecording(const std::string& output, const FrameClock& clock, bool quiet,
                  RecordingWriter& writer, Losses& losses);

  /// Until the stream ends, a signal comes or the recording is full; then it is finished. Throws
  /// Failure.
  ExitStatus run(StopSignal& stop);

 private:
  void take(std::string_view piece);
  bool isFit(const std::string& frame, std::uint64_t number);
  bool isBeyondRtv(std::uint64_t number) const;
  void reportRest(bool ended);

  std::string output_;
  RecordingWriter& writer_;
  Losses& losses_;
  FrameClock clock_;
  Progress progress_;
  JpegStreamSplitter splitter_;
  JpegInspector inspector_;
  std::optional<JpegSize> size_;
  std::uint64_t number_ = 0;
  bool full_ = false;
};

#endif
