#include <pybind11/embed.h>
#include <pybind11/stl.h>

#include "LibavFile.h"
#include "Peers.h"

namespace py = pybind11;

namespace {

constexpr char kWork[] = R"(
import av
import cv2

av.logging.set_level(av.logging.PANIC)

class OpenCV:
    def __init__(self, path):
        self.capture = cv2.VideoCapture(path)

    def __call__(self, frames):
        for i in frames:
            self.capture.set(cv2.CAP_PROP_POS_FRAMES, i)
            cv2.cvtColor(self.capture.read()[1], cv2.COLOR_BGR2RGB)

class PyAV:
    def __init__(self, path):
        self.container = av.open(path)
        self.stream = self.container.streams.video[0]
        self.stream.thread_type = "NONE"

    def __call__(self, frames):
        for i in frames:
            time = i / 30
            self.container.seek(int(time / self.stream.time_base + 0.5), stream=self.stream)
            for frame in self.container.decode(self.stream):
                if frame.time >= time - 0.001:
                    frame.to_ndarray(format="rgb24")
                    break
)";

}  // namespace

std::vector<Contender> pythonPeers(const std::vector<unsigned int>& order) {
  py::dict names;
  py::exec(kWork, names);
  std::vector<Contender> peers;
  for (const char* name : {"OpenCV", "PyAV"}) {
    for (const LibavContainer& container : kContainers) {
      peers.push_back({std::string(name) + " of " + container.name,
                       [read = names[name](cameraFile(container)), frames = py::cast(order)] {
                         const CpuTimer timer;
                         read(frames);
                         return timer.seconds();
                       }});
    }
  }
  return peers;
}
