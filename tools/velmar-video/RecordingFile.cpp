#include "RecordingFile.h"

#include "Failure.h"

namespace {

Failure unknownExtension(const std::string& path) {
  return {path, "its name has to end like a recording's, such as .img",
          VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E};
}

void check(const std::string& file, VELMAR_ERROR_CODE_E code) {
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) throw Failure(file, code);
}

}  // namespace

void checkExtension(const std::string& path) {
  // A reader that is not opened touches no file.
  if (makeVelmarVideoFileReader(path) == nullptr) throw unknownExtension(path);
}

std::shared_ptr<VelmarVideoFileReader> openRecording(const std::string& path) {
  auto reader = makeVelmarVideoFileReader(path);
  if (reader == nullptr) throw unknownExtension(path);
  check(path, reader->open());
  return reader;
}

unsigned int framesCount(VelmarVideoFileReader& reader, const std::string& file) {
  unsigned int count = 0;
  check(file, reader.getFramesCount(count));
  return count;
}

std::uint64_t sensorTime(VelmarVideoFileReader& reader, const std::string& file,
                         unsigned int index) {
  unsigned long time = 0;
  check(file, reader.getSensorTime(index, time));
  return time;
}
