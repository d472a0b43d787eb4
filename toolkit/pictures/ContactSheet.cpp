#include "toolkit/pictures/ContactSheet.h"

#include <algorithm>

#include "jpeg/PictureFormat.h"
#include "scene/Canvas.h"
#include "toolkit/base/Failure.h"
#include "toolkit/frames/FrameLosses.h"
#include "toolkit/frames/FramePixels.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

namespace {

constexpr int kGap = 4;  // pixels between pictures
// Of a time, in dots: 23 characters of 6, and 7 rows with a gap above and below.
constexpr int kTextWidth = 145;
constexpr int kTextHeight = 9;
constexpr Color kGround = {24, 26, 30};
constexpr Color kMissing = {60, 62, 66};
constexpr Color kText = {225, 228, 232};

// The largest scale at which a picture is no wider than this.
SCALE_FACTOR_E sheetScale(unsigned short width) {
  constexpr int kWidest = 320;
  for (const SCALE_FACTOR_E scale : {SCALE_FACTOR_1_1_E, SCALE_FACTOR_1_2_E, SCALE_FACTOR_1_4_E}) {
    if (TJSCALED(width, detail::tjSalingFactor[scale]) <= kWidest) return scale;
  }
  return SCALE_FACTOR_1_8_E;
}

// Date and time of a capture, to the millisecond.
std::string timeUnder(std::uint64_t time) {
  std::string text = formatTime(time);
  if (time > kLastFormattedTime) return text;
  std::replace(text.begin(), text.end(), 'T', ' ');
  return text.substr(0, 23);
}

// Where the pictures and their times go.
struct Grid {
  Grid(const detail::ImageGeometry& picture, std::size_t count, unsigned int most)
      : width(static_cast<int>(picture.width)),
        height(static_cast<int>(picture.rows())),
        columns(static_cast<int>(std::min<std::size_t>(count, most))),
        rows(static_cast<int>((count + columns - 1) / columns)),
        dot(std::max(1, width / kTextWidth)) {}

  int cellWidth() const { return width + kGap; }
  int cellHeight() const { return height + kGap + kTextHeight * dot; }
  std::int64_t sheetWidth() const { return std::int64_t{columns} * cellWidth() + kGap; }
  std::int64_t sheetHeight() const { return std::int64_t{rows} * cellHeight() + kGap; }

  int width;
  int height;
  int columns;
  int rows;
  int dot;  // of the text
};

Canvas groundOf(const Grid& grid, const std::string& path) {
  constexpr std::int64_t kMostSide = 65500;
  constexpr std::int64_t kMostPixels = 200'000'000;
  const std::int64_t width = grid.sheetWidth();
  const std::int64_t height = grid.sheetHeight();
  if (width > kMostSide || height > kMostSide || width * height > kMostPixels) {
    throw Failure(path,
                  "a sheet of so many pictures would have " + std::to_string(width) + "x" +
                      std::to_string(height) + " pixels",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  Canvas canvas(static_cast<unsigned int>(width), static_cast<unsigned int>(height));
  canvas.rectangle(0, 0, static_cast<double>(width), static_cast<double>(height), kGround);
  return canvas;
}

}  // namespace

std::vector<unsigned int> spread(const std::vector<unsigned int>& frames, std::size_t count) {
  if (frames.size() <= count) return frames;
  std::vector<unsigned int> chosen;
  chosen.reserve(count);
  for (std::size_t i = 0; i < count; ++i) chosen.push_back(frames[i * frames.size() / count]);
  return chosen;
}

Picture drawContactSheet(const Recording& recording, const std::vector<unsigned int>& frames,
                         unsigned int columns, Job& job) {
  FramePixels source(recording, {.scale = sheetScale(recording.description().width)});
  const Grid grid(source.geometry(), frames.size(), columns);
  Canvas canvas = groundOf(grid, recording.path());
  const auto stage = job.begin(recording.path(), frames.size());
  std::vector<std::uint8_t> pixels(source.geometry().size());
  FrameLosses losses;
  std::size_t done = 0;
  for (; done < frames.size() && !stage->stopRequested(); stage->advance(++done)) {
    const int column = static_cast<int>(done) % grid.columns;
    const int left = kGap + column * grid.cellWidth();
    const int top = kGap + static_cast<int>(done) / grid.columns * grid.cellHeight();
    if (const FrameFlaw flaw = source.read(frames[done], pixels.data())) {
      losses.add(frames[done], flaw);
      canvas.rectangle(left, top, left + grid.width, top + grid.height, kMissing);
    } else {
      canvas.picture(pixels.data(), grid.width, grid.height, left, top);
    }
    canvas.text(timeUnder(recording.sensorTime(frames[done])), left, top + grid.height + grid.dot,
                grid.dot, kText);
  }
  losses.report(recording.path(), frames.size(), job);
  if (done < frames.size()) job.loseRest(recording.path(), done, frames.size());
  const std::size_t size = std::size_t{3} * canvas.width() * canvas.height();
  return {static_cast<unsigned short>(canvas.width()),
          static_cast<unsigned short>(canvas.height()),
          false,
          {canvas.pixels(), canvas.pixels() + size}};
}

}  // namespace velmar::toolkit
