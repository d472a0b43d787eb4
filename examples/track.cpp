// Follows the vehicle through an rtv: where it was at each frame, how fast, and its bus signals.
//   track drive.rtv
#include <velmar_video/velmar_video.h>

#include <cstring>
#include <iomanip>
#include <iostream>

namespace {

template <typename T>
T valueAt(const can_data_io& can, const CanField& field) {
  T value;
  std::memcpy(&value, reinterpret_cast<const char*>(&can) + field.offset, sizeof value);
  return value;
}

void printSignals(const can_data_io& can) {
  for (const CanField& field : canFields()) {
    if (field.offset == 0 || canFieldIsAbsent(can, field)) continue;  // 0: the block's length
    std::cout << "  " << field.name << ' ';
    switch (field.type) {
      case CanFieldType::Float:
        std::cout << valueAt<float>(can, field);
        break;
      case CanFieldType::Unsigned8:
        std::cout << unsigned{valueAt<unsigned char>(can, field)};
        break;
      case CanFieldType::Unsigned16:
        std::cout << valueAt<unsigned short>(can, field);
        break;
      case CanFieldType::Unsigned32:
        std::cout << valueAt<unsigned int>(can, field);
        break;
    }
    std::cout << '\n';
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: track FILE.rtv\n";
    return 2;
  }
  TaggedVideoParser parser;
  if (const auto code = parser.init(argv[1])) {
    std::cerr << argv[1] << ": " << errorCode2String(rtvErrorCode2VelmarErrorCode(code)) << '\n';
    return 1;
  }
  double startLat = 0;
  double startLng = 0;
  double startAlt = 0;
  parser.getStdPosition(startLat, startLng, startAlt);
  RecordFileToolkit::initRadius(startLat);  // for the whole process

  unsigned short count = 0;
  parser.getFramesCount(count);
  std::cout << std::fixed << std::setprecision(6);
  for (unsigned short i = 0; i < count; ++i) {
    frametag03Ver_t tag;
    can_data_io can;
    if (parser.getTag(i, tag) || parser.getCANRecord(i, can)) return 1;
    double lng = 0;
    double lat = 0;
    RecordFileToolkit::rel2Abs(startLng, startLat, tag.x / 100.0, tag.y / 100.0, lng, lat);
    std::cout << "frame " << i << ": " << lng << " E, " << lat << " N, " << tag.speed / 100.0
              << " m/s, heading " << tag.direction << '\n';
    printSignals(can);
  }
  return 0;
}
