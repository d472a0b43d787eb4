#include "container/rtv/RtvFiles.h"

#include <algorithm>

#include "velmar_video/VelmarVideoCommDef.h"

std::string RtvFile::number(unsigned long value, unsigned bytes) const {
  std::string text;
  for (unsigned i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 0xFF);
  if (bigEndian) std::reverse(text.begin(), text.end());
  return text;
}

std::string RtvFile::header() const {
  std::string text = std::string("velmar.rtv") + '\0';
  text += version == 2 ? '\0' : static_cast<char>(bigEndian);
  text += '\0';
  text += static_cast<char>(version);
  text += deviceId + number(startTime, 8) + number(lng, 4) + number(lat, 4);
  if (version > 2) text += number(alt, 4);
  text += number(frames.size(), 2) + number(framesMax > 0 ? framesMax : frames.size(), 2);
  text += number(width, 2) + number(height, 2) + format + codec + number(taggingFlags, 4);
  return text;
}

std::string RtvFile::tag(const RtvFrame& frame, unsigned long dataOffset) const {
  std::string text =
      number(frame.timeFlag, 4) + number(dataOffset, 8) + number(frame.bytes.size(), 4);
  const unsigned length = version == 2 ? 3 : 4;
  text += number(frame.x, length) + number(frame.y, length);
  if (version > 2) text += number(frame.z, length);
  text += number(frame.relativeDistance, length);
  text += number(frame.speed, 2) + number(frame.direction, 2);
  return version == 4 ? text + frame.can : text;
}

std::string RtvFile::bytes() const {
  const unsigned slots = framesMax > 0 ? framesMax : frames.size();
  std::string table;
  std::string data;
  for (const RtvFrame& frame : frames) {
    table += tag(frame, headerSize() + slots * tagSize() + data.size());
    data += frame.bytes;
  }
  table.resize(slots * tagSize());
  return header() + table + data;
}

RtvFile threeFrames(int version) {
  RtvFile file{.version = version,
               .deviceId = "0123456789abcdefghijklmn",
               .startTime = 1000000,
               .lng = 1073741824,
               .lat = -536870912,
               .alt = 12345,
               .framesMax = 9,
               .width = 1280,
               .height = 800,
               .format = RTV_FMT_GRAY,
               .codec = RTV_CODEC_H264,
               .taggingFlags = 0x11};
  std::string can = RtvFrame().can;
  can.replace(53, 4, std::string("\x00\x00\x54\x41", 4));  // vehicle_speed 13.25
  can[105] = 1;                                            // abs_active
  file.frames = {{"first", -500, 150, -250, 375, 12345, 1388, 359, can},
                 {"second", 500, -1, 8388607, 0, 0xFFFFFF, 0, 1},
                 {"third", 700}};
  return file;
}
