// What a program outside this project sees of the library.
#include <velmar_video/velmar_video.h>

#include <cstdio>

// A name that is the program's own to give.
using FileDescriptor = int;

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const tjscalingfactor half = TaggedVideoParser::getScalingFactor(RTV_SCALE_1_2);
  const FileDescriptor none = -1;
  if (none >= 0 || half.num * 2 != half.denom) return 1;
  const auto creater = makeVelmarVideoFileCreater(argv[1]);
  if (!creater || creater->open() != VELMAR_ERROR_CODE_SUCCESS_E) return 1;
  if (!creater->addFrame(std::string(100, 'x'), 1, 2)) return 1;
  if (creater->close() != VELMAR_ERROR_CODE_SUCCESS_E) return 1;

  const auto reader = makeVelmarVideoFileReader(argv[1]);
  unsigned long time = 0;
  if (reader->open() != VELMAR_ERROR_CODE_SUCCESS_E) return 1;
  const auto code = reader->getSensorTime(0, time);
  std::printf("%s %lu\n", errorCode2String(code).c_str(), time);
  return 0;
}
