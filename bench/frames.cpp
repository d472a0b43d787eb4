#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>
#include <random>

#include "Bench.h"
#include "Files.h"
#include "Peers.h"

namespace {

using Buffer = std::shared_ptr<std::vector<unsigned char>>;

Buffer frameBuffer() {
  return std::make_shared<std::vector<unsigned char>>(Frames::camera().largest());
}

// The same every time.
std::vector<unsigned int> randomOrder(unsigned int count) {
  std::vector<unsigned int> order(cameraFrames());
  std::iota(order.begin(), order.end(), 0U);
  std::shuffle(order.begin(), order.end(), std::mt19937(1));
  order.resize(count);
  return order;
}

std::vector<unsigned int> filesOrder() {
  std::vector<unsigned int> order(cameraFrames());
  std::iota(order.begin(), order.end(), 0U);
  return order;
}

double copyBare(const Mapped& file, const std::vector<Place>& places,
                const std::vector<unsigned int>& order, std::vector<unsigned char>& buffer) {
  const CpuTimer timer;
  for (const unsigned int frame : order) {
    std::memcpy(buffer.data(), file.data() + places[frame].offset, places[frame].size);
  }
  return timer.seconds();
}

double copyOurs(VelmarVideoFileReader& reader, const std::vector<unsigned int>& order,
                std::vector<unsigned char>& buffer) {
  const auto size = static_cast<unsigned int>(buffer.size());
  const CpuTimer timer;
  for (const unsigned int frame : order) {
    require(reader.getRawImage(frame, size, buffer.data()) == VELMAR_ERROR_CODE_SUCCESS_E,
            "frame not read");
  }
  return timer.seconds();
}

Row randomFrames(Container container) {
  const std::string path = cameraRecording(container);
  const auto places = framePlaces(path);
  const auto buffer = frameBuffer();
  const auto order = randomOrder(frameCount(256));
  const auto file = std::make_shared<Mapped>(path);
  const std::shared_ptr<VelmarVideoFileReader> reader = openReader(path);
  copyBare(*file, places, filesOrder(), *buffer);
  copyOurs(*reader, filesOrder(), *buffer);
  return {.limitName = "memcpy from a warm map",
          .limit = [=] { return copyBare(*file, places, order, *buffer); },
          .ours = [=] { return copyOurs(*reader, order, *buffer); },
          .reach = 1.1,
          .reachExtra = {},
          .peers = seekingPeers(order),
          .operations = static_cast<unsigned int>(order.size())};
}

double copyFromFreshMap(const std::string& path, const std::vector<Place>& places,
                        std::vector<unsigned char>& buffer) {
  const Mapped file(path);
  return copyBare(file, places, filesOrder(), buffer);
}

Row framesInOrder(Container container, bool secondPass, double reach) {
  const std::string path = cameraRecording(container);
  const auto places = framePlaces(path);
  const auto buffer = frameBuffer();
  return {.limitName = "memcpy from a fresh map",
          .limit = [=] { return copyFromFreshMap(path, places, *buffer); },
          .ours =
              [=] {
                const auto reader = openReader(path);
                if (secondPass) copyOurs(*reader, filesOrder(), *buffer);
                return copyOurs(*reader, filesOrder(), *buffer);
              },
          .reach = reach,
          .reachExtra = {},
          .peers = secondPass ? std::vector<Contender>() : readingPeers(cameraFrames()),
          .operations = cameraFrames()};
}

}  // namespace

void addFramesRows() {
  for (const Container container : {Container::Img, Container::Rtv03}) {
    const std::string of = std::string(" of an ") + extension(container);
    addRow("raw frame" + of + ", random order, warm", [=] { return randomFrames(container); });
    addRow("raw frames" + of + " in order, first pass",
           [=] { return framesInOrder(container, false, 1.03); });
    addRow("raw frames" + of + " in order, second pass",
           [=] { return framesInOrder(container, true, 0.85); });
  }
}
