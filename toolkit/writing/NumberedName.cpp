#include "toolkit/writing/NumberedName.h"

#include <algorithm>

namespace velmar::toolkit {

NumberedName::NumberedName(const std::string& path) {
  for (std::size_t at = path.find("%0"); at != path.npos; at = path.find("%0", at + 1)) {
    const std::string rest = path.substr(at + 2, 2);
    if (rest.size() < 2 || rest[0] < '1' || rest[0] > '9' || rest[1] != 'd') continue;
    before_ = path.substr(0, at);
    behind_ = path.substr(at + 4);
    digits_ = static_cast<std::size_t>(rest[0] - '0');
    return;
  }
  const std::size_t dot = std::min(path.rfind('.'), path.size());
  before_ = path.substr(0, dot) + "-";
  behind_ = path.substr(dot);
}

std::string NumberedName::at(std::size_t number) const {
  const std::string digits = std::to_string(number);
  return before_ + std::string(digits_ - std::min(digits_, digits.size()), '0') + digits + behind_;
}

}  // namespace velmar::toolkit
