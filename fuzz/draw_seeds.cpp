// Draws what the harnesses start from: valid inputs of every kind, each whole and cut at every edge
// of its structures. Argument: the folder, which gets one of each kind.
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "container/img/FrameIndex.h"
#include "container/rtv/RtvLayout.h"
#include "jpeg/JpegHeader.h"
#include "scene/SampleScene.h"
#include "support/Pictures.h"
#include "toolkit/files/UndoFile.h"
#include "toolkit/tables/FrameColumns.h"
#include "velmar_video/VelmarVideoFile.h"
#include "velmar_video/rtv/RecordFileCreater.h"

using namespace velmar::detail;
using namespace velmar::toolkit;

namespace {

namespace fs = std::filesystem;

using Edges = std::set<std::size_t>;

constexpr unsigned short kWidth = 32;
constexpr unsigned short kHeight = 16;

std::string readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Saves the bytes as a whole and up to each edge.
void save(const fs::path& folder, const std::string& name, const std::string& bytes, Edges edges) {
  fs::create_directories(folder);
  edges.insert(bytes.size());
  for (const std::size_t edge : edges) {
    std::ofstream file(folder / (name + "-" + std::to_string(edge)), std::ios::binary);
    file << bytes.substr(0, edge);
  }
}

Edges edgesBehind(const std::string& text, const std::string& characters) {
  Edges edges;
  for (std::size_t at = text.find_first_of(characters); at != text.npos;
       at = text.find_first_of(characters, at + 1)) {
    edges.insert({at, at + 1});
  }
  return edges;
}

std::vector<std::string> drawFrames(unsigned int count) {
  SampleScene scene(kWidth, kHeight, 30);
  std::vector<std::string> frames;
  for (unsigned int i = 0; i < count; ++i) frames.push_back(scene.jpeg(i));
  return frames;
}

std::uint64_t metaDataOffset(const std::string& file) {
  std::uint64_t offset = 0;
  std::memcpy(&offset, file.data(), sizeof offset);
  return ntohll(offset);
}

Edges imgEdges(const std::string& file, std::size_t frames) {
  const std::size_t metaDataAt = metaDataOffset(file);
  Edges edges = {0,          kFrameIndexStart - 1, kFrameIndexStart,
                 metaDataAt, metaDataAt + 1,       metaDataAt + 2};
  for (std::size_t i = 0; i < frames; ++i) {
    const std::size_t record = kFrameIndexStart + i * sizeof(FrameIndex);
    edges.insert({record + sizeof(FrameIndex),
                  std::size_t{readFrameIndex(file.data() + record).frameOffset}});
  }
  for (const std::size_t edge : edgesBehind(file.substr(metaDataAt), ",{}")) {
    edges.insert(metaDataAt + edge);
  }
  return edges;
}

void drawImg(const fs::path& folder, const std::string& name,
             const std::vector<std::string>& frames, JpegSize size, const std::string& text) {
  const fs::path path = folder / "seed.img";
  const auto creater = makeVelmarVideoFileCreater(path);
  creater->open();
  creater->setVideoResolution(size.width, size.height);
  creater->setDeviceId(reinterpret_cast<const unsigned char*>(name.data()), name.size());
  creater->setCameraParams(text);
  creater->setExtendedInfo(text);
  if (frames.size() > 1) creater->setUndistortFlags();
  for (std::size_t i = 0; i < frames.size(); ++i) {
    creater->addFrame(frames[i], 1000 * i, 1000 * i + 500);
  }
  creater->close();
  const std::string file = readFile(path);
  fs::remove(path);
  const std::string metaData = file.substr(metaDataOffset(file));
  save(folder / "img", name, file, imgEdges(file, frames.size()));
  save(folder / "meta", name, metaData, edgesBehind(metaData, ",:{}"));
}

Edges rtvEdges(const RtvLayout& layout, unsigned int slots,
               const std::vector<std::string>& frames) {
  Edges edges = {0,           10,           kFlagsAt, kVersionMajorAt,        kVersionMinorAt,
                 kDeviceIdAt, kStartTimeAt, kLngAt,   layout.framesCountAt(), layout.headerSize};
  for (unsigned int i = 1; i <= slots; ++i) edges.insert(layout.tagAt(i));
  std::size_t at = layout.tagAt(slots);
  for (const std::string& frame : frames) edges.insert(at += frame.size());
  return edges;
}

void drawRtv(const fs::path& folder, const std::string& name, version_e version,
             unsigned short slots, const std::vector<std::string>& frames,
             JpegSize size = {kWidth, kHeight}) {
  const fs::path path = folder / "seed.rtv";
  RecordFileCreater creater(path, slots, version, nullptr);
  creater.setVideoResolution(size.width, size.height);
  creater.setFrameFormat(RTV_FMT_BGR);
  creater.setFrameCodec(RTV_CODEC_JPG);
  creater.setStartTime(1600000000000);
  creater.setTaggingFlags(kRtvUndistortedFlag);
  creater.setStartPosition(1 << 29, 1 << 28, 100);
  can_data_io can;
  can_data_io_purge(&can);
  can.vehicle_speed = 12.5F;
  can.wheel_tick_left_rear = 77;
  can.brake_active = 1;
  for (int i = 0; i < static_cast<int>(frames.size()); ++i) {
    creater.addFrame(33 * i, frames[i], 100 * i, -100 * i, i, 150 * i, 1234, 45,
                     i == 0 ? nullptr : &can);
  }
  creater.close();
  std::string file = readFile(path);
  fs::remove(path);
  save(folder / "rtv", name, file, rtvEdges(rtvLayout(version), slots, frames));
  if (version == RTV_VER_02) return;
  file[11] = 1;
  save(folder / "rtv", name + "-big-endian", file, {});
}

void drawRecordings(const fs::path& folder) {
  const auto frames = drawFrames(3);
  const JpegSize size{kWidth, kHeight};
  drawImg(folder, "one", {frames[0]}, size, "{}");
  drawImg(folder, "three", frames, size, R"({"f": [1.5, -2, 1e9], "name": "a \"b\" \u00e4"})");
  drawImg(folder, "other-size", {frames[0], "no picture"}, {2 * kWidth, kHeight},
          "[null, true] // why");
  // Pictures that are far larger than their bytes, and one that only says so.
  const JpegSize large{320, 240};
  const std::string plain = uniformJpeg(large.width, large.height, Coding::Arithmetic);
  drawImg(folder, "plain", {plain, claiming(16000, 12000, plain)}, large, "{}");
  drawRtv(folder, "plain", RTV_VER_03, 2, {plain, claiming(16000, 12000, plain)}, large);
  drawImg(folder, "progressive", {uniformJpeg(large.width, large.height, Coding::Progressive)},
          large, "{}");
  const std::pair<std::string, version_e> versions[] = {
      {"02", RTV_VER_02}, {"03", RTV_VER_03}, {"04", RTV_VER_04}};
  for (const auto& [name, version] : versions) {
    drawRtv(folder, name + "-one", version, 1, {frames[0]});
    drawRtv(folder, name + "-spare", version, 5, {frames[0], "no picture", frames[2]});
  }
}

void drawStreams(const fs::path& folder) {
  const auto frames = drawFrames(2);
  const std::string& jpeg = frames[0];
  // With a thumbnail in a segment of its own, and a fill byte before a marker.
  const std::string thumbnail = std::string("\xFF\xE1\x00\x08\xFF\xD8\xFF\xD9zz", 10);
  const std::string rich = jpeg.substr(0, 2) + thumbnail + '\xFF' + jpeg.substr(2);
  for (const char piece : {'\x00', '\x07', '\x3F', '\x80', '\xBF'}) {
    const std::string name = "piece" + std::to_string(static_cast<unsigned char>(piece));
    save(folder / "jpeg", name + "-one", piece + jpeg, edgesBehind(piece + jpeg, "\xFF"));
    save(folder / "jpeg", name + "-rich", piece + rich, edgesBehind(piece + rich, "\xFF"));
    save(folder / "jpeg", name + "-two",
         piece + frames[0] + "junk" + std::string(3, '\0') + frames[1],
         {1 + jpeg.size(), 1 + jpeg.size() + 4, 1 + jpeg.size() + 7, 1 + jpeg.size() + 9});
  }
}

// A table for three files with a value in each column.
std::string frameTable(bool ofRtv, bool hasCan) {
  const std::string header = "file" + frameColumns(ofRtv, hasCan).substr(std::strlen("index"));
  std::string values;
  for (const char character : header) {
    if (character == ',') values += values.empty() ? ",12" : ",7";
  }
  return header + "\nin/1.jpg" + values + "\nin/2.jpg" + values + "\na/2.jpg" + values + "\n";
}

void drawTables(const fs::path& folder) {
  const std::string tables[] = {
      "file,sensor_time_us,arrived_time_us\n1.jpg,1,2\n\"in/2.jpg\",3,4\r\na/2.jpg,5,6\n",
      "\xEF\xBB\xBFindex,x,y,speed\n0,1,-2,\n1,,,3\n\n\"2\",\"8\"\"\",1,2\n",
      "index,x,y,speed\n0,1,-2,\n1,,,3\n2,-8388608,8388607,65535\n",
      frameTable(false, false),
      frameTable(true, false),
      frameTable(true, true),
      "Time_s;lat;lng;speed_kmh\r\n1,5;48;11,5;36,0\r\n2,5;49;;NaN\r\n",
      "<gpx><trk><trkseg>\n<trkpt lat=\"48\" lon=\"11.5\"><ele>9</ele>"
      "<time>2023-11-14T22:13:20Z</time></trkpt></trkseg></trk></gpx>",
  };
  for (std::size_t i = 0; i < std::size(tables); ++i) {
    save(folder / "csv", "table" + std::to_string(i), tables[i], edgesBehind(tables[i], ",\n\""));
  }
}

void drawExpressions(const fs::path& folder) {
  const std::string expressions[] = {
      "speed_m_s > 20 && near(48.137, 11.575, 200)",
      "absent(yaw_rate) || !(direction >= 90 ? time < 1.5e1 : size^2 == index*3)",
      "within(179.9, -1, -179.9, 1) && acceleration_m_s2 / 2 - x_m + y_m != -lat_deg",
      "speed_km_h > 30 && sensor_time_us <= 1700000000000000",
  };
  for (std::size_t i = 0; i < std::size(expressions); ++i) {
    save(folder / "expression", "where" + std::to_string(i), expressions[i],
         edgesBehind(expressions[i], " (,"));
  }
}

// As the harness takes them: an edit of a text has been interrupted, with another text in its
// place.
void drawUndo(const fs::path& folder, const std::string& name, const std::string& edited,
              const EditedPlaces& places) {
  const fs::path path = folder / "seed.img";
  std::ofstream(path) << "The first part. The second part, which is longer. The end.";
  keepForUndo(path, places);
  const std::string undo = readFile(undoPath(path));
  dropUndo(path);
  fs::remove(path);
  const std::string start = std::string{'\0', static_cast<char>(edited.size())} + edited;
  Edges edges;
  for (const std::size_t edge : {0, 11, 12, 20, 28, 36, 44, 60}) edges.insert(start.size() + edge);
  save(folder / "undo", name, start + undo, edges);
}

void drawUndos(const fs::path& folder) {
  const std::string edited = "The newer part. The second part, which is longer. The END, later.";
  const FilePlace newer{4, 5};
  const FilePlace end{54, 4};
  drawUndo(folder, "all", edited, {{newer, end}, 16, 50});
  drawUndo(folder, "shorter", edited.substr(0, 54), {{newer, end}, 54, 54});
  drawUndo(folder, "one", edited.substr(0, 58), {{newer, {50, 8}}, 9, UINT64_MAX});
  drawUndo(folder, "none", edited, {{}, 0, 0});
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) return 2;
  const fs::path folder = arguments[1];
  fs::create_directories(folder);
  drawRecordings(folder);
  drawStreams(folder);
  drawTables(folder);
  drawExpressions(folder);
  drawUndos(folder);
}
