/// Motion JPEG in a general container, by libavformat.
#ifndef VELMAR_BENCH_LIBAV_FILE_H
#define VELMAR_BENCH_LIBAV_FILE_H

#include <memory>
#include <string>

#include "Frames.h"

struct AVFormatContext;
struct AVPacket;

struct LibavContainer {
  const char* name;
  const char* extension;
};
constexpr LibavContainer kContainers[] = {{"AVI", ".avi"}, {"MKV", ".mkv"}};

/// A file of such frames, made when it is first asked for.
std::string libavFile(const LibavContainer& container, const Frames& frames,
                      const std::string& framesName, unsigned int count);
/// One of the frames of the camera recording.
std::string cameraFile(const LibavContainer& container);

/// Copies `count` frames into a new file; the extension chooses the container. The file is brought
/// to the disk and renamed, as recordings are.
void writeLibavFile(const std::string& path, const Frames& frames, unsigned int count);

/// Reads the stored frames of such a file.
class LibavReader {
 public:
  explicit LibavReader(const std::string& path);
  ~LibavReader();
  LibavReader(const LibavReader&) = delete;
  LibavReader& operator=(const LibavReader&) = delete;

  void readNext();
  void readFrame(unsigned int frame);

 private:
  AVFormatContext* context_ = nullptr;
  AVPacket* packet_;
};

#endif
