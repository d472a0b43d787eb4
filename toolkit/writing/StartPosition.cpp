#include "toolkit/writing/StartPosition.h"

#include <cmath>
#include <vector>

#include "toolkit/base/Failure.h"
#include "toolkit/recording/RecordingDescription.h"
#include "toolkit/text/NumberText.h"

namespace velmar::toolkit {

namespace {

constexpr int kQuarterCircle = 1 << 30;  // NDS units
constexpr double kRoundingError = 1e-6;  // of a product of decimal numbers
constexpr double kHighest = 2e7;         // metres, which 32 bits hold as hundredths

// None if one of them is not a number.
std::vector<double> numbersOf(std::string_view text) {
  std::vector<double> numbers;
  while (true) {
    const std::size_t comma = text.find(',');
    const auto number = numberOf<double>(text.substr(0, comma));
    if (!number || !std::isfinite(*number)) return {};
    numbers.push_back(*number);
    if (comma == text.npos) return numbers;
    text.remove_prefix(comma + 1);
  }
}

}  // namespace

StartPosition parseStartPosition(const std::string& text) {
  const std::vector<double> numbers = numbersOf(text);
  const bool isPlace = (numbers.size() == 2 || numbers.size() == 3) &&
                       std::abs(numbers[0]) <= 180 && std::abs(numbers[1]) < 90 &&
                       std::abs(nearestNds(numbers[1])) < kQuarterCircle;
  if (!isPlace) {
    throw UsageError("--start-position is LNG,LAT or LNG,LAT,ALT in degrees and metres");
  }
  StartPosition position{nearestNds(numbers[0]), nearestNds(numbers[1]), {}};
  if (numbers.size() < 3) return position;
  if (std::abs(numbers[2]) > kHighest) {
    throw UsageError("--start-position: that is not an altitude");
  }
  position.alt = numbers[2];
  return position;
}

StoredAltitude storedAltitude(double metres, version_e version) {
  const double units = metres * altitudesPerMetre(version);
  const double nearest = std::round(units);
  return {static_cast<int>(nearest), std::abs(nearest - units) <= kRoundingError};
}

}  // namespace velmar::toolkit
