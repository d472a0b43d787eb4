#include "velmar_video/VelmarVideoFile.h"

#include <utility>

#include "base/Guarded.h"

using namespace velmar::detail;

namespace {

constexpr char kTag[] = "VelmarVideoFile";

// Empty if memory runs out; open() reports that.
std::string kept(const std::string& path) { return guardedCopy(kTag, "path", path); }

}  // namespace

IVelmarVideoFile::IVelmarVideoFile(std::string path) : filePath_(std::move(path)) {}
IVelmarVideoFile::~IVelmarVideoFile() = default;

std::string IVelmarVideoFile::getFileName() {
  // Without a "/", npos + 1 wraps to 0: the whole path.
  return guarded(kTag, "getFileName", std::string(),
                 [this] { return filePath_.substr(filePath_.rfind('/') + 1); });
}

VelmarVideoFileCreater::VelmarVideoFileCreater(std::string path)
    : IVelmarVideoFile(std::move(path)) {}
VelmarVideoFileCreater::~VelmarVideoFileCreater() = default;

void VelmarVideoFileCreater::setStartTime(unsigned long /*startTime*/) {}

VelmarVideoFileReader::VelmarVideoFileReader(const std::string& path)
    : IVelmarVideoFile(kept(path)) {}
VelmarVideoFileReader::~VelmarVideoFileReader() = default;

VelmarVideoFileModifier::VelmarVideoFileModifier(const std::string& path)
    : IVelmarVideoFile(kept(path)) {}
VelmarVideoFileModifier::~VelmarVideoFileModifier() = default;
