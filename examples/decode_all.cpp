// Decodes every frame in several threads, each with a reader of its own.
//   decode_all drive.img [THREADS]
#include <velmar_video/velmar_video.h>

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <thread>
#include <vector>

namespace {

constexpr auto kFormat = VELMAR_FORMAT_GRAY_E;
constexpr auto kScale = SCALE_FACTOR_1_4_E;

struct Totals {
  std::atomic<unsigned int> next{0};  // frame to decode
  std::atomic<unsigned int> decoded{0};
  std::atomic<unsigned int> failed{0};
  std::atomic<unsigned long> brightness{0};  // of all frames
};

void decodeFrames(const char* path, Totals& totals) {
  const auto reader = makeVelmarVideoFileReader(path);
  unsigned int count = 0;
  unsigned int size = 0;
  if (!reader || reader->open() || reader->getFramesCount(count) ||
      reader->getImageSizeInBytes(size, kFormat, kScale, 0, 0, nullptr, nullptr)) {
    ++totals.failed;
    return;
  }
  std::vector<unsigned char> pixels(size);  // once, for all frames
  for (unsigned int i = totals.next++; i < count; i = totals.next++) {
    if (reader->getImage(i, size, pixels.data(), kFormat, kScale, 0, 0)) {
      ++totals.failed;
      continue;
    }
    unsigned long sum = 0;
    for (const unsigned char pixel : pixels) sum += pixel;
    totals.brightness += sum / size;
    ++totals.decoded;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::cerr << "usage: decode_all FILE [THREADS]\n";
    return 2;
  }
  const int threadCount = argc == 3 ? std::atoi(argv[2]) : 2;
  Totals totals;
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < threadCount; ++i) {
      threads.emplace_back([&] { decodeFrames(argv[1], totals); });
    }
  }  // joined
  std::cout << totals.decoded << " frames decoded, " << totals.failed << " failed\n";
  if (totals.decoded > 0) {
    std::cout << "mean brightness " << totals.brightness / totals.decoded << '\n';
  }
  return totals.failed == 0 ? 0 : 1;
}
