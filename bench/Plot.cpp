#include "Plot.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "Report.h"

namespace {

// Pixels.
constexpr double kLabelWidth = 470;
constexpr double kScaleWidth = 620;
constexpr double kMargin = 20;
constexpr double kRowHeight = 24;
constexpr double kTop = 84;

constexpr double kLowest = 0.5;  // ratio at the scale's left end

constexpr char kReached[] = "#2e7d5b";
constexpr char kMissed[] = "#c0392b";
constexpr char kNeutral[] = "#6b7a8f";

// Where a ratio lies on the picture.
class Scale {
 public:
  explicit Scale(double highest) : highest_(highest) {}

  double highest() const { return highest_; }
  double at(double ratio) const {
    const double part = std::log(std::clamp(ratio, kLowest, highest_) / kLowest);
    return kLabelWidth + kScaleWidth * part / std::log(highest_ / kLowest);
  }

 private:
  double highest_;
};

std::string escaped(const std::string& text) {
  std::string result;
  for (const char character : text) {
    if (character == '<') {
      result += "&lt;";
    } else if (character == '&') {
      result += "&amp;";
    } else {
      result += character;
    }
  }
  return result;
}

const char* color(const Result& result) {
  const auto reached = result.isReached();
  return !reached ? kNeutral : *reached ? kReached : kMissed;
}

std::vector<Result> withRatio(const std::vector<Result>& results) {
  std::vector<Result> chosen;
  std::copy_if(results.begin(), results.end(), std::back_inserter(chosen),
               [](const Result& result) { return result.ours.ratio.has_value(); });
  return chosen;
}

Scale scaleFor(const std::vector<Result>& rows) {
  double highest = 2;
  for (const Result& row : rows) {
    highest = std::max(highest, row.ours.ratio->high);
    for (const Measured& peer : row.peers) highest = std::max(highest, peer.ratio->median);
  }
  return Scale(highest * 1.2);
}

void drawText(std::ostream& svg, double x, double y, const char* attributes,
              const std::string& text) {
  svg << "<text x='" << x << "' y='" << y << "' " << attributes << ">" << escaped(text)
      << "</text>\n";
}

void drawLine(std::ostream& svg, double x1, double y1, double x2, double y2,
              const char* attributes) {
  svg << "<line x1='" << x1 << "' y1='" << y1 << "' x2='" << x2 << "' y2='" << y2 << "' "
      << attributes << "/>\n";
}

void drawGrid(std::ostream& svg, const Scale& scale, double bottom) {
  for (const double ratio : {0.5, 0.7, 1.0, 1.5, 2.0, 3.0, 5.0, 10.0, 20.0, 50.0, 100.0}) {
    if (ratio > scale.highest()) break;
    const char* stroke = ratio == 1.0 ? "stroke='#333'" : "stroke='#ddd'";
    drawLine(svg, scale.at(ratio), kTop - 10, scale.at(ratio), bottom, stroke);
    std::ostringstream label;
    label << ratio;
    drawText(svg, scale.at(ratio), kTop - 16, "text-anchor='middle' fill='#555'", label.str());
  }
}

void drawRow(std::ostream& svg, const Scale& scale, const Result& row, double top) {
  const Quartiles& ratio = *row.ours.ratio;
  const double middle = top + kRowHeight / 2;
  drawText(svg, kLabelWidth - 8, middle + 4, "text-anchor='end'", row.name);
  const double from = scale.at(std::min(1.0, ratio.median));
  const double to = scale.at(std::max(1.0, ratio.median));
  svg << "<rect x='" << from << "' y='" << middle - 5 << "' width='" << std::max(2.0, to - from)
      << "' height='10' fill='" << color(row) << "'/>\n";
  drawLine(svg, scale.at(ratio.low), middle, scale.at(ratio.high), middle, "stroke='#000'");
  if (const auto reach = reachRatio(row)) {
    drawLine(svg, scale.at(*reach), middle - 9, scale.at(*reach), middle + 9,
             "stroke='#e6a100' stroke-width='3'");
  }
  double labelY = middle - 3;
  for (const Measured& peer : row.peers) {
    const double x = scale.at(peer.ratio->median);
    svg << "<circle cx='" << x << "' cy='" << middle << "' r='4' fill='#4061b5'/>\n";
    drawText(svg, x + 6, labelY, "font-size='9' fill='#4061b5'", peer.name);
    labelY += 11;  // two often lie side by side
  }
}

}  // namespace

std::string plot(const std::vector<Result>& results) {
  const std::vector<Result> rows = withRatio(results);
  const Scale scale = scaleFor(rows);
  const double bottom = kTop + kRowHeight * static_cast<double>(rows.size());
  const double width = kLabelWidth + kScaleWidth + kMargin;
  std::ostringstream svg;
  svg << "<svg xmlns='http://www.w3.org/2000/svg' width='" << width << "' height='"
      << bottom + kMargin << "' font-family='sans-serif' font-size='12'>\n"
      << "<rect width='100%' height='100%' fill='white'/>\n";
  drawText(svg, kMargin, 24, "font-size='16'", "Time or memory, as a multiple of the limit");
  drawText(svg, kMargin, 42, "fill='#555'",
           "bar: ours, median, with the middle half as a line (green: reached, red: missed); "
           "yellow: the aim; blue: peers");
  drawGrid(svg, scale, bottom);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    drawRow(svg, scale, rows[i], kTop + kRowHeight * static_cast<double>(i));
  }
  svg << "</svg>\n";
  return svg.str();
}
