#ifndef VELMAR_TOOLKIT_SAMPLE_DRIVE_H
#define VELMAR_TOOLKIT_SAMPLE_DRIVE_H

#include <string>

#include "jpeg/JpegHeader.h"
#include "toolkit/base/Job.h"
#include "velmar_video/rtv/RecordFile.h"

namespace velmar::toolkit {

/// A drawn drive on a country road, to have a recording to try. The same values give the same
/// bytes.
struct SampleDrive {
  unsigned int frames = 50;
  detail::JpegSize size{1280, 800};
  double framesPerSecond = 30;
  version_e version = RTV_VER_04;  ///< of an rtv
};

/// Throws Failure, UsageError for a rate that there is not.
void recordSample(const SampleDrive& drive, const std::string& path, Job& job);

}  // namespace velmar::toolkit

#endif
