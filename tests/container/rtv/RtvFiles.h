/// RTV files put together without the library.
#ifndef VELMAR_TESTS_RTV_FILES_H
#define VELMAR_TESTS_RTV_FILES_H

#include <string>
#include <vector>

struct RtvFrame {
  std::string bytes;
  int timeFlag = 0;
  int x = 0, y = 0, z = 0;
  unsigned relativeDistance = 0;
  unsigned speed = 0, direction = 0;
  std::string can = std::string("\x6B", 2) + std::string(107, '\xFF');  ///< as in the file
};

struct RtvFile {
  int version = 4;  ///< 2, 3 or 4
  bool bigEndian = false;
  std::string deviceId = std::string(24, '\0');
  unsigned long startTime = 0;
  int lng = 0, lat = 0, alt = 0;
  unsigned framesMax = 0;  ///< 0: as many as there are frames
  unsigned width = 0, height = 0;
  char format = 3, codec = 2;
  unsigned taggingFlags = 0;
  std::vector<RtvFrame> frames = {};

  unsigned headerSize() const { return version == 2 ? 68 : 72; }
  unsigned tagSize() const { return version == 2 ? 29 : version == 3 ? 36 : 145; }
  std::string number(unsigned long value, unsigned bytes) const;
  std::string header() const;
  /// The frame's tag with its data at that offset.
  std::string tag(const RtvFrame& frame, unsigned long dataOffset) const;
  std::string bytes() const;
};

/// With every field set, in the tag of the first frame too. There are slots for nine frames.
RtvFile threeFrames(int version);

#endif
