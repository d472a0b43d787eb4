/// The recordings that are measured, and the bare means that limits are measured with.
#ifndef VELMAR_BENCH_FILES_H
#define VELMAR_BENCH_FILES_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Frames.h"
#include "velmar_video/velmar_video.h"

/// Where the benchmarks' files are; the folder and all in it are deleted with the object.
class Workspace {
 public:
  explicit Workspace(const std::string& folder);
  ~Workspace();
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  /// The path of a file in the workspace of the program.
  static std::string path(const std::string& name);
};

enum class Container { Img, Rtv02, Rtv03, Rtv04 };

const char* extension(Container container);

/// Microseconds, 30 frames a second.
unsigned long timeOf(unsigned int frame);

/// The metadata that recordings are given: a camera's matrix.
extern const std::string kCameraParams;

/// A creater that is open and described.
std::shared_ptr<VelmarVideoFileCreater> openCreater(const std::string& path);
std::shared_ptr<VelmarVideoFileReader> openReader(const std::string& path);

/// The path of a recording of `count` frames, made when it is first asked for.
std::string recording(Container container, const Frames& frames, const std::string& framesName,
                      unsigned int count);

/// The recording that a camera leaves in 50 seconds, 260 MB.
unsigned int cameraFrames();
std::string cameraRecording(Container container);

/// A file that is open; the program ends if it cannot be.
class OpenFile {
 public:
  OpenFile(const std::string& path, int flags);
  ~OpenFile();
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  int get() const { return fd_; }
  /// By as many write(2) as it takes.
  void write(const void* data, std::size_t size) const;
  void write(const std::string& bytes) const { write(bytes.data(), bytes.size()); }

 private:
  int fd_;
};

/// A shared map of a whole file.
class Mapped {
 public:
  explicit Mapped(const std::string& path, bool writable = false);
  ~Mapped();
  Mapped(const Mapped&) = delete;
  Mapped& operator=(const Mapped&) = delete;

  unsigned char* data() const { return data_; }
  std::size_t size() const { return size_; }

 private:
  unsigned char* data_;
  std::size_t size_;
};

/// A record of the index of an img, as in the file but for the byte order.
struct __attribute__((packed)) IndexRecord {
  std::uint64_t sensorTime;
  std::uint64_t arrivedTime;
  std::uint64_t offset;
  std::uint32_t size;

  IndexRecord swapped() const {
    return {__builtin_bswap64(sensorTime), __builtin_bswap64(arrivedTime),
            __builtin_bswap64(offset), __builtin_bswap32(size)};
  }
};
static_assert(sizeof(IndexRecord) == 28);

/// The index of a mapped img by one pass into a fresh array.
std::unique_ptr<IndexRecord[]> swappedIndex(const Mapped& img, unsigned int count);

/// Where the metadata of a mapped img stand: to the end of the file.
std::string metaDataText(const Mapped& img);
/// Parses JSON as cheaply as jsoncpp can.
void parseJson(const std::string& text);

/// Bytes of the header and of a frame's tag.
unsigned int rtvHeaderSize(Container container);
unsigned int rtvTagSize(Container container);

/// The number that a command prints; the program ends if the command fails.
double printedBy(const std::string& command);

/// Where the frames of a recording lie.
struct Place {
  std::size_t offset;
  std::size_t size;
};
std::vector<Place> framePlaces(const std::string& path);

#endif
