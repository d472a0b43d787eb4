#include "container/img/JsonText.h"

#include <json/reader.h>
#include <json/writer.h>
#include <locale.h>

#include <cstddef>
#include <locale>
#include <map>
#include <new>
#include <optional>
#include <sstream>
#include <string_view>

namespace velmar::detail {

namespace {

// By their offset in the text.
using RealNumbers = std::map<std::ptrdiff_t, double>;

std::size_t skipDigits(std::string_view text, std::size_t at) {
  at = text.find_first_not_of("0123456789", at);
  return at == text.npos ? text.size() : at;
}

bool isOneOf(std::string_view text, std::size_t at, std::string_view characters) {
  return at < text.size() && characters.find(text[at]) != characters.npos;
}

// The end of the number that begins at `at`, by the rules of Json::Reader.
std::size_t numberEnd(std::string_view text, std::size_t at) {
  at = skipDigits(text, at + 1);
  if (isOneOf(text, at, ".")) at = skipDigits(text, at + 1);
  if (!isOneOf(text, at, "eE")) return at;
  ++at;
  return skipDigits(text, isOneOf(text, at, "+-") ? at + 1 : at);
}

// The end of the string or comment that begins at `at`.
std::size_t skipText(std::string_view text, std::size_t at) {
  std::size_t end = at + 1;
  if (text[at] == '"') {
    while (end < text.size() && text[end] != '"') end += text[end] == '\\' ? 2 : 1;
    return end + 1;
  }
  if (isOneOf(text, end, "*")) {
    end = text.find("*/", end + 1);
    return end == text.npos ? end : end + 2;
  }
  return isOneOf(text, end, "/") ? text.find_first_of("\r\n", end) : end;
}

// Takes the real numbers out of a JSON text and writes zeros over them. Empty if a number is
// malformed.
std::optional<RealNumbers> takeRealNumbers(std::string& text) {
  RealNumbers numbers;
  for (std::size_t at = 0; at < text.size();) {
    if (isOneOf(text, at, "\"/")) {
      at = skipText(text, at);
      continue;
    }
    if (!isOneOf(text, at, "-0123456789")) {
      ++at;
      continue;
    }
    const std::size_t end = numberEnd(text, at);
    const std::string token = text.substr(at, end - at);
    if (token.find_first_of(".eE") != token.npos) {
      std::istringstream stream(token);
      stream.imbue(std::locale::classic());
      double value = 0;
      // A rest such as a second point would form another number with the zeros.
      if (!(stream >> value) || !stream.eof() || isOneOf(text, end, ".eE")) return std::nullopt;
      numbers.emplace(at, value);
      text.replace(at, token.size(), token.size(), '0');
    }
    at = end;
  }
  return numbers;
}

void putBack(const RealNumbers& numbers, Json::Value& value) {
  const auto number = numbers.find(value.getOffsetStart());
  if (number != numbers.end() && value.type() == Json::intValue) {
    Json::Value real(number->second);
    value.swapPayload(real);  // the comments stay
  }
  for (Json::Value& element : value) putBack(numbers, element);
}

// StyledWriter begins no line behind a blank: a comment that ends with one would swallow what
// follows it.
void trimComments(Json::Value& value) {
  for (const auto place : {Json::commentBefore, Json::commentAfterOnSameLine, Json::commentAfter}) {
    if (!value.hasComment(place)) continue;
    const std::string comment = value.getComment(place);
    value.setComment(comment.substr(0, comment.find_last_not_of(' ') + 1), place);
  }
  for (Json::Value& member : value) trimComments(member);
}

// During its lifetime this thread prints numbers as in the C locale.
class PlainNumbers {
 public:
  PlainNumbers() : plain_(::newlocale(LC_ALL_MASK, "C", nullptr)) {
    if (plain_ == nullptr) throw std::bad_alloc();
    before_ = ::uselocale(plain_);
  }
  ~PlainNumbers() {
    ::uselocale(before_);
    ::freelocale(plain_);
  }
  PlainNumbers(const PlainNumbers&) = delete;
  PlainNumbers& operator=(const PlainNumbers&) = delete;

 private:
  locale_t plain_;
  locale_t before_ = nullptr;
};

}  // namespace

// The format is defined by what Json::Reader reads and Json::StyledWriter writes. Their successors
// differ: they read trailing commas and a byte order mark, and begin an object on a line of its
// own. Both classes are deprecated in jsoncpp, but stay.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

// Json::Reader reads real numbers by the global locale of the process: with a decimal comma it
// stops at the point, and with digit grouping it refuses them. So in such a locale it gets no real
// numbers.
bool parseJson(const std::string& text, Json::Value& value) {
  const bool plainNumbers = std::locale() == std::locale::classic();
  std::string integers = text;
  const auto numbers = plainNumbers ? RealNumbers() : takeRealNumbers(integers);
  if (!numbers || !Json::Reader().parse(integers, value, true)) return false;
  if (!numbers->empty()) putBack(*numbers, value);
  trimComments(value);
  return true;
}

Json::Value withoutComments(const Json::Value& value) {
  Json::Value bare;
  bare.copyPayload(value);
  for (Json::Value& member : bare) member = withoutComments(member);
  return bare;
}

std::string styledText(const Json::Value& value) {
  const PlainNumbers plain;
  return Json::StyledWriter().write(value);
}

#pragma GCC diagnostic pop

}  // namespace velmar::detail
