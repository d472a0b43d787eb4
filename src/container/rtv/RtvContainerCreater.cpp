#include "container/rtv/RtvContainerCreater.h"

#include "container/rtv/RtvLayout.h"
#include "velmar_video/TypeConversion.h"

using namespace velmar::detail;

namespace {}  // namespace

RtvContainerCreater::RtvContainerCreater(const std::string& path)
    : VelmarVideoFileCreater(path),
      writer_(std::make_shared<RecordFileCreater>(path, static_cast<unsigned short>(kRtvFramesMax),
                                                  RTV_VER_03, nullptr)) {}

RtvContainerCreater::~RtvContainerCreater() {
  // A creater that was never used must not replace a recording by an empty one.
  if (!used_) writer_->abandon();
  RtvContainerCreater::close();
}

// The writer's constructor has created the file; close() reports if it could not.
VELMAR_ERROR_CODE_E RtvContainerCreater::open() {
  used_ = true;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerCreater::close() {
  if (closed_) return VELMAR_ERROR_CODE_NOT_INIT_E;
  closed_ = true;
  const bool finished = writer_->close();
  return finished && !refused_ ? VELMAR_ERROR_CODE_SUCCESS_E
                               : VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
}

void RtvContainerCreater::setUndistortFlags() {
  unsigned int flags = 0;
  writer_->getTaggingFlags(flags);
  writer_->setTaggingFlags(flags | kRtvUndistortedFlag);
}

void RtvContainerCreater::setDeviceId(const unsigned char* id, unsigned int length) {
  writer_->setDeviceId(id, length);
}

void RtvContainerCreater::setStartTime(unsigned long startTime) {
  startTime_ = startTime;
  writer_->setStartTime(startTime / kMicrosecondsPerMillisecond);
}

void RtvContainerCreater::setVideoResolution(unsigned short width, unsigned short height) {
  writer_->setVideoResolution(width, height);
}

void RtvContainerCreater::setFrameFormat(VELMAR_FORMAT_E format) {
  writer_->setFrameFormat(velmarFormat2RTVFormat(format));
}

void RtvContainerCreater::setFrameCodec(VELMAR_CODEC_E codec) {
  writer_->setFrameCodec(velmarCodec2RTVCodec(codec));
}

int RtvContainerCreater::relativeTime(unsigned long sensorTime) const {
  return static_cast<int>(sensorTime / kMicrosecondsPerMillisecond -
                          startTime_ / kMicrosecondsPerMillisecond);
}

bool RtvContainerCreater::addFrame(const std::string& jpegData, unsigned long sensorTime,
                                   unsigned long /*arrivedTime*/) {
  used_ = true;
  refused_ |= !writer_->addFrame(relativeTime(sensorTime), jpegData, 0, 0, 0, 0, 0, 0, nullptr);
  return true;
}

bool RtvContainerCreater::addFrame(const unsigned char* jpegData, unsigned int size,
                                   unsigned long sensorTime, unsigned long /*arrivedTime*/) {
  used_ = true;
  refused_ |= !writer_->addFrame(relativeTime(sensorTime), reinterpret_cast<const char*>(jpegData),
                                 size, 0, 0, 0, 0, 0, 0, nullptr);
  return true;
}

void RtvContainerCreater::setCameraParams(const std::string& /*params*/) {}

void RtvContainerCreater::setExtendedInfo(const std::string& /*info*/) {}

void RtvContainerCreater::setTaggingFlags(unsigned int flags) { writer_->setTaggingFlags(flags); }
