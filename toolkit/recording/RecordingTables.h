#ifndef VELMAR_TOOLKIT_RECORDING_TABLES_H
#define VELMAR_TOOLKIT_RECORDING_TABLES_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/files/FileBytes.h"
#include "toolkit/recording/RecordingDescription.h"
#include "velmar_video/rtv/CanData.h"
#include "velmar_video/rtv/RecordFile.h"

namespace velmar::toolkit {

/// What a recording's file says of itself and of its frames beside their bytes. Those of a frame
/// throw Failure if there is no such frame or if they cannot be read.
class RecordingTables {
 public:
  RecordingTables() = default;
  RecordingTables(const RecordingTables&) = delete;
  RecordingTables& operator=(const RecordingTables&) = delete;
  virtual ~RecordingTables() = default;

  virtual const FileBytes& file() const = 0;
  virtual VELMAR_VERSION_E version() const = 0;
  virtual VELMAR_CODEC_E codec() const = 0;
  /// Hexadecimal text.
  virtual std::string deviceId() const = 0;
  virtual RecordingDescription description() const = 0;
  virtual unsigned int framesCount() const = 0;
  virtual unsigned int framesMax() const = 0;
  virtual std::uint64_t sensorTime(unsigned int index) const = 0;
  virtual std::uint64_t arrivedTime(unsigned int index) const = 0;
  virtual unsigned int frameSize(unsigned int index) const = 0;
  /// Where the frames are, perhaps past the end of the file.
  virtual const std::vector<FilePlace>& places() const = 0;
  /// Reads the bytes of a frame whose place is within the file. Thread-safe, unless tables change.
  /// \return why it could not be read; empty if it was
  virtual std::string tryReadFrame(unsigned int index, std::string& bytes) const {
    return file().tryRead(places().at(index), bytes);
  }
  // Of an rtv.
  virtual frametag03Ver_t tag(unsigned int /*index*/) const { return {}; }
  virtual can_data_io can(unsigned int /*index*/) const { return {}; }
  // While it is being recorded.
  /// Takes in the frames that have come since the last time.
  virtual void update() {}
  /// Whether another recording has begun in its file.
  virtual bool isReplaced() const { return false; }
};

}  // namespace velmar::toolkit

#endif
