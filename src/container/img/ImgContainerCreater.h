#ifndef VELMAR_IMG_IMG_CONTAINER_CREATER_H
#define VELMAR_IMG_IMG_CONTAINER_CREATER_H

#include <cstdint>
#include <string>
#include <vector>

#include "base/FileDescriptor.h"
#include "container/img/FrameIndex.h"
#include "container/img/FrameIndexJournal.h"
#include "container/img/ImgMetaData.h"
#include "velmar_video/VelmarVideoFile.h"

/// Writes an "img" file: frames stream into a temporary file; close() moves the first of them to
/// the end, puts the index in their place and appends the metadata.
class ImgContainerCreater final : public VelmarVideoFileCreater {
 public:
  explicit ImgContainerCreater(const std::string& path);
  ~ImgContainerCreater() override;

  VELMAR_ERROR_CODE_E open() override;
  VELMAR_ERROR_CODE_E close() override;
  void setUndistortFlags() override;
  void setDeviceId(const unsigned char* id, unsigned int length) override;
  void setVideoResolution(unsigned short width, unsigned short height) override;
  void setFrameFormat(VELMAR_FORMAT_E format) override;
  void setFrameCodec(VELMAR_CODEC_E codec) override;
  bool addFrame(const std::string& jpegData, unsigned long sensorTime,
                unsigned long arrivedTime) override;
  bool addFrame(const unsigned char* jpegData, unsigned int size, unsigned long sensorTime,
                unsigned long arrivedTime) override;
  void setCameraParams(const std::string& params) override;
  void setExtendedInfo(const std::string& info) override;

 private:
  template <typename MakeText>
  void setText(const char* operation, std::string& field, MakeText makeText);
  bool addFrameBytes(const char* data, std::size_t size, unsigned long sensorTime,
                     unsigned long arrivedTime);
  /// Appends the bytes and counts them. False after any write has failed.
  bool imgContainerCreaterWrite(const void* data, std::size_t length);
  /// Moves the first frames behind the last and writes the index over them.
  bool adjustmentFrameAndIndex();
  std::uint64_t relocateFirstFrames(std::uint64_t indexSize);
  bool appendFirstFrames(std::uint64_t size);
  VELMAR_ERROR_CODE_E finish();
  VELMAR_ERROR_CODE_E publish();

  std::vector<FrameIndex> frameIndex_;   ///< in file byte order
  std::uint64_t writtenBytes_ = 0;       ///< also the next write position
  velmar::detail::FileDescriptor file_;  ///< the temporary file while the object is open
  bool writeFailed_ = false;             ///< nothing more is written
  ImgMetaData metaData_;
  bool textLost_ = false;  ///< a setter had no memory
  const std::string temporaryPath_;
  velmar::detail::FrameIndexJournal journal_;
};

#endif
