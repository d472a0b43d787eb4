#include "toolkit/text/TimeText.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "toolkit/text/NumberText.h"

namespace velmar::toolkit {

namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr std::int64_t kSecond = 1000000;

bool isDigit(char character) { return character >= '0' && character <= '9'; }

// Takes pieces off the front of a text. After the first one that is not there, all fail.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  bool finished() const { return valid_ && rest_.empty(); }

  // A number of exactly `digits` digits.
  int number(std::size_t digits) {
    int value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
      if (rest_.empty() || !isDigit(rest_.front())) valid_ = false;
      if (!valid_) return 0;
      value = 10 * value + (rest_.front() - '0');
      rest_.remove_prefix(1);
    }
    return value;
  }

  // One character out of `choices`; 0 if there is none of them, which is no failure.
  char optional(std::string_view choices) {
    if (!valid_ || rest_.empty() || choices.find(rest_.front()) == choices.npos) return 0;
    const char found = rest_.front();
    rest_.remove_prefix(1);
    return found;
  }

  char required(std::string_view choices) {
    const char found = optional(choices);
    valid_ = valid_ && found != 0;
    return found;
  }

  // The digits behind a decimal point as microseconds.
  std::int64_t fraction() {
    std::int64_t value = number(1) * (kSecond / 10);
    for (std::int64_t weight = kSecond / 100; valid_ && !rest_.empty() && isDigit(rest_.front());
         weight /= 10) {
      value += weight * number(1);
    }
    return value;
  }

 private:
  std::string_view rest_;
  bool valid_ = true;
};

// A colon, minutes below 60.
std::int64_t minutes(Scanner& scanner, bool& valid) {
  scanner.required(":");
  const int value = scanner.number(2);
  valid = valid && value < 60;
  return value;
}

// "Z" or an offset from UTC, in seconds.
std::int64_t zone(Scanner& scanner, bool& valid) {
  const char sign = scanner.required("Zz+-");
  if (sign != '+' && sign != '-') return 0;
  const std::int64_t hours = scanner.number(2);
  valid = valid && hours < 24;
  const std::int64_t seconds = 3600 * hours + 60 * minutes(scanner, valid);
  return sign == '+' ? seconds : -seconds;
}

std::optional<std::uint64_t> parseRfc3339(std::string_view text) {
  Scanner scanner(text);
  const std::chrono::year year(scanner.number(4));
  scanner.required("-");
  const std::chrono::month month(static_cast<unsigned int>(scanner.number(2)));
  scanner.required("-");
  const year_month_day date(year, month,
                            std::chrono::day(static_cast<unsigned int>(scanner.number(2))));
  scanner.required("Tt ");
  const std::int64_t hours = scanner.number(2);
  bool valid = date.ok() && hours < 24;
  std::int64_t seconds = 3600 * hours + 60 * minutes(scanner, valid);
  scanner.required(":");
  const int second = scanner.number(2);
  valid = valid && second <= 60;  // 60 is a leap second
  seconds += second;
  const std::int64_t micros = scanner.optional(".") != 0 ? scanner.fraction() : 0;
  seconds -= zone(scanner, valid);
  if (!valid || !scanner.finished()) return std::nullopt;

  seconds += std::int64_t{86400} * sys_days(date).time_since_epoch().count();
  if (seconds < 0) return std::nullopt;
  return static_cast<std::uint64_t>(seconds * kSecond + micros);
}

// In microseconds.
std::optional<std::int64_t> durationUnit(std::string_view name) {
  constexpr std::pair<std::string_view, std::int64_t> kUnits[] = {{"us", 1},
                                                                  {"ms", kSecond / 1000},
                                                                  {"s", kSecond},
                                                                  {"min", 60 * kSecond},
                                                                  {"h", 3600 * kSecond},
                                                                  {"d", 86400 * kSecond}};
  for (const auto& [unit, micros] : kUnits) {
    if (unit == name) return micros;
  }
  return std::nullopt;
}

// Exactly `digits` digits, then `behind`.
void appendNumber(std::string& text, std::int64_t value, std::size_t digits, char behind) {
  const std::string number = std::to_string(value);
  text.append(digits - number.size(), '0');
  text += number;
  text += behind;
}

}  // namespace

std::optional<std::uint64_t> parseNumber(std::string_view text) {
  return numberOf<std::uint64_t>(text);
}

std::optional<std::uint64_t> parseTime(std::string_view text) {
  const auto micros = parseNumber(text);
  return micros ? micros : parseRfc3339(text);
}

std::optional<std::uint64_t> parseUtcTime(std::string_view text) {
  for (const char* const rest : {"", "Z", "T00:00:00Z"}) {
    if (const auto time = parseTime(std::string(text) + rest)) return time;
  }
  return std::nullopt;
}

std::optional<std::int64_t> parseDuration(std::string_view text) {
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text.remove_prefix(1);
  const std::size_t numberEnd = std::min(text.find_first_not_of("0123456789."), text.size());
  const std::string_view number = text.substr(0, numberEnd);
  const auto unit = durationUnit(text.substr(numberEnd));
  const std::size_t point = number.find('.');
  const auto whole = numberOf<std::int64_t>(number.substr(0, point));
  constexpr auto kLongest = static_cast<std::int64_t>(kLastFormattedTime);
  if (!unit || !whole || *whole > kLongest / *unit) return std::nullopt;
  std::int64_t micros = *whole * *unit;
  if (point != number.npos) {
    Scanner scanner(number.substr(point + 1));
    micros += scanner.fraction() * *unit / kSecond;
    if (!scanner.finished()) return std::nullopt;
  }
  return isNegative ? -micros : micros;
}

std::string formatTime(std::uint64_t time) {
  if (time > kLastFormattedTime) return std::to_string(time) + "us";
  const std::chrono::sys_time<std::chrono::microseconds> point(
      std::chrono::microseconds(static_cast<std::int64_t>(time)));
  const auto day = std::chrono::floor<std::chrono::days>(point);
  const year_month_day date(day);
  const std::chrono::hh_mm_ss clock(point - day);
  std::string text;
  appendNumber(text, int(date.year()), 4, '-');
  appendNumber(text, unsigned(date.month()), 2, '-');
  appendNumber(text, unsigned(date.day()), 2, 'T');
  appendNumber(text, clock.hours().count(), 2, ':');
  appendNumber(text, clock.minutes().count(), 2, ':');
  appendNumber(text, clock.seconds().count(), 2, '.');
  appendNumber(text, clock.subseconds().count(), 6, 'Z');
  return text;
}

}  // namespace velmar::toolkit
