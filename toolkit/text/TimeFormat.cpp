#include "toolkit/text/TimeFormat.h"

#include <algorithm>
#include <ctime>

#include "toolkit/text/NumberText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

namespace {

constexpr std::int64_t kSecond = 1000000;  // microseconds

bool isDigit(char character) { return character >= '0' && character <= '9'; }

// A decimal number times 10 to the power of `exponent`, by moving the point.
std::optional<std::int64_t> scaled(std::string_view text, int exponent) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const std::size_t point = std::min(text.find_first_of(".,"), text.size());
  std::string digits(text.substr(0, point));
  std::string fraction(text.substr(std::min(point + 1, text.size())));
  if (digits.empty() || !std::all_of(digits.begin(), digits.end(), isDigit) ||
      !std::all_of(fraction.begin(), fraction.end(), isDigit)) {
    return std::nullopt;
  }
  if (exponent < 0) {
    digits.resize(digits.size() - std::min(digits.size(), static_cast<std::size_t>(-exponent)));
  } else {
    fraction.resize(static_cast<std::size_t>(exponent), '0');
    digits += fraction;
  }
  const auto value = numberOf<std::int64_t>(digits.empty() ? "0" : digits);
  return value && negative ? -*value : value;
}

// Where the directive for seconds ends; npos if there is none.
std::size_t endOfSeconds(const std::string& pattern) {
  for (std::size_t at = 0; at + 1 < pattern.size(); ++at) {
    if (pattern[at] != '%') continue;
    ++at;
    if (pattern[at] == 'S' || pattern[at] == 'T') return at + 1;
  }
  return pattern.npos;
}

bool hasDirective(const std::string& pattern, char letter) {
  for (std::size_t at = 0; at + 1 < pattern.size(); ++at) {
    if (pattern[at] == '%' && pattern[++at] == letter) return true;
  }
  return false;
}

// Takes the fraction behind the seconds out of the text.
std::int64_t takeFraction(std::string& text, const std::string& pattern) {
  const std::size_t end = endOfSeconds(pattern);
  if (end == pattern.npos) return 0;
  std::tm ignored{};
  const char* const rest = ::strptime(text.c_str(), pattern.substr(0, end).c_str(), &ignored);
  if (rest == nullptr || (*rest != '.' && *rest != ',') || !isDigit(rest[1])) return 0;
  const auto begin = static_cast<std::size_t>(rest - text.c_str());
  std::size_t stop = begin + 1;
  while (stop < text.size() && isDigit(text[stop])) ++stop;
  std::string digits = text.substr(begin + 1, stop - begin - 1);
  digits.resize(6, '0');
  text.erase(begin, stop - begin);
  return numberOf<std::int64_t>(digits).value_or(0);
}

}  // namespace

std::optional<TimeFormat> TimeFormat::named(const std::string& name) {
  if (name.find('%') == name.npos) {
    const auto unit = unitNamed(Dimension::Time, name);
    if (!unit) return std::nullopt;
    return TimeFormat(*unit);
  }
  if (hasDirective(name, 'Z')) return std::nullopt;
  TimeFormat format;
  format.name_ = name;
  format.pattern_ = name;
  // "%S.%f", as Python has it.
  const std::size_t end = endOfSeconds(name);
  if (end != name.npos && (name.compare(end, 3, ".%f") == 0 || name.compare(end, 3, ",%f") == 0)) {
    format.pattern_.erase(end, 3);
  }
  return format;
}

std::optional<std::int64_t> TimeFormat::parse(std::string_view text) const {
  if (unit_) return scaled(text, unit_->exponent);
  if (!pattern_.empty()) return parsePattern(std::string(text));
  // A number alone says neither unit nor start.
  if (parseNumber(text)) return std::nullopt;
  const auto time = parseTime(text);
  if (!time) return std::nullopt;
  return static_cast<std::int64_t>(*time);
}

std::optional<std::int64_t> TimeFormat::parsePattern(const std::string& text) const {
  std::string whole = text;
  const std::int64_t micros = takeFraction(whole, pattern_);
  std::tm parts{};
  parts.tm_mday = 1;
  parts.tm_isdst = -1;
  const char* const end = ::strptime(whole.c_str(), pattern_.c_str(), &parts);
  if (end != whole.c_str() + whole.size()) return std::nullopt;
  const int day = parts.tm_mday;
  const long offset = parts.tm_gmtoff;
  const bool hasOffset = hasDirective(pattern_, 'z');
  const std::time_t seconds =
      hasOffset || pattern_.ends_with('Z') ? ::timegm(&parts) - offset : ::mktime(&parts);
  // A day that the month does not have becomes one of the next; without a date it is in 1900.
  constexpr auto kLast = static_cast<std::time_t>(kLastFormattedTime / kSecond);
  if (seconds < 0 || seconds > kLast || parts.tm_mday != day) return std::nullopt;
  return std::int64_t{seconds} * kSecond + micros;
}

}  // namespace velmar::toolkit
