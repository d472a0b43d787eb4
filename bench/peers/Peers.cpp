#include "Peers.h"

#include <filesystem>
#include <memory>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>

#include "Files.h"
#include "LibavFile.h"

namespace {

double writeOnce(const LibavContainer& container, const Frames& frames, unsigned int count) {
  const std::string path = Workspace::path(std::string("written") + container.extension);
  const WallTimer timer;
  writeLibavFile(path, frames, count);
  const double seconds = timer.seconds();
  std::filesystem::remove(path);
  return seconds;
}

}  // namespace

std::vector<Contender> writingPeers(const Frames& frames, unsigned int count) {
  std::vector<Contender> peers;
  for (const LibavContainer& container : kContainers) {
    peers.push_back({container.name, [=] { return writeOnce(container, frames, count); }});
  }
  return peers;
}

std::vector<Contender> openingPeers(const Frames& frames, const std::string& framesName,
                                    unsigned int count) {
  std::vector<Contender> peers;
  for (const LibavContainer& container : kContainers) {
    const std::string path = libavFile(container, frames, framesName, count);
    peers.push_back({container.name, [=] {
                       const CpuTimer timer;
                       LibavReader reader(path);
                       reader.readNext();
                       return timer.seconds();
                     }});
  }
  return peers;
}

std::vector<Contender> readingPeers(unsigned int count) {
  std::vector<Contender> peers;
  for (const LibavContainer& container : kContainers) {
    const std::string path = cameraFile(container);
    peers.push_back({container.name, [=] {
                       LibavReader reader(path);
                       const CpuTimer timer;
                       for (unsigned int i = 0; i < count; ++i) reader.readNext();
                       return timer.seconds();
                     }});
  }
  return peers;
}

std::vector<Contender> seekingPeers(const std::vector<unsigned int>& order) {
  std::vector<Contender> peers;
  for (const LibavContainer& container : kContainers) {
    const auto reader = std::make_shared<LibavReader>(cameraFile(container));
    peers.push_back({container.name, [=] {
                       const CpuTimer timer;
                       for (const unsigned int frame : order) reader->readFrame(frame);
                       return timer.seconds();
                     }});
  }
  return peers;
}

std::vector<Contender> decodingPeers(unsigned int count, unsigned int denominator) {
  const int mode = denominator == 1 ? cv::IMREAD_COLOR : cv::IMREAD_REDUCED_COLOR_2;
  const auto picture = std::make_shared<cv::Mat>();
  const auto decode = [=] {
    const CpuTimer timer;
    for (unsigned int i = 0; i < count; ++i) {
      const std::string& jpeg = Frames::camera()[i];
      const cv::Mat bytes(1, static_cast<int>(jpeg.size()), CV_8U, const_cast<char*>(jpeg.data()));
      cv::imdecode(bytes, mode, picture.get());
      require(!picture->empty(), "frame not decoded by the peer");
    }
    return timer.seconds();
  };
  return {{"OpenCV", decode}};
}

std::vector<Contender> seekingDecodePeers(const std::vector<unsigned int>& order) {
  std::vector<Contender> peers;
  for (const LibavContainer& container : kContainers) {
    const auto capture = std::make_shared<cv::VideoCapture>(cameraFile(container));
    require(capture->isOpened(), "no capture by the peer");
    const auto picture = std::make_shared<cv::Mat>();
    peers.push_back({std::string("OpenCV of ") + container.name, [=] {
                       const CpuTimer timer;
                       for (const unsigned int frame : order) {
                         capture->set(cv::CAP_PROP_POS_FRAMES, frame);
                         require(capture->read(*picture), "frame not captured by the peer");
                       }
                       return timer.seconds();
                     }});
  }
  return peers;
}

std::string listablePeerFile(unsigned int count) {
  return libavFile(kContainers[1], Frames::small(), "small", count);
}
