#include "toolkit/writing/NumberedName.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

namespace {

// "%04d", with one digit behind the zero.
std::optional<std::size_t> digitsOf(std::string_view conversion) {
  const bool isNumber = conversion.size() >= 4 && conversion.substr(0, 2) == "%0" &&
                        conversion[2] >= '1' && conversion[2] <= '9' && conversion[3] == 'd';
  if (!isNumber) return std::nullopt;
  return static_cast<std::size_t>(conversion[2] - '0');
}

// Where RFC 3339 has it, and how many digits.
std::optional<std::pair<std::size_t, std::size_t>> placeInTime(std::string_view conversion) {
  constexpr std::string_view kLetters = "YmdHMS";
  constexpr std::pair<std::size_t, std::size_t> kPlaces[] = {{0, 4},  {5, 2},  {8, 2},
                                                             {11, 2}, {14, 2}, {17, 2}};
  if (conversion.size() < 2 || conversion[0] != '%') return std::nullopt;
  const std::size_t letter = kLetters.find(conversion[1]);
  if (letter == kLetters.npos) return std::nullopt;
  return kPlaces[letter];
}

std::string padded(std::size_t number, std::size_t width) {
  const std::string digits = std::to_string(number);
  return std::string(width - std::min(width, digits.size()), '0') + digits;
}

}  // namespace

NumberedName::NumberedName(const std::string& path, bool isPattern) {
  const std::size_t name = path.rfind('/') + 1;  // 0 if there is no folder
  start_ = path.substr(0, name);
  pattern_ = path.substr(name);
  for (std::size_t at = 0; isPattern && at < pattern_.size(); ++at) {
    const std::string_view conversion = std::string_view(pattern_).substr(at);
    if (digitsOf(conversion) || placeInTime(conversion)) return;
  }
  const std::size_t dot = std::min(pattern_.rfind('.'), pattern_.size());
  // Nothing in it is a conversion, or is to be one.
  start_ += pattern_.substr(0, dot);
  pattern_ = "-%04d" + pattern_.substr(dot);
}

std::string NumberedName::at(std::size_t number, std::uint64_t time) const {
  const std::string text = formatTime(std::min(time, kLastFormattedTime));
  std::string name = start_;
  for (std::string_view rest = pattern_; !rest.empty();) {
    std::size_t used = 1;
    if (const auto digits = digitsOf(rest)) {
      name += padded(number, *digits);
      used = 4;
    } else if (const auto place = placeInTime(rest)) {
      name += text.substr(place->first, place->second);
      used = 2;
    } else {
      name += rest.front();
    }
    rest.remove_prefix(used);
  }
  return name;
}

}  // namespace velmar::toolkit
