#include "Recordings.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "jpeg/TjHandle.h"
#include "support.h"
#include "velmar_video/rtv/RecordFile.h"

using namespace velmar::detail;

namespace {

constexpr std::size_t kMostPictureBytes = 1 << 16;  // that the harness itself asks for

template <typename... Values>
void consumeAll(const Values&... values) {
  (consume(&values, sizeof values), ...);
}

void readHeader(VelmarVideoFileReader& reader) {
  VELMAR_VERSION_E version{};
  VELMAR_FORMAT_E format{};
  VELMAR_FORMAT_E imageFormat{};
  VELMAR_CODEC_E codec{};
  unsigned int max = 0;
  unsigned int flags = 0;
  unsigned long startTime = 0;
  reader.getVersion(version);
  reader.getColorFormat(format);
  reader.getImageColorFormat(imageFormat);
  reader.getCodec(codec);
  reader.getFramesMax(max);
  reader.getUndistortFlags(flags);
  reader.getStartTime(startTime);
  consumeAll(version, format, imageFormat, codec, max, flags, startTime);
  for (const unsigned int length : {0U, 1U, 23U, 24U, 100U}) {
    std::vector<unsigned char> id(length);
    reader.getDeviceId(id.data(), length);
    consume(id.data(), id.size());
  }
  consume(reader.getFileName());
  consume(reader.getCameraParams());
  consume(reader.getExtendedInfo());
  consume(reader.getMetaInfo());
}

std::string readStored(VelmarVideoFileReader& reader, unsigned int index) {
  unsigned long timeFlag = 0;
  unsigned long timeStamp = 0;
  unsigned long sensorTime = 0;
  unsigned long arrivedTime = 0;
  reader.getTimeFlag(index, timeFlag);
  reader.getTimeStamp(index, timeStamp);
  reader.getSensorTime(index, sensorTime);
  reader.getArrivedTime(index, arrivedTime);
  consumeAll(timeFlag, timeStamp, sensorTime, arrivedTime);

  std::string frame;
  reader.getRawImage(index, frame);
  consume(frame);
  unsigned int size = 0;
  if (reader.getRawImageSize(index, size, true) != VELMAR_ERROR_CODE_SUCCESS_E) return frame;
  // A size may be anything; only a frame that was read has its bytes.
  std::vector<unsigned char> buffer(frame.size());
  const auto code = reader.getRawImage(index, buffer.size(), buffer.data());
  require(size != frame.size() || size == 0 || code == VELMAR_ERROR_CODE_SUCCESS_E);
  consume(buffer.data(), buffer.size());
  return frame;
}

// A picture that is itself as large as a recording's header can say needs as much memory.
bool isTall(const std::string& frame) {
  constexpr int kTall = 2000;
  const TjHandle decompressor(tjInitDecompress());
  auto* jpeg = reinterpret_cast<unsigned char*>(const_cast<char*>(frame.data()));
  int width = 0;
  int height = 0;
  int subsampling = 0;
  // The size is there even where the answer is that the sampling is unusual.
  tjDecompressHeader2(decompressor.get(), jpeg, frame.size(), &width, &height, &subsampling);
  return height > kTall;
}

void decode(VelmarVideoFileReader& reader, unsigned int index, const std::string& frame) {
  unsigned short width = 0;
  unsigned short height = 0;
  reader.getImageResolution(width, height);
  const auto format = static_cast<VELMAR_FORMAT_E>(VELMAR_FORMAT_RGB_E + index % 4);
  const auto scale = static_cast<SCALE_FACTOR_E>(SCALE_FACTOR_1_4_E + index % 3);
  // The last cut makes a small picture of one with any header.
  const unsigned short lastRows = height > 16 && !isTall(frame) ? height - 16 : 0;
  const unsigned short cuts[][2] = {{0, 0}, {3, 1}, {lastRows, 0}};
  for (const auto& [top, bottom] : cuts) {
    unsigned int size = 0;
    const auto code = reader.getImageSizeInBytes(size, format, scale, top, bottom, &width, &height);
    if (code != VELMAR_ERROR_CODE_SUCCESS_E || size > kMostPictureBytes) continue;
    std::vector<unsigned char> pixels(size);
    reader.getImage(index, size, pixels.data(), format, scale, top, bottom);
    consume(pixels.data(), pixels.size());
  }
}

// Numbers that follow from bytes.
class Numbers {
 public:
  Numbers(const std::uint8_t* data, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) state_ = (state_ ^ data[i]) * kPrime;
  }
  unsigned long next() {
    state_ = (state_ ^ state_ >> 29) * kPrime;
    return state_;
  }
  bool flip() { return (next() >> 32 & 1) != 0; }

 private:
  static constexpr unsigned long kPrime = 1099511628211;
  unsigned long state_ = 14695981039346656037U;
};

}  // namespace

void forSomeFrames(unsigned int count, const std::function<void(unsigned int)>& use) {
  constexpr unsigned int kFirst = 4;
  for (unsigned int i = 0; i < std::min(count, kFirst); ++i) use(i);
  for (const unsigned int i : {count - 1, count, count + 1}) use(i);
}

void readAll(VelmarVideoFileReader& reader) {
  const auto opened = reader.open();
  readHeader(reader);
  unsigned int count = 0;
  reader.getFramesCount(count);
  forSomeFrames(
      count, [&reader](unsigned int index) { decode(reader, index, readStored(reader, index)); });
  reader.loadAllFromFile();
  const auto closed = reader.close();
  require(opened != VELMAR_ERROR_CODE_SUCCESS_E || closed == VELMAR_ERROR_CODE_SUCCESS_E);
}

VELMAR_ERROR_CODE_E editAll(VelmarVideoFileModifier& modifier, const std::uint8_t* data,
                            std::size_t size) {
  const std::array<const char*, 4> texts = {"{}", R"({"a":[1.5,"\u00e9"]} // b)", "null",
                                            "{\"a\":"};
  modifier.open();
  Numbers numbers(data, size);
  const auto text = [&] { return texts[numbers.next() % texts.size()]; };
  unsigned long time = numbers.next();
  if (numbers.flip()) modifier.modifyStartTime(time);
  forSomeFrames(numbers.next() % 8, [&](unsigned int index) {
    time = numbers.next();
    modifier.modifyTimestamp(index, time);
    modifier.modifyArrivalTime(index, time);
  });
  if (numbers.flip())
    modifier.modifyCameraID(data, std::min<std::size_t>(size, numbers.next() % 64));
  if (numbers.flip()) modifier.modifyUndistorted(numbers.flip());
  if (numbers.flip()) modifier.modifyCameraParams(text());
  if (numbers.flip()) modifier.modifyExtendedInfo(text());
  if (numbers.flip()) modifier.modifyFrameIndexDataChecksum(text());
  if (numbers.flip()) modifier.correctVideoResolution();
  return modifier.close();
}

bool latchHostByteOrder() {
  RecordFile unflagged;
  const std::array<unsigned char, 145> tag{};
  return RecordFile::frametag_t(&unflagged).fill(tag.data(), CAN_SIZE_IO);
}
