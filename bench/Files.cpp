#include "Files.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <json/reader.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>

#include "Bench.h"

namespace {

namespace fs = std::filesystem;

constexpr unsigned long kStartTime = 1700000000000000;
constexpr unsigned char kDeviceId[kRtvDeviceIdSize] = {0x0A, 0xFF, 0x53, 0x41, 0x4D, 0x50};

fs::path& workspace() {
  static fs::path path;
  return path;
}

void describe(VelmarVideoFileCreater& creater) {
  creater.setDeviceId(kDeviceId, sizeof kDeviceId);
  creater.setStartTime(kStartTime);
  creater.setVideoResolution(kWidth, kHeight);
  creater.setFrameFormat(VELMAR_FORMAT_BGR_E);
  creater.setFrameCodec(VELMAR_CODEC_JPG_E);
  creater.setCameraParams(kCameraParams);
}

void writeRecording(const std::string& path, const Frames& frames, unsigned int count) {
  const auto creater = openCreater(path);
  for (unsigned int i = 0; i < count; ++i) {
    require(creater->addFrame(frames[i], timeOf(i), timeOf(i)), path + ": frame not added");
  }
  require(creater->close() == VELMAR_ERROR_CODE_SUCCESS_E, path + ": not closed");
}

void writeRtv(const std::string& path, version_e version, const Frames& frames,
              unsigned int count) {
  can_data_io can;
  can_data_io_purge(&can);
  can.vehicle_speed = 13.25F;
  can.wheel_tick_left_front = 4711;
  RecordFileCreater creater(path, static_cast<unsigned short>(count), version, nullptr);
  creater.setVideoResolution(kWidth, kHeight);
  for (unsigned int i = 0; i < count; ++i) {
    const auto time = static_cast<int>((timeOf(i) - kStartTime) / 1000);
    require(creater.addFrame(time, frames[i], 100, 200, 3, 400, 1325, 90, &can),
            path + ": frame not added");
  }
  require(creater.close(), path + ": not closed");
}

}  // namespace

const std::string kCameraParams =
    R"({"camera_matrix": [[1024, 0, 640], [0, 1024, 360], [0, 0, 1]],)"
    R"( "distortion": [0, 0, 0, 0, 0], "height_above_road_mm": 1400})";

Workspace::Workspace(const std::string& folder) {
  workspace() = folder;
  fs::remove_all(folder);
  fs::create_directories(folder);
}

Workspace::~Workspace() { fs::remove_all(workspace()); }

std::string Workspace::path(const std::string& name) { return workspace() / name; }

const char* extension(Container container) { return container == Container::Img ? "img" : "rtv"; }

unsigned long timeOf(unsigned int frame) { return kStartTime + frame * 1000000UL / 30; }

std::shared_ptr<VelmarVideoFileCreater> openCreater(const std::string& path) {
  auto creater = makeVelmarVideoFileCreater(path);
  require(creater != nullptr && creater->open() == VELMAR_ERROR_CODE_SUCCESS_E,
          path + ": not created");
  describe(*creater);
  return creater;
}

std::shared_ptr<VelmarVideoFileReader> openReader(const std::string& path) {
  auto reader = makeVelmarVideoFileReader(path);
  require(reader != nullptr && reader->open() == VELMAR_ERROR_CODE_SUCCESS_E, path + ": not read");
  return reader;
}

std::string recording(Container container, const Frames& frames, const std::string& framesName,
                      unsigned int count) {
  const std::string kind = std::to_string(static_cast<int>(container));
  const std::string path = Workspace::path(framesName + "-" + kind + "-" + std::to_string(count) +
                                           "." + extension(container));
  if (fs::exists(path)) return path;
  if (container == Container::Rtv02 || container == Container::Rtv04) {
    writeRtv(path, container == Container::Rtv02 ? RTV_VER_02 : RTV_VER_04, frames, count);
  } else {
    writeRecording(path, frames, count);
  }
  return path;
}

unsigned int cameraFrames() { return frameCount(1500); }

std::string cameraRecording(Container container) {
  return recording(container, Frames::camera(), "camera", cameraFrames());
}

double printedBy(const std::string& command) {
  FILE* output = ::popen(command.c_str(), "r");
  require(output != nullptr, command + ": not run");
  double number = 0;
  const int fields = std::fscanf(output, "%lf", &number);
  const int status = ::pclose(output);
  require(fields == 1 && status == 0, command + ": failed");
  return number;
}

OpenFile::OpenFile(const std::string& path, int flags)
    : fd_(::open(path.c_str(), flags | O_CLOEXEC, 0644)) {
  require(fd_ >= 0, path + ": not opened");
}

OpenFile::~OpenFile() { ::close(fd_); }

void OpenFile::write(const void* data, std::size_t size) const {
  const auto* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t count = ::write(fd_, next, size);
    require(count > 0, "a limit's file cannot be written");
    next += count;
    size -= static_cast<std::size_t>(count);
  }
}

Mapped::Mapped(const std::string& path, bool writable) {
  const OpenFile file(path, writable ? O_RDWR : O_RDONLY);
  struct stat status {};
  require(::fstat(file.get(), &status) == 0, path + ": no size");
  size_ = static_cast<std::size_t>(status.st_size);
  const int protection = writable ? PROT_READ | PROT_WRITE : PROT_READ;
  void* address = ::mmap(nullptr, size_, protection, MAP_SHARED, file.get(), 0);
  require(address != MAP_FAILED, path + ": not mapped");
  data_ = static_cast<unsigned char*>(address);
}

Mapped::~Mapped() { ::munmap(data_, size_); }

std::unique_ptr<IndexRecord[]> swappedIndex(const Mapped& img, unsigned int count) {
  const auto* stored = reinterpret_cast<const IndexRecord*>(img.data() + sizeof(std::uint64_t));
  std::unique_ptr<IndexRecord[]> index(new IndexRecord[count]);
  for (unsigned int i = 0; i < count; ++i) index[i] = stored[i].swapped();
  benchmark::DoNotOptimize(index.get());
  benchmark::ClobberMemory();
  return index;
}

std::string metaDataText(const Mapped& img) {
  std::uint64_t stored = 0;
  std::memcpy(&stored, img.data(), sizeof stored);
  const std::uint64_t offset = __builtin_bswap64(stored);
  return {reinterpret_cast<const char*>(img.data()) + offset, img.size() - offset};
}

// The reader that the format was written with; it is deprecated, and not going away.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
void parseJson(const std::string& text) {
  Json::Value root;
  require(Json::Reader().parse(text, root, true), "metadata is not JSON");
}
#pragma GCC diagnostic pop

unsigned int rtvHeaderSize(Container container) { return container == Container::Rtv02 ? 68 : 72; }

unsigned int rtvTagSize(Container container) {
  return container == Container::Rtv02 ? 29 : container == Container::Rtv03 ? 36 : 145;
}

std::vector<Place> framePlaces(const std::string& path) {
  const bool isImg = path.ends_with(".img");
  std::vector<Place> places;
  if (isImg) {
    const Mapped file(path);
    unsigned int count = 0;
    openReader(path)->getFramesCount(count);
    const auto index = swappedIndex(file, count);
    for (unsigned int i = 0; i < count; ++i) places.push_back({index[i].offset, index[i].size});
    return places;
  }
  TaggedVideoParser parser;
  require(parser.init(path.c_str()) == RTV_ERR_SUCCESS, path + ": not read");
  unsigned short count = 0;
  parser.getFramesCount(count);
  for (unsigned short i = 0; i < count; ++i) {
    unsigned long offset = 0;
    unsigned int size = 0;
    parser.getRawImageRange(i, offset, size, false, nullptr);
    places.push_back({offset, size});
  }
  return places;
}
