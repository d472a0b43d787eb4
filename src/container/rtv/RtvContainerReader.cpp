#include "container/rtv/RtvContainerReader.h"

#include "container/rtv/RtvLayout.h"
#include "velmar_logger/velmar_logger.h"
#include "velmar_video/TypeConversion.h"

using namespace velmar::detail;

namespace {

constexpr char kTag[] = "RtvContainerReader_TAG";
constexpr char kNoMetaData[] = "{}";

// RTV files hold 65535 frames at most: an index is cut to 16 bits, on purpose.
unsigned short cut(unsigned int index) { return static_cast<unsigned short>(index); }

VELMAR_ERROR_CODE_E facade(ErrorCode_e code) { return rtvErrorCode2VelmarErrorCode(code); }

}  // namespace

RtvContainerReader::RtvContainerReader(const std::string& path)
    : VelmarVideoFileReader(path), parser_(std::make_shared<TaggedVideoParser>()) {}

VELMAR_ERROR_CODE_E RtvContainerReader::open() { return facade(parser_->init(filePath_.c_str())); }

VELMAR_ERROR_CODE_E RtvContainerReader::close() { return facade(parser_->clear()); }

VELMAR_ERROR_CODE_E RtvContainerReader::getVersion(VELMAR_VERSION_E& version) {
  version_e stored = RTV_VER_MAX;
  if (const auto code = facade(parser_->getVersion(stored)); code != VELMAR_ERROR_CODE_SUCCESS_E)
    return code;
  version = rtvVersion2VelmarVersion(stored);
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerReader::getTimeFlag(unsigned int index, unsigned long& value) {
  int flag = 0;
  if (const auto code = facade(parser_->getTimeFlag(cut(index), flag));
      code != VELMAR_ERROR_CODE_SUCCESS_E)
    return code;
  // In 32 bits, where it wraps, and with its sign from there; multiplied unsigned, since a signed
  // overflow is undefined.
  const auto wrapped = static_cast<int>(static_cast<unsigned int>(flag) *
                                        static_cast<unsigned int>(kMicrosecondsPerMillisecond));
  value = static_cast<unsigned long>(static_cast<long>(wrapped));
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerReader::getTimeStamp(unsigned int index, unsigned long& timestamp) {
  unsigned long milliseconds = 0;
  if (const auto code = facade(parser_->getTimeStamp(cut(index), milliseconds));
      code != VELMAR_ERROR_CODE_SUCCESS_E)
    return code;
  timestamp = milliseconds * kMicrosecondsPerMillisecond;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerReader::getRawImageSize(unsigned int index, unsigned int& size,
                                                        bool flag) {
  return facade(parser_->getRawImageSize(cut(index), size, flag));
}

VELMAR_ERROR_CODE_E RtvContainerReader::getRawImage(unsigned int index, unsigned int bufferSize,
                                                    unsigned char* buffer) {
  return facade(parser_->getRawImage(cut(index), bufferSize, buffer));
}

VELMAR_ERROR_CODE_E RtvContainerReader::getRawImage(unsigned int index, std::string& data) {
  return facade(parser_->getRawImage(cut(index), data));
}

VELMAR_ERROR_CODE_E RtvContainerReader::getImageSizeInBytes(
    unsigned int& size, VELMAR_FORMAT_E format, SCALE_FACTOR_E scale, unsigned short cropTop,
    unsigned short cropBottom, unsigned short* outWidth, unsigned short* outHeight) {
  return facade(parser_->getImageSizeInBytes(size, velmarFormat2RTVFormat(format),
                                             velmarScalFactor2RTVScalFactor(scale), cropTop,
                                             cropBottom, outWidth, outHeight));
}

VELMAR_ERROR_CODE_E RtvContainerReader::getImage(unsigned int index, unsigned int bufferSize,
                                                 unsigned char* buffer, VELMAR_FORMAT_E format,
                                                 SCALE_FACTOR_E scale, unsigned short cropTop,
                                                 unsigned short cropBottom) {
  return facade(parser_->getImage(cut(index), bufferSize, buffer, velmarFormat2RTVFormat(format),
                                  velmarScalFactor2RTVScalFactor(scale), cropTop, cropBottom));
}

VELMAR_ERROR_CODE_E RtvContainerReader::getImageColorFormat(VELMAR_FORMAT_E& format) {
  format_e stored = RTV_FMT_UNKNOWN;
  if (const auto code = facade(parser_->getImageColorFormat(stored));
      code != VELMAR_ERROR_CODE_SUCCESS_E)
    return code;
  format = rtvFormat2VelmarFormat(stored);
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerReader::getFramesCount(unsigned int& count) {
  unsigned short stored = 0;
  const auto code = facade(parser_->getFramesCount(stored));
  count = stored;
  return code;
}

VELMAR_ERROR_CODE_E RtvContainerReader::getFramesMax(unsigned int& max) {
  unsigned short stored = 0;
  const auto code = facade(parser_->getFramesMax(stored));
  max = stored;
  return code;
}

VELMAR_ERROR_CODE_E RtvContainerReader::getImageResolution(unsigned short& width,
                                                           unsigned short& height) {
  return facade(parser_->getImageResolution(width, height));
}

VELMAR_ERROR_CODE_E RtvContainerReader::getColorFormat(VELMAR_FORMAT_E& format) {
  format_e stored = RTV_FMT_UNKNOWN;
  if (const auto code = facade(parser_->getColorFormat(stored));
      code != VELMAR_ERROR_CODE_SUCCESS_E)
    return code;
  format = rtvFormat2VelmarFormat(stored);
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerReader::getCodec(VELMAR_CODEC_E& codec) {
  codec_e stored = RTV_CODEC_UNKNOWN;
  if (const auto code = facade(parser_->getCodec(stored)); code != VELMAR_ERROR_CODE_SUCCESS_E)
    return code;
  codec = rtvCodec2VelmarCodec(stored);
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerReader::getStartTime(unsigned long& startTime) {
  unsigned long milliseconds = 0;
  if (const auto code = facade(parser_->getStartTime(milliseconds));
      code != VELMAR_ERROR_CODE_SUCCESS_E)
    return code;
  VELMAR_VERSION_E version = VELMAR_VERSION_MAX_E;
  if (const auto code = getVersion(version); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  if (version == VELMAR_VERSION_0_2_E) milliseconds += kRtvVersion02Epoch;
  startTime = milliseconds * kMicrosecondsPerMillisecond;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerReader::getArrivedTime(unsigned int index, unsigned long& time) {
  return getTimeStamp(index, time);
}

VELMAR_ERROR_CODE_E RtvContainerReader::getSensorTime(unsigned int index, unsigned long& time) {
  return getTimeStamp(index, time);
}

VELMAR_ERROR_CODE_E RtvContainerReader::getDeviceId(unsigned char* buffer,
                                                    unsigned int bufferSize) {
  return facade(parser_->getDeviceId(buffer, bufferSize));
}

VELMAR_ERROR_CODE_E RtvContainerReader::getUndistortFlags(unsigned int& flags) {
  unsigned int tagging = 0;
  if (const auto code = facade(parser_->getTaggingFlags(tagging));
      code != VELMAR_ERROR_CODE_SUCCESS_E)
    return code;
  velmar_logger::d(kTag, "getUndistortFlags = %u", tagging);
  flags = (tagging & kRtvUndistortedFlag) != 0 ? 1 : 0;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerReader::loadAllFromFile() {
  return facade(parser_->loadAllFromFile());
}

std::string RtvContainerReader::getCameraParams() { return kNoMetaData; }

std::string RtvContainerReader::getMetaInfo() { return kNoMetaData; }

std::string RtvContainerReader::getExtendedInfo() { return kNoMetaData; }
