/// What decoding may take: a small file must not make long work, nor fill the memory.
#ifndef VELMAR_TOOLKIT_DECODING_LIMITS_H
#define VELMAR_TOOLKIT_DECODING_LIMITS_H

#include <algorithm>
#include <cstdint>
#include <string>

#include "jpeg/JpegHeader.h"

namespace velmar::toolkit {

/// Bytes that a coefficient buffer takes for each pixel at the most: four components, 16 bits each.
constexpr std::uint64_t kKeptBytesPerPixel = 8;

/// Memory that may be used for so many bytes of a recording, bytes.
constexpr std::uint64_t memoryFor(std::uint64_t bytes) {
  constexpr std::uint64_t kForAny = 240'000'000;
  constexpr std::uint64_t kPerByte = 256;
  return std::max(kForAny, kPerByte * bytes);
}

/// Whether so many pixels can come from the JPEG: each block of 8 x 8 takes a bit of it. Only with
/// arithmetic coding can a picture of one colour take less, which no camera makes.
bool canHoldPixels(const std::string& jpeg, std::uint64_t pixels);

/// Why a JPEG of that size is not to be decoded, such as "too many scans for its size"; null if it
/// may be.
/// \param memory  bytes that may be used for it
const char* decodingRefusal(const std::string& jpeg, detail::JpegSize size, std::uint64_t memory);

}  // namespace velmar::toolkit

#endif
