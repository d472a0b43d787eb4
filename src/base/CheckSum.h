#ifndef VELMAR_BASE_CHECK_SUM_H
#define VELMAR_BASE_CHECK_SUM_H

#include <cstdint>
#include <string_view>

namespace velmar::detail {

/// FNV-1a with 64 bits: tells bytes that came to the disk from those that did not.
inline std::uint64_t checkSum(std::string_view bytes) {
  std::uint64_t sum = 0xCBF29CE484222325;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
  return sum;
}

}  // namespace velmar::detail

#endif
