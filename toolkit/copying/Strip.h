#ifndef VELMAR_TOOLKIT_STRIP_H
#define VELMAR_TOOLKIT_STRIP_H

#include <string>

#include "toolkit/recording/RecordingDescription.h"
#include "toolkit/writing/RecordFrames.h"

namespace velmar::toolkit {

/// What a copy leaves out, so that the recording can be given away.
struct Strip {
  /// "positions", "ids", "exif", or several of them with commas. Throws UsageError.
  static Strip named(const std::string& names);

  void applyTo(RecordingDescription& description) const;
  /// False if the JPEG keeps its metadata, since it is too damaged to find them.
  bool applyTo(NewFrame& frame) const;

  bool positions = false;  ///< start position, places, distances and directions of the frames
  bool ids = false;        ///< device id
  bool exif = false;       ///< see withoutMetaData()
};

}  // namespace velmar::toolkit

#endif
