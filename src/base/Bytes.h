/// Values among bytes, wherever they lie.
#ifndef VELMAR_BASE_BYTES_H
#define VELMAR_BASE_BYTES_H

#include <cstring>

namespace velmar::detail {

/// The value whose bytes stand there.
template <typename T>
T get(const void* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

/// Stores a value's bytes as they are.
template <typename T>
void put(void* at, const T& value) {
  std::memcpy(at, &value, sizeof value);
}

}  // namespace velmar::detail

#endif
