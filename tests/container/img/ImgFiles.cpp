#include "container/img/ImgFiles.h"

#include "support/TestSupport.h"

std::vector<TestFrame> lettered(const std::vector<std::size_t>& sizes) {
  std::vector<TestFrame> frames;
  for (const std::size_t size : sizes) {
    const unsigned long time = 1000 * frames.size();
    frames.push_back({std::string(size, static_cast<char>('A' + frames.size() % 26)),
                      5000000 + time, 5000300 + time});
  }
  return frames;
}

VELMAR_ERROR_CODE_E record(const std::string& path, const std::vector<TestFrame>& frames) {
  const auto creater = makeVelmarVideoFileCreater(path);
  if (const auto code = creater->open()) return code;
  for (const TestFrame& frame : frames) {
    if (!creater->addFrame(frame.bytes, frame.sensorTime, frame.arrivedTime)) {
      return VELMAR_ERROR_CODE_MAX_E;
    }
  }
  return creater->close();
}

std::string handMadeImg(const std::vector<TestFrame>& frames, std::string metaData, unsigned width,
                        unsigned height) {
  if (metaData.empty()) {
    metaData = R"({"version":"1.0","camera_id":"0aff","frame_codec":"JPG","frame_format":"GRAY",)"
               R"("frames_count":)" +
               std::to_string(frames.size()) + R"(,"width":)" + std::to_string(width) +
               R"(,"height":)" + std::to_string(height) +
               R"(,"undistorted":true,"camera_params":{"f":1},"extendedInfo":{"e":2}})";
  }
  std::string index;
  std::string data;
  for (const TestFrame& frame : frames) {
    index += bigEndianBytes(frame.sensorTime, 8) + bigEndianBytes(frame.arrivedTime, 8) +
             bigEndianBytes(8 + 28 * frames.size() + data.size(), 8) +
             bigEndianBytes(frame.bytes.size(), 4);
    data += frame.bytes;
  }
  return bigEndianBytes(8 + index.size() + data.size(), 8) + index + data + metaData;
}

std::string patched(std::string file, std::size_t offset, const std::string& bytes) {
  return file.replace(offset, bytes.size(), bytes);
}
