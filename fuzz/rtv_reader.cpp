#include "Recordings.h"
#include "support.h"
#include "velmar_logger/control.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

namespace {

void readTag(TaggedVideoParser& parser, unsigned short index) {
  frametag03Ver_t tag{};
  can_data can{};
  can_data_io record{};
  float values[6] = {};
  parser.getTag(index, tag);
  parser.getCAN(index, can);
  parser.getCANRecord(index, record);
  parser.getRelPosition(index, values[0], values[1], values[2]);
  parser.getRelDistance(index, values[3]);
  parser.getSpeed(index, values[4]);
  parser.getDirection(index, values[5]);
  consume(&tag, sizeof tag);
  consume(&can, sizeof can);
  consume(values, sizeof values);
  consume(can_data_toString(&record, CAN_SIZE_IO));
}

void readPositions(TaggedVideoParser& parser) {
  double degrees[3] = {};
  int stored[3] = {};
  parser.getStdPosition(degrees[0], degrees[1], degrees[2]);
  parser.getStartPosition(stored[0], stored[1], stored[2]);
  consume(degrees, sizeof degrees);
  consume(stored, sizeof stored);
}

void dump(TaggedVideoParser& parser) {
  velmar_logger::setSink([](int, const char* tag, const char* message) {
    consume(tag);
    consume(message);
  });
  parser.dump();
  velmar_logger::setSink({});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool latched = latchHostByteOrder();
  require(latched);
  static const TemporaryFile file("rtv");
  file.write(data, size);
  readAll(*makeVelmarVideoFileReader(file.path()));

  TaggedVideoParser parser;
  parser.init(file.path().c_str());
  readPositions(parser);
  unsigned short count = 0;
  parser.getFramesCount(count);
  forSomeFrames(count, [&](unsigned int index) { readTag(parser, index); });
  // It formats all tags, which takes as long as everything else.
  if (size % 4 == 0) dump(parser);
  return 0;
}
