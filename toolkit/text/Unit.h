/// The units of the numbers in tables.
#ifndef VELMAR_TOOLKIT_UNIT_H
#define VELMAR_TOOLKIT_UNIT_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmar::toolkit {

enum class Dimension { None, Time, Speed, Angle, Length };

/// The dimension in words, "a time".
std::string dimensionName(Dimension dimension);

struct Unit {
  Dimension dimension = Dimension::None;
  std::string_view name;    ///< "km/h"
  std::string_view suffix;  ///< at the end of a column's name, "kmh"
  double size = 1;          ///< in metres a second, degrees or metres
  int exponent = 0;         ///< of a time: it is 10 to the power of that many microseconds
};

/// The unit of that name or suffix.
std::optional<Unit> unitNamed(Dimension dimension, std::string_view name);
std::vector<std::string> unitNames(Dimension dimension);
/// As they stand at the end of a name, one for each.
std::vector<std::string> unitSuffixes(Dimension dimension);

/// The unit at the end of a column's name in small letters, such as "speed_kmh" or "speed[km/h]",
/// and the name without it.
std::optional<std::pair<std::string, Unit>> splitUnit(std::string_view column, Dimension dimension);

}  // namespace velmar::toolkit

#endif
