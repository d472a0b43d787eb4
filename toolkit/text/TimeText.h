/// Times as text. A time is microseconds since 1970-01-01 00:00:00 UTC.
#ifndef VELMAR_TOOLKIT_TIME_TEXT_H
#define VELMAR_TOOLKIT_TIME_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmar::toolkit {

/// Decimal digits and nothing else, within 64 bits.
std::optional<std::uint64_t> parseNumber(std::string_view text);

/// Microseconds, or RFC 3339 such as "2023-11-14T22:13:20.5+01:00"; digits of the fraction beyond
/// the sixth are cut. Nothing for other texts and for times before 1970.
std::optional<std::uint64_t> parseTime(std::string_view text);

/// The same, also without a zone, which means UTC as in all that is shown, or a day alone, which
/// means its start.
std::optional<std::uint64_t> parseUtcTime(std::string_view text);

/// A number with a unit, such as "1.5s", "+100ms" or "-1h", in microseconds; digits of the fraction
/// beyond the sixth are cut. Units are us, ms, s, min, h and d.
std::optional<std::int64_t> parseDuration(std::string_view text);

/// RFC 3339 in UTC with six digits of a second; plain microseconds with "us" after the year 9999.
std::string formatTime(std::uint64_t time);

/// 9999-12-31 23:59:59.999999
constexpr std::uint64_t kLastFormattedTime = 253402300799999999;

}  // namespace velmar::toolkit

#endif
