#ifndef VELMAR_RTV_RTV_CONTAINER_READER_H
#define VELMAR_RTV_RTV_CONTAINER_READER_H

#include <memory>
#include <string>

#include "velmar_video/VelmarVideoFile.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

/// Reads an "rtv" file behind the facade: turns milliseconds into microseconds and the parser's
/// negative codes into positive ones, and cuts frame indexes to 16 bits.
class RtvContainerReader : public VelmarVideoFileReader {
 public:
  explicit RtvContainerReader(const std::string& path);

  VELMAR_ERROR_CODE_E open() override;
  VELMAR_ERROR_CODE_E close() override;
  VELMAR_ERROR_CODE_E getVersion(VELMAR_VERSION_E& version) override;
  VELMAR_ERROR_CODE_E getTimeFlag(unsigned int index, unsigned long& value) override;
  VELMAR_ERROR_CODE_E getTimeStamp(unsigned int index, unsigned long& timestamp) override;
  VELMAR_ERROR_CODE_E getRawImageSize(unsigned int index, unsigned int& size, bool flag) override;
  VELMAR_ERROR_CODE_E getRawImage(unsigned int index, unsigned int bufferSize,
                                  unsigned char* buffer) override;
  VELMAR_ERROR_CODE_E getRawImage(unsigned int index, std::string& data) override;
  VELMAR_ERROR_CODE_E getImageSizeInBytes(unsigned int& size, VELMAR_FORMAT_E format,
                                          SCALE_FACTOR_E scale, unsigned short cropTop,
                                          unsigned short cropBottom, unsigned short* outWidth,
                                          unsigned short* outHeight) override;
  VELMAR_ERROR_CODE_E getImage(unsigned int index, unsigned int bufferSize, unsigned char* buffer,
                               VELMAR_FORMAT_E format, SCALE_FACTOR_E scale, unsigned short cropTop,
                               unsigned short cropBottom) override;
  VELMAR_ERROR_CODE_E getImageColorFormat(VELMAR_FORMAT_E& format) override;
  VELMAR_ERROR_CODE_E getFramesCount(unsigned int& count) override;
  VELMAR_ERROR_CODE_E getFramesMax(unsigned int& max) override;
  VELMAR_ERROR_CODE_E getImageResolution(unsigned short& width, unsigned short& height) override;
  VELMAR_ERROR_CODE_E getColorFormat(VELMAR_FORMAT_E& format) override;
  VELMAR_ERROR_CODE_E getCodec(VELMAR_CODEC_E& codec) override;
  VELMAR_ERROR_CODE_E getStartTime(unsigned long& startTime) override;
  VELMAR_ERROR_CODE_E getArrivedTime(unsigned int index, unsigned long& time) override;
  VELMAR_ERROR_CODE_E getSensorTime(unsigned int index, unsigned long& time) override;
  VELMAR_ERROR_CODE_E getDeviceId(unsigned char* buffer, unsigned int bufferSize) override;
  VELMAR_ERROR_CODE_E getUndistortFlags(unsigned int& flags) override;
  std::string getCameraParams() override;
  VELMAR_ERROR_CODE_E loadAllFromFile() override;
  std::string getMetaInfo() override;
  std::string getExtendedInfo() override;

  /// For what the facade does not show; open together with this object.
  TaggedVideoParser& parser() const { return *parser_; }

 private:
  std::shared_ptr<TaggedVideoParser> parser_;
};

#endif
