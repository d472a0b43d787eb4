#include "toolkit/writing/NumberedName.h"

#include <algorithm>
#include <regex>

namespace velmar::toolkit {

NumberedName::NumberedName(const std::string& path) {
  static const std::regex pattern("%0([1-9])d");
  std::smatch found;
  if (std::regex_search(path, found, pattern)) {
    before_ = found.prefix();
    behind_ = found.suffix();
    digits_ = static_cast<std::size_t>(found.str(1).front() - '0');
  } else {
    const std::size_t dot = std::min(path.rfind('.'), path.size());
    before_ = path.substr(0, dot) + "-";
    behind_ = path.substr(dot);
  }
}

std::string NumberedName::at(std::size_t number) const {
  const std::string digits = std::to_string(number);
  return before_ + std::string(digits_ - std::min(digits_, digits.size()), '0') + digits + behind_;
}

}  // namespace velmar::toolkit
