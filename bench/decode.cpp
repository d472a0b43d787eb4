#include <turbojpeg.h>

#include <memory>
#include <random>

#include "Bench.h"
#include "Files.h"
#include "Peers.h"

namespace {

constexpr unsigned int kDecodes = 6;  // in a run

// How a picture is to come out.
struct Output {
  unsigned int denominator;
  unsigned short cropTop;
  unsigned short cropBottom;

  SCALE_FACTOR_E scale() const {
    return denominator == 1 ? SCALE_FACTOR_1_1_E : SCALE_FACTOR_1_2_E;
  }
};

// One handle and one buffer, kept.
class BareDecoder {
 public:
  explicit BareDecoder(unsigned int denominator)
      : width_(static_cast<int>(kWidth / denominator)),
        height_(static_cast<int>(kHeight / denominator)),
        pixels_(std::size_t{3} * kWidth * kHeight) {}
  ~BareDecoder() { tjDestroy(handle_); }
  BareDecoder(const BareDecoder&) = delete;
  BareDecoder& operator=(const BareDecoder&) = delete;

  void decode(const unsigned char* jpeg, std::size_t size) {
    require(
        tjDecompress2(handle_, jpeg, size, pixels_.data(), width_, 0, height_, TJPF_BGR, 0) == 0,
        "frame not decoded");
  }

  // For ours as well: where a picture lies in memory makes a difference.
  unsigned char* pixels() { return pixels_.data(); }

 private:
  tjhandle handle_ = tjInitDecompress();
  int width_;
  int height_;
  std::vector<unsigned char> pixels_;
};

void decodeOurs(VelmarVideoFileReader& reader, unsigned int frame, const Output& output,
                unsigned char* pixels) {
  unsigned int size = 0;
  reader.getImageSizeInBytes(size, VELMAR_FORMAT_BGR_E, output.scale(), output.cropTop,
                             output.cropBottom, nullptr, nullptr);
  require(reader.getImage(frame, size, pixels, VELMAR_FORMAT_BGR_E, output.scale(), output.cropTop,
                          output.cropBottom) == VELMAR_ERROR_CODE_SUCCESS_E,
          "frame not decoded");
}

Row decodeRow(Container container, const Output& output, double reach) {
  const auto bare = std::make_shared<BareDecoder>(output.denominator);
  const std::shared_ptr<VelmarVideoFileReader> reader = openReader(cameraRecording(container));
  const auto limit = [=] {
    const CpuTimer timer;
    for (unsigned int i = 0; i < kDecodes; ++i) {
      const std::string& jpeg = Frames::camera()[i];
      bare->decode(reinterpret_cast<const unsigned char*>(jpeg.data()), jpeg.size());
    }
    return timer.seconds();
  };
  const auto ours = [=] {
    const CpuTimer timer;
    for (unsigned int i = 0; i < kDecodes; ++i) decodeOurs(*reader, i, output, bare->pixels());
    return timer.seconds();
  };
  return {.limitName = "bare tjDecompress2",
          .limit = limit,
          .ours = ours,
          .reach = reach,
          .reachExtra = {},
          .peers = decodingPeers(kDecodes, output.denominator),
          .operations = kDecodes};
}

std::vector<unsigned int> randomFrames() {
  std::mt19937 random(1);
  std::vector<unsigned int> frames(kDecodes);
  for (unsigned int& frame : frames) frame = static_cast<unsigned int>(random() % cameraFrames());
  return frames;
}

Row randomDecodeRow(Container container) {
  const Output whole{1, 0, 0};
  const std::string path = cameraRecording(container);
  const auto bare = std::make_shared<BareDecoder>(whole.denominator);
  const auto file = std::make_shared<Mapped>(path);
  const auto places = framePlaces(path);
  const auto frames = randomFrames();
  const std::shared_ptr<VelmarVideoFileReader> reader = openReader(path);
  const auto limit = [=] {
    const CpuTimer timer;
    for (const unsigned int frame : frames) {
      bare->decode(file->data() + places[frame].offset, places[frame].size);
    }
    return timer.seconds();
  };
  const auto ours = [=] {
    const CpuTimer timer;
    for (const unsigned int frame : frames) decodeOurs(*reader, frame, whole, bare->pixels());
    return timer.seconds();
  };
  return {.limitName = "tjDecompress2 straight from the map",
          .limit = limit,
          .ours = ours,
          .reach = 1.02,
          .reachExtra = {},
          .peers = seekingDecodePeers(frames),
          .operations = kDecodes};
}

}  // namespace

void addDecodeRows() {
  constexpr unsigned short kCut = kHeight * 15 / 100;  // at top and at bottom
  const struct {
    const char* name;
    Output output;
    double reach;
  } outputs[] = {{"1/1", {1, 0, 0}, 1.02},
                 {"1/2", {2, 0, 0}, 1.02},
                 {"1/1, 30 % of the rows cut", {1, kCut, kCut}, 1.12},
                 {"1/2, 30 % of the rows cut", {2, kCut, kCut}, 1.04}};
  for (const Container container : {Container::Img, Container::Rtv03}) {
    for (const auto& [name, output, reach] : outputs) {
      addRow(std::string("decode ") + extension(container) + " " + name,
             [=, output = output, reach = reach] { return decodeRow(container, output, reach); });
    }
    addRow(std::string("random frame of an ") + extension(container) + " to BGR",
           [=] { return randomDecodeRow(container); });
  }
}
