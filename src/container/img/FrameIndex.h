#ifndef VELMAR_IMG_FRAME_INDEX_H
#define VELMAR_IMG_FRAME_INDEX_H

#include <cstdint>

#include "base/Bytes.h"
#include "velmar_video/VelmarVideoCommDef.h"

/// A record of the index of an "img" file, 28 bytes as in the file. Big-endian in the file and in
/// the writer, host order in readers.
struct __attribute__((packed)) FrameIndex {
  std::uint64_t sensorTime;   ///< capture, microseconds
  std::uint64_t arrivedTime;  ///< arrival at the recorder, microseconds
  std::uint64_t frameOffset;  ///< from the start of the file
  std::uint32_t frameSize;    ///< bytes

  /// The same record in the other byte order.
  FrameIndex swapped() const {
    return {htonll(sensorTime), htonll(arrivedTime), htonll(frameOffset),
            __builtin_bswap32(frameSize)};
  }
};
static_assert(sizeof(FrameIndex) == 28);

namespace velmar::detail {

/// Where the index of an "img" file begins: behind the 64-bit offset of the metadata.
constexpr std::uint64_t kFrameIndexStart = 8;

/// A record as bytes of a file have it, in host order.
inline FrameIndex readFrameIndex(const char* bytes) { return get<FrameIndex>(bytes).swapped(); }

}  // namespace velmar::detail

#endif
