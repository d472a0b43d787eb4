#include "container/img/ImgContainerReader.h"

#include <sys/mman.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>

#include "base/Guarded.h"
#include "base/HexText.h"
#include "container/img/JsonText.h"
#include "jpeg/PictureFormat.h"
#include "velmar_logger/velmar_logger.h"

using namespace velmar::detail;

namespace {

constexpr char kTag[] = "ImgContainerReader_TAG";
constexpr int kErrorLevel = 3;

bool isScale(SCALE_FACTOR_E scale) {
  return static_cast<std::size_t>(scale) < tjSalingFactor.size();
}

}  // namespace

ImgContainerReader::ImgContainerReader(const std::string& path) : VelmarVideoFileReader(path) {}

ImgContainerReader::~ImgContainerReader() {
  ImgContainerReader::close();
  if (!mapAddr_.unmap()) velmar_logger::e(kTag, "munmap error: %s", std::strerror(errno));
}

VELMAR_ERROR_CODE_E ImgContainerReader::open() {
  if (const auto code = checkOpening(filePath_, kTag); code != VELMAR_ERROR_CODE_SUCCESS_E)
    return code;
  return analyse(openMap(filePath_), kTag);
}

// The address range stays reserved, so that the destructor, which unmaps it, does not hit a map
// that another object has made since.
VELMAR_ERROR_CODE_E ImgContainerReader::close() {
  if (!mapAddr_.isMapped()) return VELMAR_ERROR_CODE_NOT_INIT_E;
  analysed_ = false;
  if (memoryLocked_) {
    memoryLocked_ = false;
    if (::munlock(mapAddr_.data(), fileLength_) != 0) {
      velmar_logger::doLogv2(__FILE__, __LINE__, "tag", kErrorLevel, "unlock memory failed");
    }
  }
  mapAddr_.retire();
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getVersion(VELMAR_VERSION_E& version) {
  version = metaData_.version;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getTimeFlag(unsigned int index, unsigned long& value) {
  if (const auto code = checkFrame(index); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  value = frameIndex_[index].arrivedTime - frameIndex_[0].arrivedTime;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getTimeStamp(unsigned int index, unsigned long& timestamp) {
  return getArrivedTime(index, timestamp);
}

VELMAR_ERROR_CODE_E ImgContainerReader::getArrivedTime(unsigned int index, unsigned long& time) {
  if (const auto code = checkFrame(index); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  time = frameIndex_[index].arrivedTime;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getSensorTime(unsigned int index, unsigned long& time) {
  if (const auto code = checkFrame(index); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  time = frameIndex_[index].sensorTime;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getStartTime(unsigned long& startTime) {
  startTime = frameIndex_.empty() ? 0 : frameIndex_[0].arrivedTime;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getRawImageSize(unsigned int index, unsigned int& size,
                                                        bool /*flag*/) {
  if (const auto code = checkFrame(index); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  size = frameIndex_[index].frameSize;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getRawImage(unsigned int index, unsigned int bufferSize,
                                                    unsigned char* buffer) {
  return copyFrame(index, bufferSize, buffer);
}

VELMAR_ERROR_CODE_E ImgContainerReader::getRawImage(unsigned int index, std::string& data) {
  if (const auto code = checkFrame(index); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  const FrameIndex& record = frameIndex_[index];
  if (const auto code = checkFrameBytes(record); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  return guarded(kTag, "getRawImage", VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E, [&] {
    data.append(reinterpret_cast<const char*>(frameBytes(record)), record.frameSize);
    return VELMAR_ERROR_CODE_SUCCESS_E;
  });
}

tjscalingfactor ImgContainerReader::getScalingFactor(SCALE_FACTOR_E scale) {
  return tjSalingFactor[static_cast<std::size_t>(scale)];
}

bool ImgContainerReader::getPixelFormat(VELMAR_FORMAT_E format, int* pixelFormat) {
  if (format < VELMAR_FORMAT_RGB_E || format > VELMAR_FORMAT_GRAY_E) return false;
  *pixelFormat = tjpfTable[static_cast<std::size_t>(format - VELMAR_FORMAT_RGB_E)];
  return true;
}

bool ImgContainerReader::getPixelSize(VELMAR_FORMAT_E format, int* bytes) {
  int pixelFormat = 0;
  if (!getPixelFormat(format, &pixelFormat)) return false;
  *bytes = tjPixelSize[pixelFormat];
  return true;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getImageSizeInBytes(
    unsigned int& size, VELMAR_FORMAT_E format, SCALE_FACTOR_E scale, unsigned short cropTop,
    unsigned short cropBottom, unsigned short* outWidth, unsigned short* outHeight) {
  unsigned short width = 0;
  unsigned short height = 0;
  if (const auto code = getImageResolution(width, height); code != VELMAR_ERROR_CODE_SUCCESS_E) {
    velmar_logger::e(kTag, "getImageResolution error");
    return code;
  }
  int pixelSize = 0;
  if (!getPixelSize(format, &pixelSize)) return VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E;
  if (!isScale(scale)) return VELMAR_ERROR_CODE_INVALID_PARAMETER_E;
  const ImageGeometry geometry(width, height, getScalingFactor(scale), cropTop, cropBottom,
                               pixelSize);
  if (!geometry.isValid()) return VELMAR_ERROR_CODE_INVALID_PARAMETER_E;
  size = static_cast<unsigned int>(geometry.size());
  if (outWidth != nullptr) *outWidth = static_cast<unsigned short>(geometry.width);
  if (outHeight != nullptr) *outHeight = static_cast<unsigned short>(geometry.rows());
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getImage(unsigned int index, unsigned int bufferSize,
                                                 unsigned char* buffer, VELMAR_FORMAT_E format,
                                                 SCALE_FACTOR_E scale, unsigned short cropTop,
                                                 unsigned short cropBottom) {
  if (!checkIndex(index)) return VELMAR_ERROR_CODE_OUT_RANGE_E;
  if (!analysed_) return VELMAR_ERROR_CODE_NOT_INIT_E;
  unsigned short width = 0;
  unsigned short height = 0;
  getImageResolution(width, height);
  int pixelFormat = 0;
  int pixelSize = 0;
  if (!getPixelFormat(format, &pixelFormat) || !getPixelSize(format, &pixelSize)) {
    return VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E;
  }
  if (!isScale(scale)) return VELMAR_ERROR_CODE_INVALID_PARAMETER_E;
  const ImageGeometry geometry(width, height, getScalingFactor(scale), cropTop, cropBottom,
                               pixelSize);
  if (!geometry.isDecodableTo(bufferSize)) return VELMAR_ERROR_CODE_INVALID_PARAMETER_E;
  if (buffer == nullptr) return VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E;
  if (const auto code = checkFrame(index); code != VELMAR_ERROR_CODE_SUCCESS_E)
    return code;  // one past the last got here
  const FrameIndex& record = frameIndex_[index];
  if (const auto code = checkFrameBytes(record); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  return decoder_.decode(frameBytes(record), record.frameSize, geometry, pixelFormat, buffer);
}

VELMAR_ERROR_CODE_E ImgContainerReader::getImageColorFormat(VELMAR_FORMAT_E& format) {
  format = VELMAR_FORMAT_BGR_E;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getFramesCount(unsigned int& count) {
  count = metaData_.framesCount;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getFramesMax(unsigned int& max) {
  max = std::numeric_limits<unsigned int>::max();
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getImageResolution(unsigned short& width,
                                                           unsigned short& height) {
  width = metaData_.width;
  height = metaData_.height;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getColorFormat(VELMAR_FORMAT_E& format) {
  format = metaData_.format;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getCodec(VELMAR_CODEC_E& codec) {
  codec = metaData_.codec;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getDeviceId(unsigned char* buffer,
                                                    unsigned int bufferSize) {
  if (bufferSize == 0) return VELMAR_ERROR_CODE_SUCCESS_E;
  if (buffer == nullptr) return VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E;
  hexToBytes(metaData_.cameraId, buffer, bufferSize);
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerReader::getUndistortFlags(unsigned int& flags) {
  flags = metaData_.undistorted ? 1 : 0;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

std::string ImgContainerReader::getCameraParams() {
  return guardedCopy(kTag, "getCameraParams", metaData_.cameraParams);
}

std::string ImgContainerReader::getExtendedInfo() {
  return guardedCopy(kTag, "getExtendedInfo", metaData_.extendedInfo);
}

VELMAR_ERROR_CODE_E ImgContainerReader::loadAllFromFile() {
  if (!mapAddr_.isMapped()) return VELMAR_ERROR_CODE_NOT_INIT_E;
  if (::mlock(mapAddr_.data(), fileLength_) != 0) {
    velmar_logger::doLogv2(__FILE__, __LINE__, "tag", kErrorLevel, "lock memory failed");
    return VELMAR_ERROR_CODE_SUCCESS_E;
  }
  memoryLocked_ = true;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

std::string ImgContainerReader::getMetaInfo() {
  try {
    Json::Value root;
    if (metaData_.toJson(root)) return styledText(root);
    velmar_logger::e(kTag, "get meta info error!");
  } catch (...) {
    velmar_logger::e(kTag, "getMetaInfo abnormal!");
  }
  return "{}";
}
