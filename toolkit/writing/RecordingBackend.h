#ifndef VELMAR_TOOLKIT_RECORDING_BACKEND_H
#define VELMAR_TOOLKIT_RECORDING_BACKEND_H

#include <memory>
#include <string>

#include "toolkit/recording/FrameTag.h"
#include "toolkit/recording/FrameTimes.h"
#include "toolkit/recording/RecordingDescription.h"
#include "velmar_video/VelmarVideoErrMsg.h"

namespace velmar::toolkit {

/// The library's writer of one container. Destroying it finishes what is open.
class RecordingBackend {
 public:
  virtual ~RecordingBackend() = default;
  virtual VELMAR_ERROR_CODE_E open() = 0;
  virtual void setSize(unsigned short width, unsigned short height) = 0;
  virtual bool add(const std::string& jpeg, FrameTimes times, const FrameTag& tag) = 0;
  virtual VELMAR_ERROR_CODE_E close() = 0;
};

/// \param framesMax  frames that there will be at the most, for containers with a table of fixed
///                   size
std::unique_ptr<RecordingBackend> makeRecordingBackend(const std::string& path,
                                                       const RecordingDescription& description,
                                                       unsigned int framesMax);

}  // namespace velmar::toolkit

#endif
