/// Opening recordings, with failures as exceptions.
#ifndef VELMAR_TOOL_RECORDING_FILE_H
#define VELMAR_TOOL_RECORDING_FILE_H

#include <cstdint>
#include <memory>
#include <string>

#include "velmar_video/VelmarVideoFile.h"

/// Throws Failure unless the path's extension names a container.
void checkExtension(const std::string& path);

/// An open reader. Throws Failure.
std::shared_ptr<VelmarVideoFileReader> openRecording(const std::string& path);

/// What the reader says, or Failure, which names `file`.
unsigned int framesCount(VelmarVideoFileReader& reader, const std::string& file);
std::uint64_t sensorTime(VelmarVideoFileReader& reader, const std::string& file,
                         unsigned int index);

#endif
