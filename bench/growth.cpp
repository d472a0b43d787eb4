#include "Bench.h"
#include "Files.h"
#include "GrowingFile.h"
#include "OpenRows.h"

// How cost grows with the number of frames, their size and the size of the file. These rows have no
// figure to reach.
void addGrowthRows() {
  for (const std::size_t size : {1000, 10000, 100000, 1000000}) {
    for (const Container container : {Container::Img, Container::Rtv03}) {
      addRow("add a frame of " + std::to_string(size) + " bytes to an " + extension(container),
             [=] { return addingRow(container, Frames::ofSize(size), 100, {}); });
    }
  }
  for (const unsigned int frame : {1000U, 10000U, 30000U}) {
    addRow("add a camera frame to an rtv, at frame " + std::to_string(frame),
           [=] { return addingRow(Container::Rtv03, Frames::camera(), frameCount(frame), {}); });
  }
  for (const unsigned int full : {1000U, 10000U, 50000U}) {
    const unsigned int count = frameCount(full);
    const std::string frames = ", " + std::to_string(full) + " frames";
    addRow("open img" + frames, [=] { return openImgRow(count, {}); });
    addRow("open rtv 03" + frames, [=] { return openRtvRow(Container::Rtv03, count, {}); });
    addRow("open rtv 04" + frames, [=] { return openRtvRow(Container::Rtv04, count, {}); });
  }
}
