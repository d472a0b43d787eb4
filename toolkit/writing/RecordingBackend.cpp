#include "toolkit/writing/RecordingBackend.h"

#include "velmar_video/TypeConversion.h"
#include "velmar_video/VelmarVideoFile.h"
#include "velmar_video/rtv/RecordFileCreater.h"

namespace velmar::toolkit {

namespace {

const unsigned char* bytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

class ImgBackend final : public RecordingBackend {
 public:
  ImgBackend(const std::string& path, const RecordingDescription& description)
      : creater_(makeVelmarVideoFileCreater(path)) {
    setSize(description.width, description.height);
    creater_->setFrameCodec(description.codec);
    creater_->setFrameFormat(description.format);
    creater_->setDeviceId(bytesOf(description.deviceId),
                          static_cast<unsigned int>(description.deviceId.size()));
    creater_->setCameraParams(description.cameraParams);
    creater_->setExtendedInfo(description.extendedInfo);
    if (description.undistorted) creater_->setUndistortFlags();
  }

  VELMAR_ERROR_CODE_E open() override { return creater_->open(); }
  void setSize(unsigned short width, unsigned short height) override {
    creater_->setVideoResolution(width, height);
  }
  bool add(const std::string& jpeg, FrameTimes times, const FrameTag& /*tag*/) override {
    return creater_->addFrame(jpeg, times.sensor, times.arrived);
  }
  VELMAR_ERROR_CODE_E close() override { return creater_->close(); }

 private:
  std::shared_ptr<VelmarVideoFileCreater> creater_;
};

// Below the facade, which knows neither versions nor tags.
class RtvBackend final : public RecordingBackend {
 public:
  RtvBackend(const std::string& path, const RecordingDescription& description,
             unsigned int framesMax)
      : description_(description),
        creater_(path, static_cast<unsigned short>(framesMax), description.version, nullptr) {
    std::string id = description.deviceId;
    id.resize(kRtvDeviceIdSize);
    creater_.setDeviceId(bytesOf(id), kRtvDeviceIdSize);
    creater_.setStartTime(rtvStartTime(description).value_or(0));
    setSize(description.width, description.height);
    creater_.setFrameFormat(velmarFormat2RTVFormat(description.format));
    creater_.setFrameCodec(velmarCodec2RTVCodec(description.codec));
    creater_.setStartPosition(description.lng, description.lat, description.alt);
    creater_.setTaggingFlags(description.taggingFlags |
                             (description.undistorted ? kRtvUndistortedFlag : 0));
  }

  VELMAR_ERROR_CODE_E open() override {
    return creater_.isOpen() ? VELMAR_ERROR_CODE_SUCCESS_E : VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E;
  }
  void setSize(unsigned short width, unsigned short height) override {
    creater_.setVideoResolution(width, height);
  }
  bool add(const std::string& jpeg, FrameTimes times, const FrameTag& tag) override {
    const auto timeFlag = tag.timeFlag ? tag.timeFlag : rtvTimeFlag(description_, times.sensor);
    return timeFlag && creater_.addFrame(*timeFlag, jpeg, tag.x, tag.y, tag.z, tag.relativeDistance,
                                         tag.speed, tag.direction, &tag.can);
  }
  VELMAR_ERROR_CODE_E close() override {
    return creater_.close() ? VELMAR_ERROR_CODE_SUCCESS_E : VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
  }

 private:
  const RecordingDescription description_;
  RecordFileCreater creater_;
};

}  // namespace

std::unique_ptr<RecordingBackend> makeRecordingBackend(const std::string& path,
                                                       const RecordingDescription& description,
                                                       unsigned int framesMax) {
  if (isRtvPath(path)) return std::make_unique<RtvBackend>(path, description, framesMax);
  return std::make_unique<ImgBackend>(path, description);
}

}  // namespace velmar::toolkit
