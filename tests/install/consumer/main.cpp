// What a program outside this project sees of the library.
#include <velmar_video/velmar_video.h>

#include <cstdio>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
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
