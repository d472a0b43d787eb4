#ifndef VELMAR_TOOLKIT_STORED_FRAME_H
#define VELMAR_TOOLKIT_STORED_FRAME_H

#include <string>

#include "toolkit/recording/FramePlaces.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Why a frame cannot be had as it should be.
struct FrameFlaw {
  FrameFlaw() = default;
  /// What the library's code means for a frame.
  explicit FrameFlaw(VELMAR_ERROR_CODE_E cause);
  /// See SharedBytes.
  static FrameFlaw ofRepetition();

  explicit operator bool() const { return code != VELMAR_ERROR_CODE_SUCCESS_E; }
  /// With the code's name.
  std::string text() const { return words + " (" + errorCode2String(code) + ")"; }

  VELMAR_ERROR_CODE_E code = VELMAR_ERROR_CODE_SUCCESS_E;
  std::string words;
  bool hasBytes = false;  ///< whether it can be had as it is stored
};

/// Reads a frame's bytes, whatever they are.
/// \return why it has none
FrameFlaw readFrameBytes(const Recording& recording, unsigned int index, std::string& bytes);

/// Reads a frame as it is stored. One of a recording whose codec is H264 may begin with anything.
/// \return what is wrong with it: it has no bytes, or they do not begin as a JPEG
FrameFlaw readStoredFrame(const Recording& recording, unsigned int index, std::string& bytes);

/// Reads frames as they are stored, each of their bytes once.
class StoredFrames {
 public:
  /// The recording must outlive it.
  explicit StoredFrames(const Recording& recording)
      : recording_(recording), shared_(recording.file()) {}

  /// See readStoredFrame().
  FrameFlaw read(unsigned int index, std::string& bytes);

 private:
  const Recording& recording_;
  SharedBytes shared_;
};

}  // namespace velmar::toolkit

#endif
