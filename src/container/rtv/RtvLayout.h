/// Where things lie in an RTV file: what its three versions share, and where they differ.
#ifndef VELMAR_RTV_RTV_LAYOUT_H
#define VELMAR_RTV_RTV_LAYOUT_H

#include <cstring>

#include "velmar_video/VelmarVideoCommDef.h"

// Offsets in the header that all versions share, bytes.
constexpr unsigned int kMagicCodeAt = 0;
constexpr unsigned int kFlagsAt = 11;  ///< versions 03 and 04; the last byte of the magic in 02
constexpr unsigned int kVersionMajorAt = 12;
constexpr unsigned int kVersionMinorAt = 13;
constexpr unsigned int kDeviceIdAt = 14;
constexpr unsigned int kStartTimeAt = 38;
constexpr unsigned int kLngAt = 46;
constexpr unsigned int kLatAt = 50;
constexpr unsigned int kAltAt = 54;  ///< versions 03 and 04

/// What differs, bytes.
struct RtvLayout {
  unsigned int headerSize;
  unsigned int tagSize;
  unsigned int magicSize;  ///< with its terminator
  bool hasFlagsAndAltitude;

  // The header ends with the same fields in every version.
  constexpr unsigned int framesCountAt() const { return headerSize - 14; }
  constexpr unsigned int framesMaxAt() const { return headerSize - 12; }
  constexpr unsigned int widthAt() const { return headerSize - 10; }
  constexpr unsigned int heightAt() const { return headerSize - 8; }
  constexpr unsigned int frameFormatAt() const { return headerSize - 6; }
  constexpr unsigned int frameCodecAt() const { return headerSize - 5; }
  constexpr unsigned int taggingFlagsAt() const { return headerSize - 4; }

  /// From the start of the file.
  constexpr unsigned long tagAt(unsigned int index) const {
    return headerSize + static_cast<unsigned long>(index) * tagSize;
  }
};

constexpr unsigned int kRtvHeaderSizeMax = 72;  ///< bytes, of any version

/// Every value but RTV_VER_02 and RTV_VER_03 stands for version 04.
constexpr RtvLayout rtvLayout(version_e version) {
  switch (version) {
    case RTV_VER_02:
      return {68, 29, 12, false};
    case RTV_VER_03:
      return {72, 36, 11, true};
    default:
      return {72, 145, 11, true};
  }
}

/// A 24-bit field of a version 02 tag.
inline int signed24(const unsigned char (&bytes)[3]) {
  // Into the upper three bytes and down again, which extends the sign.
  const unsigned int value = bytes[0] | bytes[1] << 8 | static_cast<unsigned int>(bytes[2]) << 16;
  return static_cast<int>(value << 8) >> 8;
}

/// The value whose bytes stand there.
template <typename T>
T get(const void* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

/// Stores a value's bytes as they are.
template <typename T>
void put(unsigned char* at, const T& value) {
  std::memcpy(at, &value, sizeof value);
}

#endif
