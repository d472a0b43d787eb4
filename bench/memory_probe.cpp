// Writes or reads one recording in a process of its own, and prints the most anonymous memory that
// this took, in bytes.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include "Bench.h"
#include "Files.h"
#include "GrowingFile.h"

namespace {

unsigned long anonymousBytes() {
  std::ifstream status("/proc/self/status");
  std::string field;
  while (status >> field) {
    if (field != "RssAnon:") continue;
    unsigned long kilobytes = 0;
    status >> kilobytes;
    return kilobytes * 1024;
  }
  return 0;
}

// Watches this process while it lives.
class Peak {
 public:
  Peak() : watcher_([this](const std::stop_token& stop) { watch(stop); }) {
    while (!watches_) std::this_thread::yield();
    base_ = anonymousBytes();
  }

  unsigned long bytes() {
    watcher_.request_stop();
    watcher_.join();
    return highest_ > base_ ? highest_ - base_ : 0;
  }

 private:
  void watch(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      highest_ = std::max<unsigned long>(highest_, anonymousBytes());
      watches_ = true;
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
  }

  std::atomic<bool> watches_ = false;
  unsigned long highest_ = 0;
  unsigned long base_ = 0;
  std::jthread watcher_;
};

void writeFrames(const std::string& path, const std::string& frame, unsigned int count) {
  constexpr unsigned int kFramesPerHollow = 256;
  const bool isImg = path.ends_with(".img");
  const std::size_t start = isImg ? sizeof(std::uint64_t)
                                  : rtvHeaderSize(Container::Rtv03) +
                                        std::size_t{kRtvFramesMax} * rtvTagSize(Container::Rtv03);
  const auto creater = openCreater(path);
  Hollow hollow(path + ".tmp", start);
  for (unsigned int i = 0; i < count; ++i) {
    require(creater->addFrame(frame, timeOf(i), timeOf(i)), "frame not added");
    if (i % kFramesPerHollow == 0) hollow.empty();
  }
  require(creater->close() == VELMAR_ERROR_CODE_SUCCESS_E, "not closed");
}

void readFrames(const std::string& path, std::string& buffer, unsigned int count) {
  constexpr unsigned int kStep = 16;
  const auto reader = openReader(path);
  for (unsigned int i = 0; i < count; i += kStep) {
    const auto code = reader->getRawImage(i, static_cast<unsigned int>(buffer.size()),
                                          reinterpret_cast<unsigned char*>(buffer.data()));
    require(code == VELMAR_ERROR_CODE_SUCCESS_E, "frame not read");
  }
}

}  // namespace

int main(int argc, char** argv) {
  require(argc == 5, "usage: memory_probe read|write FILE FRAMES FRAME-SIZE");
  const std::string work = argv[1];
  const std::string path = argv[2];
  const auto count = static_cast<unsigned int>(std::stoul(argv[3]));
  std::string frame(std::stoul(argv[4]), '\x5A');
  Peak peak;
  if (work == "write") {
    writeFrames(path, frame, count);
  } else {
    readFrames(path, frame, count);
  }
  std::printf("%lu\n", peak.bytes());
  return EXIT_SUCCESS;
}
