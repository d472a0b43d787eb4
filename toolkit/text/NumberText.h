/// Numbers as text, independent of the locale.
#ifndef VELMAR_TOOLKIT_NUMBER_TEXT_H
#define VELMAR_TOOLKIT_NUMBER_TEXT_H

#include <charconv>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

namespace velmar::toolkit {

/// The shortest text that gives the value back.
template <typename T>
std::string numberText(T value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value);
  return {text, end.ptr};
}

/// The same without an exponent.
inline std::string plainText(double value) {
  char text[400];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed);
  return {text, end.ptr};
}

/// "1 file", "2 files"
inline std::string counted(std::uint64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

/// "frame 3", "frames 3 to 7"
inline std::string framesText(std::uint64_t first, std::uint64_t last) {
  const std::string text = std::to_string(first);
  return first == last ? "frame " + text : "frames " + text + " to " + std::to_string(last);
}

/// The value of a text that is a number and nothing else.
template <typename T>
std::optional<T> numberOf(std::string_view text) {
  T value{};
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return value;
}

/// The same text with a point in the place of a decimal comma.
inline std::string withDecimalPoint(std::string_view text) {
  std::string plain(text);
  const std::size_t comma = plain.find(',');
  if (comma != plain.npos && plain.find('.') == plain.npos) plain[comma] = '.';
  return plain;
}

/// With that many digits behind the point.
inline std::string fixedText(double value, int digits) {
  char text[400];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, digits);
  return {text, end.ptr};
}

/// "20.5 GiB"
inline std::string sizeText(std::uint64_t bytes) {
  if (bytes < 1024) return std::to_string(bytes) + " bytes";
  const char* const units[] = {"KiB", "MiB", "GiB", "TiB"};
  double size = static_cast<double>(bytes) / 1024;
  std::size_t unit = 0;
  for (; size >= 1024 && unit + 1 < std::size(units); ++unit) size /= 1024;
  return fixedText(size, 1) + " " + units[unit];
}

/// Degrees down to a tenth of a millimetre on the ground.
inline std::string degreesText(double degrees) { return fixedText(degrees, 9); }

}  // namespace velmar::toolkit

#endif
