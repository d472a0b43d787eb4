#include "velmar_video/VelmarVideoFile.h"

#include <utility>

IVelmarVideoFile::IVelmarVideoFile(std::string path) : filePath_(std::move(path)) {}
IVelmarVideoFile::~IVelmarVideoFile() = default;

std::string IVelmarVideoFile::getFileName() {
  // Without a "/", npos + 1 wraps to 0: the whole path.
  return filePath_.substr(filePath_.rfind('/') + 1);
}

VelmarVideoFileCreater::VelmarVideoFileCreater(std::string path)
    : IVelmarVideoFile(std::move(path)) {}
VelmarVideoFileCreater::~VelmarVideoFileCreater() = default;

void VelmarVideoFileCreater::setStartTime(unsigned long /*startTime*/) {}

VelmarVideoFileReader::VelmarVideoFileReader(const std::string& path) : IVelmarVideoFile(path) {}
VelmarVideoFileReader::~VelmarVideoFileReader() = default;

VelmarVideoFileModifier::VelmarVideoFileModifier(const std::string& path)
    : IVelmarVideoFile(path) {}
VelmarVideoFileModifier::~VelmarVideoFileModifier() = default;
