// The Python package, in an interpreter inside this process: both sides decode to the same memory.
#include <pybind11/embed.h>
#include <pybind11/numpy.h>
#include <pybind11/stl.h>
#include <sys/mman.h>

#include <cstdlib>
#include <memory>
#include <random>

#include "Bench.h"
#include "Files.h"
#include "Peers.h"

namespace py = pybind11;

namespace {

constexpr std::size_t kFrameSize = std::size_t{3} * kWidth * kHeight;
constexpr unsigned int kFrames = 6;  // in a run

constexpr char kWork[] = R"(
import sys
sys.path.insert(0, folder)
import velmar_video as vv

def frame_into(recording, frames, out):
    for i in frames:
        recording.frame(i, out=out)

def frame_fresh(recording, frames):
    for i in frames:
        recording[i]

def width(recording, frames):
    for i in frames:
        recording.width

def jpeg_view(recording, frames):
    for i in frames:
        recording.jpeg_view(i)
)";

// What kWork defines.
py::dict& work() {
  static const py::scoped_interpreter interpreter;
  static py::dict names = [] {
    py::dict made;
    made["folder"] = VELMAR_PYTHON;
    py::exec(kWork, made);
    return made;
  }();
  return names;
}

py::object openInPython(Container container) {
  return work()["vv"].attr("open")(cameraRecording(container));
}

std::vector<unsigned int> randomFrames(unsigned int count) {
  std::mt19937 random(1);
  std::vector<unsigned int> frames(count);
  for (unsigned int& frame : frames) frame = static_cast<unsigned int>(random() % cameraFrames());
  return frames;
}

// Memory for some frames, where the system gives huge pages as numpy asks for them.
class Pixels {
 public:
  explicit Pixels(unsigned int frames)
      : frames_(frames), bytes_(static_cast<unsigned char*>(std::malloc(frames * kFrameSize))) {
    constexpr std::size_t kPage = 1 << 12;
    require(bytes_ != nullptr, "no memory");
    const std::size_t size = frames * kFrameSize;
    const std::size_t untilPage = -reinterpret_cast<std::size_t>(bytes_.get()) % kPage;
    if (size > 1 << 22) ::madvise(bytes_.get() + untilPage, size - untilPage, MADV_HUGEPAGE);
  }

  unsigned char* frame(unsigned int i) { return bytes_.get() + i * kFrameSize; }
  // Does not own them.
  py::array array() const {
    std::vector<py::ssize_t> shape{frames_, kHeight, kWidth, 3};
    if (frames_ == 1) shape.erase(shape.begin());
    return py::array_t<unsigned char>(shape, bytes_.get(), py::capsule(bytes_.get()));
  }

 private:
  struct Free {
    void operator()(unsigned char* bytes) const { std::free(bytes); }
  };
  unsigned int frames_;
  std::unique_ptr<unsigned char, Free> bytes_;
};

void decode(VelmarVideoFileReader& reader, unsigned int frame, unsigned char* pixels) {
  require(reader.getImage(frame, kFrameSize, pixels, VELMAR_FORMAT_RGB_E, SCALE_FACTOR_1_1_E, 0,
                          0) == VELMAR_ERROR_CODE_SUCCESS_E,
          "frame not decoded");
}

Row frameIntoRow(Container container) {
  const auto pixels = std::make_shared<Pixels>(1);
  const auto frames = randomFrames(kFrames);
  const auto reader = openReader(cameraRecording(container));
  const py::object call = work()["frame_into"];
  return {.limitName = "getImage()",
          .limit =
              [=] {
                const CpuTimer timer;
                for (const unsigned int i : frames) decode(*reader, i, pixels->frame(0));
                return timer.seconds();
              },
          .ours =
              [=, recording = openInPython(container), numbers = py::cast(frames)] {
                const py::array out = pixels->array();
                const CpuTimer timer;
                call(recording, numbers, out);
                return timer.seconds();
              },
          .reach = 1.02,
          .reachExtra = {},
          .operations = kFrames};
}

Row frameRow(Container container) {
  const auto frames = randomFrames(kFrames);
  const auto reader = openReader(cameraRecording(container));
  const py::object call = work()["frame_fresh"];
  return {.limitName = "getImage() into fresh memory",
          .limit =
              [=] {
                const CpuTimer timer;
                for (const unsigned int i : frames) decode(*reader, i, Pixels(1).frame(0));
                return timer.seconds();
              },
          .ours =
              [=, recording = openInPython(container), numbers = py::cast(frames)] {
                const CpuTimer timer;
                call(recording, numbers);
                return timer.seconds();
              },
          .reach = 1.05,
          .reachExtra = {},
          .peers = pythonPeers(frames),
          .operations = kFrames};
}

// \param isFresh  whether the frames' memory is, for both sides
Row framesRow(bool isFresh) {
  const unsigned int count = frameCount(256);
  const auto kept = std::make_shared<Pixels>(isFresh ? 1 : count);
  const auto reader = openReader(cameraRecording(Container::Img));
  const auto recording = openInPython(Container::Img);
  const auto limit = [=] {
    const WallTimer timer;
    Pixels fresh(isFresh ? count : 1);
    for (unsigned int i = 0; i < count; ++i) {
      decode(*reader, i, isFresh ? fresh.frame(i) : kept->frame(0));
    }
    return timer.seconds() / 2;
  };
  const auto ours = [=] {
    py::dict arguments(py::arg("threads") = 2);
    if (!isFresh) arguments["out"] = kept->array();
    const py::object numbers = py::module_::import("builtins").attr("range")(count);
    const WallTimer timer;
    recording.attr("frames")(numbers, **arguments);
    return timer.seconds();
  };
  return {.limitName = isFresh ? "half of getImage() for each into fresh memory"
                               : "half of getImage() for each into one buffer",
          .limit = limit,
          .ours = ours,
          .reach = 1.15,
          .reachExtra = {},
          .operations = count};
}

Row jpegViewRow() {
  const auto frames = randomFrames(frameCount(1000));
  const auto side = [&](const char* name) -> Side {
    return [call = py::object(work()[name]), recording = openInPython(Container::Img),
            numbers = py::cast(frames)] {
      const CpuTimer timer;
      call(recording, numbers);
      return timer.seconds();
    };
  };
  return {.limitName = "an attribute, recording.width",
          .limit = side("width"),
          .ours = side("jpeg_view"),
          .reach = 5,
          .reachExtra = {},
          .operations = static_cast<unsigned int>(frames.size())};
}

}  // namespace

void addPythonRows() {
  constexpr int kManyRepetitions = 45;
  constexpr int kLongRepetitions = 7;
  for (const Container container : {Container::Img, Container::Rtv03}) {
    const std::string name = extension(container);
    addRow(
        "Python: frame(i, out=a), " + name, [=] { return frameIntoRow(container); },
        kManyRepetitions);
    addRow("Python: recording[i], " + name, [=] { return frameRow(container); });
  }
  addRow(
      "Python: 256 frames(out=a) by 2 threads", [] { return framesRow(false); }, kLongRepetitions);
  addRow(
      "Python: 256 frames() by 2 threads", [] { return framesRow(true); }, kLongRepetitions);
  addRow("Python: jpeg_view(i)", jpegViewRow);
}
