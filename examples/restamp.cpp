// Corrects a recorder's clock: shifts all times of a recording, in place.
//   restamp drive.img SECONDS
#include <velmar_video/velmar_video.h>

#include <cstdlib>
#include <iostream>

namespace {

int failed(const char* path, VELMAR_ERROR_CODE_E code) {
  std::cerr << path << ": " << errorCode2String(code) << '\n';
  return 1;
}

VELMAR_ERROR_CODE_E shiftFrames(VelmarVideoFileReader& reader, VelmarVideoFileModifier& modifier,
                                long shift) {
  unsigned int count = 0;
  reader.getFramesCount(count);
  for (unsigned int i = 0; i < count; ++i) {
    unsigned long captured = 0;
    unsigned long arrived = 0;
    if (const auto code = reader.getSensorTime(i, captured)) return code;
    if (const auto code = reader.getArrivedTime(i, arrived)) return code;
    captured += shift;
    arrived += shift;
    if (const auto code = modifier.modifyTimestamp(i, captured)) return code;
    if (const auto code = modifier.modifyArrivalTime(i, arrived)) return code;
  }
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

// Frame times of an rtv are relative to its start and move with it.
VELMAR_ERROR_CODE_E shiftStart(VelmarVideoFileReader& reader, VelmarVideoFileModifier& modifier,
                               VELMAR_VERSION_E version, long shift) {
  unsigned long start = 0;
  if (const auto code = reader.getStartTime(start)) return code;
  start += shift;
  // Version 02 counts from 2015, and only its reader adds the years before.
  if (version == VELMAR_VERSION_0_2_E) start -= kRtvVersion02Epoch * 1000;
  return modifier.modifyStartTime(start);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: restamp FILE SECONDS\n";
    return 2;
  }
  const long shift = std::atol(argv[2]) * 1000000;
  const auto reader = makeVelmarVideoFileReader(argv[1]);
  const auto modifier = makeVelmarVideoFileModifier(argv[1]);
  if (!reader || !modifier) return 2;
  if (const auto code = reader->open()) return failed(argv[1], code);
  if (const auto code = modifier->open()) return failed(argv[1], code);

  VELMAR_VERSION_E version{};
  reader->getVersion(version);
  const auto code = version == VELMAR_VERSION_1_0_E
                        ? shiftFrames(*reader, *modifier, shift)
                        : shiftStart(*reader, *modifier, version, shift);
  if (code) return failed(argv[1], code);
  // Frame times are in the file already, the start time of an rtv is so only now.
  if (const auto closed = modifier->close()) return failed(argv[1], closed);
  return 0;
}
