#ifndef VELMAR_RTV_RTV_CONTAINER_CREATER_H
#define VELMAR_RTV_RTV_CONTAINER_CREATER_H

#include <memory>
#include <string>

#include "velmar_video/VelmarVideoFile.h"
#include "velmar_video/rtv/RecordFileCreater.h"

/// Writes an "rtv" file of version 03 with up to 65535 frames and without positions, behind the
/// facade. Microseconds become milliseconds.
class RtvContainerCreater : public VelmarVideoFileCreater {
 public:
  /// Creates the temporary file at once.
  explicit RtvContainerCreater(const std::string& path);
  ~RtvContainerCreater() override;

  VELMAR_ERROR_CODE_E open() override;
  VELMAR_ERROR_CODE_E close() override;
  void setUndistortFlags() override;
  void setDeviceId(const unsigned char* id, unsigned int length) override;
  void setStartTime(unsigned long startTime) override;
  void setVideoResolution(unsigned short width, unsigned short height) override;
  void setFrameFormat(VELMAR_FORMAT_E format) override;
  void setFrameCodec(VELMAR_CODEC_E codec) override;
  /// Answers true even for a frame that the writer refuses, on purpose; close() reports it.
  bool addFrame(const std::string& jpegData, unsigned long sensorTime,
                unsigned long arrivedTime) override;
  bool addFrame(const unsigned char* jpegData, unsigned int size, unsigned long sensorTime,
                unsigned long arrivedTime) override;
  void setCameraParams(const std::string& params) override;
  void setExtendedInfo(const std::string& info) override;
  virtual void setTaggingFlags(unsigned int flags);

 private:
  int relativeTime(unsigned long sensorTime) const;

  std::shared_ptr<RecordFileCreater> writer_;
  unsigned long startTime_ = 0;  ///< microseconds
  bool closed_ = false;
  bool used_ = false;     ///< open() or addFrame() was called
  bool refused_ = false;  ///< a frame is missing
};

#endif
