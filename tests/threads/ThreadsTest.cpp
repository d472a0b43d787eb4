// Many threads at once. ThreadSanitizer sees what threads share in memory: the tables of factories
// and names, the logger, the byte-order latches, whatever decoders might have in common. It does
// not see that two maps are of one file: there, only what is read counts.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "container/img/ImgFiles.h"
#include "container/rtv/RtvFiles.h"
#include "jpeg/JpegDecoder.h"
#include "scene/SampleScene.h"
#include "support/TestSupport.h"
#include "velmar_logger/control.h"
#include "velmar_video/velmar_video.h"

using namespace velmar::detail;

namespace {

constexpr int kReaders = 8;
constexpr int kRounds = 60;
constexpr unsigned kFrames = 12;  // the last one's time lies across two cache lines in an img file
constexpr unsigned kWidth = 64;
constexpr unsigned kHeight = 48;
constexpr unsigned kCropTop = 16;
constexpr unsigned long kStartTime = 5000;  // milliseconds

// A frame time lies at whatever address the format gives it and is changed by a plain store through
// another map, so whoever reads it at that moment may get bytes of the old and of the new one. Both
// are therefore made of one repeated byte each, and no byte of a time may be any other.
constexpr unsigned char kOldByte = 1;
constexpr unsigned char kNewByte = 2;

unsigned long timeOf(unsigned char byte, std::size_t width) {
  unsigned long time = 0;
  std::memset(&time, byte, width);
  return time;
}

using Reader = VelmarVideoFileReader;
using Pixels = std::vector<unsigned char>;

// At half size, with rows cut: through the decoder's scratch memory.
Pixels decoded(const std::string& jpeg) {
  const ImageGeometry geometry(kWidth, kHeight, {1, 2}, kCropTop, 0, 3);
  Pixels pixels(geometry.size());
  EXPECT_EQ(JpegDecoder().decode(reinterpret_cast<const unsigned char*>(jpeg.data()), jpeg.size(),
                                 geometry, TJPF_RGB, pixels.data()),
            kSuccess);
  return pixels;
}

// Looks up what is there once for all threads, and logs.
void useTables(const std::string& path) {
  EXPECT_NE(makeVelmarVideoFileCreater("never-opened.img"), nullptr);
  EXPECT_NE(makeVelmarVideoFileModifier(path), nullptr);
  EXPECT_EQ(errorCode2String(VELMAR_ERROR_CODE_OUT_RANGE_E), "VELMAR_ERROR_CODE_OUT_RANGE_E");
  EXPECT_EQ(velmarVersion2String(string2VelmarVersion("0.4")), "0.4");
  EXPECT_EQ(velmarFormat2String(string2RvelmarFormat("GRAY")), "GRAY");
  EXPECT_EQ(velmarCodec2String(string2VelmarCodec("JPG")), "JPG");
  EXPECT_NE(makeVelmarVideoFileReader(path + ".img")->open(), kSuccess);
}

// Of the version of an rtv file, or 0 for an img file.
class Threads : public testing::TestWithParam<int> {
 protected:
  Threads() {
    SampleScene scene(kWidth, kHeight);
    const unsigned long time = timeOf(kOldByte, timeWidth_);
    std::vector<TestFrame> img;
    RtvFile rtv{.version = GetParam(), .startTime = kStartTime, .width = kWidth, .height = kHeight};
    for (unsigned i = 0; i < kFrames; ++i) {
      jpegs_.push_back(scene.jpeg(i));
      pixels_.push_back(decoded(jpegs_[i]));
      img.push_back({jpegs_[i], time, kStartTime});
      rtv.frames.push_back({jpegs_[i], static_cast<int>(time)});
    }
    writeFile(path_, isRtv_ ? rtv.bytes() : handMadeImg(img, "", kWidth, kHeight));
  }

  // As the file has it.
  unsigned long storedTime(Reader& reader, unsigned frame) const {
    const unsigned long time = got(reader, &Reader::getSensorTime, frame);
    return isRtv_ ? (time - got(reader, &Reader::getStartTime)) / 1000 : time;
  }

  void readFrames() const {
    const auto reader = openedReader(path_);
    ASSERT_EQ(got(*reader, &Reader::getFramesCount), kFrames);
    for (unsigned i = 0; i < kFrames; ++i) {
      EXPECT_TRUE(storedFrame(*reader, i) == jpegs_[i]) << i;
      Pixels pixels(pixels_[i].size());
      EXPECT_EQ(reader->getImage(i, pixels.size(), pixels.data(), VELMAR_FORMAT_RGB_E,
                                 SCALE_FACTOR_1_2_E, kCropTop, 0),
                kSuccess);
      EXPECT_TRUE(pixels == pixels_[i]) << i;
      const unsigned long time = storedTime(*reader, i);
      for (std::size_t k = 0; k < timeWidth_; ++k) {
        const unsigned long byte = time >> (8 * k) & 0xFF;
        EXPECT_TRUE(byte == kOldByte || byte == kNewByte) << std::hex << time;
      }
    }
    EXPECT_EQ(reader->close(), kSuccess);
  }

  void changeTimes(unsigned char byte) const {
    const auto modifier = makeVelmarVideoFileModifier(path_);
    EXPECT_EQ(modifier->open(), kSuccess);
    const unsigned long stored = timeOf(byte, timeWidth_);
    unsigned long time = isRtv_ ? 1000 * (kStartTime + stored) : stored;
    for (unsigned i = 0; i < kFrames; ++i) EXPECT_EQ(modifier->modifyTimestamp(i, time), kSuccess);
    EXPECT_EQ(modifier->close(), kSuccess);
  }

  const bool isRtv_ = GetParam() > 0;
  const std::size_t timeWidth_ = isRtv_ ? 4 : 8;  // bytes
  const TempFolder folder_;
  const std::string path_ = folder_ / (isRtv_ ? "a.rtv" : "a.img");
  std::vector<std::string> jpegs_;
  std::vector<Pixels> pixels_;
};

INSTANTIATE_TEST_SUITE_P(ImgAndRtvVersions, Threads, testing::Values(0, 2, 3, 4));

TEST_P(Threads, ReadWhileTimesAndLogChange) {
  std::latch start(kReaders + 1);
  std::atomic<int> reading = kReaders;
  std::atomic<int> changes = 0;
  std::atomic<unsigned> lines = 0;
  velmar_logger::setLevel(4);
  std::vector<std::thread> threads;
  for (int i = 0; i < kReaders; ++i) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      // Relaxed: the threads are not to be brought into an order in which they do not race.
      for (int k = 0; k < kRounds || changes.load(std::memory_order_relaxed) < kRounds; ++k) {
        readFrames();
        useTables(path_);
      }
      --reading;
    });
  }
  start.arrive_and_wait();
  unsigned char byte = kOldByte;
  while (reading > 0) {
    byte = byte == kOldByte ? kNewByte : kOldByte;
    velmar_logger::setLevel(3 + byte);  // neither shows a line
    velmar_logger::setSink(byte == kOldByte ? velmar_logger::Sink()
                                            : [&](int, const char*, const char*) {
                                                lines.fetch_add(1, std::memory_order_relaxed);
                                              });
    changeTimes(byte);
    useTables(path_);
    ++changes;
  }
  for (std::thread& thread : threads) thread.join();
  velmar_logger::setSink({});
  velmar_logger::setLevel(2);

  EXPECT_GT(lines, 0U);
  const auto reader = openedReader(path_);
  for (unsigned i = 0; i < kFrames; ++i) {
    EXPECT_EQ(storedTime(*reader, i), timeOf(byte, timeWidth_)) << i;
  }
}

}  // namespace
