#ifndef VELMAR_TOOLKIT_FINISHED_TABLES_H
#define VELMAR_TOOLKIT_FINISHED_TABLES_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/recording/RecordingTables.h"
#include "velmar_video/VelmarVideoFile.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

namespace velmar::toolkit {

/// Those of a recording that is finished, by the library's reader.
///
/// The library maps the file. A map kills the program where the disk cannot read or the file has
/// become shorter, so what the library looks at in its map is read from the file first.
class FinishedTables final : public RecordingTables {
 public:
  /// Throws Failure.
  explicit FinishedTables(const std::string& path);

  /// Once, before anything else is asked for. Throws Failure if the disk cannot read it.
  VELMAR_ERROR_CODE_E open();

  /// For calls whose error code the caller handles itself. Not for frames.
  VelmarVideoFileReader& reader() const { return *reader_; }
  /// Below the facade; null unless it is an rtv.
  TaggedVideoParser* parser() const { return parser_; }

  const FileBytes& file() const override { return file_; }
  VELMAR_VERSION_E version() const override;
  VELMAR_CODEC_E codec() const override;
  std::string deviceId() const override;
  RecordingDescription description() const override;
  unsigned int framesCount() const override;
  unsigned int framesMax() const override;
  std::uint64_t sensorTime(unsigned int index) const override;
  std::uint64_t arrivedTime(unsigned int index) const override;
  unsigned int frameSize(unsigned int index) const override;
  const std::vector<FilePlace>& places() const override;
  frametag03Ver_t tag(unsigned int index) const override;
  can_data_io can(unsigned int index) const override;

 private:
  void check(VELMAR_ERROR_CODE_E code) const;
  void readAhead(std::uint64_t offset, std::uint64_t length) const;
  void readAheadOfImg() const;
  void readAheadOfRtv() const;
  std::vector<FilePlace> readIndex() const;
  std::vector<FilePlace> readRanges() const;

  const FileBytes file_;
  std::shared_ptr<VelmarVideoFileReader> reader_;
  TaggedVideoParser* parser_ = nullptr;  ///< the reader's
  version_e rtvVersion_ = RTV_VER_MAX;
  mutable std::optional<std::vector<FilePlace>> places_;
};

}  // namespace velmar::toolkit

#endif
