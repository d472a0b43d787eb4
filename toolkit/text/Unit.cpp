#include "toolkit/text/Unit.h"

#include <algorithm>
#include <array>
#include <numbers>

namespace velmar::toolkit {

namespace {

constexpr std::array kUnits = {
    Unit{Dimension::Time, "s", "s", 1, 6},
    Unit{Dimension::Time, "ms", "ms", 1, 3},
    Unit{Dimension::Time, "us", "us", 1, 0},
    Unit{Dimension::Time, "ns", "ns", 1, -3},
    Unit{Dimension::Speed, "m/s", "m_s", 1},
    Unit{Dimension::Speed, "m/s", "mps", 1},
    Unit{Dimension::Speed, "km/h", "km_h", 1 / 3.6},
    Unit{Dimension::Speed, "km/h", "kmh", 1 / 3.6},
    Unit{Dimension::Speed, "km/h", "kph", 1 / 3.6},
    Unit{Dimension::Speed, "mph", "mph", 0.44704},
    Unit{Dimension::Angle, "deg", "deg", 1},
    Unit{Dimension::Angle, "rad", "rad", 180 / std::numbers::pi},
    Unit{Dimension::Length, "m", "m", 1},
    Unit{Dimension::Length, "cm", "cm", 0.01},
    Unit{Dimension::Length, "ft", "ft", 0.3048},
};

// Each unit once, by the first of its suffixes.
std::vector<Unit> mainUnits(Dimension dimension) {
  std::vector<Unit> units;
  for (const Unit& unit : kUnits) {
    if (unit.dimension != dimension || (!units.empty() && units.back().name == unit.name)) continue;
    units.push_back(unit);
  }
  return units;
}

}  // namespace

std::string dimensionName(Dimension dimension) {
  switch (dimension) {
    case Dimension::Time:
      return "a time";
    case Dimension::Speed:
      return "a speed";
    case Dimension::Angle:
      return "an angle";
    case Dimension::Length:
      return "a length";
    default:
      return "a number without a unit";
  }
}

std::optional<Unit> unitNamed(Dimension dimension, std::string_view name) {
  const auto* const found = std::find_if(kUnits.begin(), kUnits.end(), [&](const Unit& unit) {
    return unit.dimension == dimension && (unit.name == name || unit.suffix == name);
  });
  if (found == kUnits.end()) return std::nullopt;
  return *found;
}

std::vector<std::string> unitNames(Dimension dimension) {
  std::vector<std::string> names;
  for (const Unit& unit : mainUnits(dimension)) names.emplace_back(unit.name);
  return names;
}

std::vector<std::string> unitSuffixes(Dimension dimension) {
  std::vector<std::string> suffixes;
  for (const Unit& unit : mainUnits(dimension)) suffixes.emplace_back(unit.suffix);
  return suffixes;
}

std::optional<std::pair<std::string, Unit>> splitUnit(std::string_view column,
                                                      Dimension dimension) {
  if (column.ends_with(']') || column.ends_with(')')) {
    const std::size_t begin = column.find_last_of("[(");
    if (begin == column.npos) return std::nullopt;
    const auto unit = unitNamed(dimension, column.substr(begin + 1, column.size() - begin - 2));
    if (!unit) return std::nullopt;
    return std::pair(std::string(column.substr(0, begin)), *unit);
  }
  for (const Unit& unit : kUnits) {
    if (unit.dimension != dimension || !column.ends_with(unit.suffix)) continue;
    const std::string_view name = column.substr(0, column.size() - unit.suffix.size());
    if (name.ends_with('_')) return std::pair(std::string(name.substr(0, name.size() - 1)), unit);
  }
  return std::nullopt;
}

}  // namespace velmar::toolkit
