/// Recordings for the tests of the "img" container.
#ifndef VELMAR_TESTS_IMG_FILES_H
#define VELMAR_TESTS_IMG_FILES_H

#include <memory>
#include <string>
#include <vector>

#include "velmar_video/VelmarVideoFile.h"

struct TestFrame {
  std::string bytes;
  unsigned long sensorTime = 0;
  unsigned long arrivedTime = 0;

  bool operator==(const TestFrame&) const = default;
};

/// Frames of these sizes, each filled with its own letter, 1000 us apart.
std::vector<TestFrame> lettered(const std::vector<std::size_t>& sizes);

/// Records the frames through the factory; what close() answers.
VELMAR_ERROR_CODE_E record(const std::string& path, const std::vector<TestFrame>& frames);

/// An "img" file put together without the library: frames in order right behind the index.
/// `metaData` is the metadata's text; "" stands for one that fits the frames.
std::string handMadeImg(const std::vector<TestFrame>& frames, std::string metaData = "",
                        unsigned width = 1280, unsigned height = 800);

/// Overwrites bytes at an offset.
std::string patched(std::string file, std::size_t offset, const std::string& bytes);

#endif
