// Says what a recording holds, and decodes one frame at half size into a picture.
//   browse drive.img FRAME picture.ppm
#include <velmar_video/velmar_video.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

int failed(const std::string& what, VELMAR_ERROR_CODE_E code) {
  std::cerr << what << ": " << errorCode2String(code) << '\n';
  return 1;
}

void describe(VelmarVideoFileReader& reader) {
  VELMAR_VERSION_E version{};
  unsigned int count = 0;
  unsigned short width = 0;
  unsigned short height = 0;
  unsigned long start = 0;
  // None of these fails on a reader that is open.
  reader.getVersion(version);
  reader.getFramesCount(count);
  reader.getImageResolution(width, height);
  reader.getStartTime(start);
  std::cout << "version " << velmarVersion2String(version) << ", " << count << " frames of "
            << width << " x " << height << " from " << start << " us\n"
            << reader.getCameraParams();

  for (unsigned int i = 0; i < count && i < 3; ++i) {
    unsigned long captured = 0;
    std::string jpeg;
    if (reader.getSensorTime(i, captured) || reader.getRawImage(i, jpeg)) break;
    std::cout << "frame " << i << ": " << captured << " us, " << jpeg.size() << " bytes\n";
  }
}

int decode(VelmarVideoFileReader& reader, unsigned int frame, const char* picture) {
  constexpr auto kFormat = VELMAR_FORMAT_RGB_E;
  constexpr auto kScale = SCALE_FACTOR_1_2_E;
  unsigned int size = 0;
  unsigned short width = 0;
  unsigned short height = 0;
  if (const auto code = reader.getImageSizeInBytes(size, kFormat, kScale, 0, 0, &width, &height)) {
    return failed("size", code);
  }
  // Any memory will do: the library only fills it. Its size has to be exact.
  std::vector<unsigned char> pixels(size);
  if (const auto code = reader.getImage(frame, size, pixels.data(), kFormat, kScale, 0, 0)) {
    return failed("frame " + std::to_string(frame), code);
  }
  std::ofstream file(picture, std::ios::binary);
  file << "P6\n" << width << ' ' << height << "\n255\n";
  file.write(reinterpret_cast<const char*>(pixels.data()), size);
  return file.flush() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: browse FILE FRAME PICTURE.ppm\n";
    return 2;
  }
  const auto reader = makeVelmarVideoFileReader(argv[1]);
  if (!reader) return 2;
  if (const auto code = reader->open()) return failed(argv[1], code);
  describe(*reader);
  return decode(*reader, static_cast<unsigned int>(std::atoi(argv[2])), argv[3]);
}
