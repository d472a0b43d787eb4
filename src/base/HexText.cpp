#include "base/HexText.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace velmar::detail {

std::string bytesToHex(const unsigned char* bytes, unsigned int length) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2UL * length);
  for (unsigned int i = 0; i < length; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0xF];
  }
  return text;
}

void hexToBytes(const std::string& text, unsigned char* bytes, unsigned int length) {
  std::memset(bytes, 0, length);
  const std::size_t count = std::min<std::size_t>(length, (text.size() + 1) / 2);
  for (std::size_t i = 0; i < count; ++i) {
    const std::string digits = text.substr(2 * i, 2);
    bytes[i] = static_cast<unsigned char>(std::strtol(digits.c_str(), nullptr, 16));
  }
}

}  // namespace velmar::detail
