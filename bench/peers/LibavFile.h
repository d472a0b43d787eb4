/// Motion JPEG in a general container, by libavformat.
#ifndef VELMAR_BENCH_LIBAV_FILE_H
#define VELMAR_BENCH_LIBAV_FILE_H

#include <memory>
#include <string>

#include "Frames.h"

struct AVFormatContext;
struct AVPacket;

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
