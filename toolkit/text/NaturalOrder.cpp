#include "toolkit/text/NaturalOrder.h"

#include <algorithm>

namespace velmar::toolkit {

namespace {

bool isDigit(char character) { return character >= '0' && character <= '9'; }

// Takes the leading digits off `text`, without their leading zeros.
std::string_view takeNumber(std::string_view& text) {
  const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
  std::string_view number = text.substr(0, static_cast<std::size_t>(end - text.begin()));
  text.remove_prefix(number.size());
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
  return number;
}

// Below 0, 0 or above 0, as std::string_view::compare().
int compareNumbers(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
  return left.compare(right);
}

}  // namespace

bool naturalLess(std::string_view left, std::string_view right) {
  std::string_view a = left;
  std::string_view b = right;
  while (!a.empty() && !b.empty()) {
    if (isDigit(a.front()) && isDigit(b.front())) {
      const int order = compareNumbers(takeNumber(a), takeNumber(b));
      if (order != 0) return order < 0;
      continue;
    }
    if (a.front() != b.front()) {
      return static_cast<unsigned char>(a.front()) < static_cast<unsigned char>(b.front());
    }
    a.remove_prefix(1);
    b.remove_prefix(1);
  }
  if (a.empty() != b.empty()) return a.empty();
  return left < right;
}

}  // namespace velmar::toolkit
