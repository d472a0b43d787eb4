// Records JPEG files as if a camera delivered them, 30 a second.
//   record drive.img WIDTH HEIGHT FRAME.jpg...
#include <velmar_video/velmar_video.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

namespace {

std::string readFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) {
    std::cerr << "usage: record FILE.img|FILE.rtv WIDTH HEIGHT FRAME.jpg...\n";
    return 2;
  }
  const auto creater = makeVelmarVideoFileCreater(argv[1]);
  if (!creater) {
    std::cerr << argv[1] << ": its name has to end in .img or .rtv\n";
    return 2;
  }
  if (const auto code = creater->open()) {
    std::cerr << argv[1] << ": " << errorCode2String(code) << '\n';
    return 1;
  }

  const unsigned char id[24] = {0x0a, 0xff};  // the length that rtv has
  creater->setDeviceId(id, sizeof id);
  creater->setVideoResolution(static_cast<unsigned short>(std::atoi(argv[2])),
                              static_cast<unsigned short>(std::atoi(argv[3])));
  creater->setFrameFormat(VELMAR_FORMAT_BGR_E);
  creater->setFrameCodec(VELMAR_CODEC_JPG_E);
  creater->setCameraParams(R"({"lens": "wide"})");  // img only

  unsigned long captured = 1700000000000000;  // microseconds since 1970
  creater->setStartTime(captured);            // rtv only, and before the first frame
  bool isWhole = true;
  for (int i = 4; i < argc && isWhole; ++i) {
    const std::string frame = readFile(argv[i]);
    const unsigned long arrived = captured + 40000;
    isWhole = !frame.empty() && creater->addFrame(frame, captured, arrived);
    if (!isWhole) std::cerr << argv[i] << ": cannot be recorded; the frames before it are\n";
    captured += 1000000 / 30;
  }

  // The recording has its name only if this succeeds.
  const auto code = creater->close();
  std::cout << argv[1] << ": " << errorCode2String(code) << '\n';
  return isWhole && code == VELMAR_ERROR_CODE_SUCCESS_E ? 0 : 1;
}
