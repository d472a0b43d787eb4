/// \file
/// Editing RTV files in place.
#ifndef VELMAR_VIDEO_RTV_RTV_CONTAINER_MODIFIER_H
#define VELMAR_VIDEO_RTV_RTV_CONTAINER_MODIFIER_H

#include <string>

#include "velmar_video/VelmarVideoFile.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

/// Edits an rtv file: frame times at once, header fields with close().
///
/// makeVelmarVideoFileModifier() makes one for "rtv". The class is public for setTaggingFlags(),
/// and for the parser's getters, which show the header as changed so far.
///
/// For a version 02 file, times count from 2015-01-01 00:00:00 UTC, as in the file. The reader
/// returns times since 1970. Files of big-endian writers are not edited:
/// VELMAR_ERROR_CODE_INVALID_PARAMETER_E.
///
/// modifyCameraID(), modifyUndistorted() and modifyStartTime() change the header in memory, which
/// close() writes. While no file is open they succeed as well and leave no trace; kept for existing
/// programs.
class VELMAR_VIDEO_API RtvContainerModifier : public VelmarVideoFileModifier,
                                              public TaggedVideoParser {
 public:
  /// If there is no memory for the path, open() answers VELMAR_ERROR_CODE_INVALID_FILE_NAME_E.
  explicit RtvContainerModifier(const std::string& path);

  /// The facade's: the last part of the path. RecordFile's gives the whole path of the open file.
  using VelmarVideoFileModifier::getFileName;

  VELMAR_ERROR_CODE_E open() override;
  /// Succeeds if no file is open, too. If the system refuses to unmap the file, the answer is -1,
  /// which is no member of the enumeration, although the header has been written.
  VELMAR_ERROR_CODE_E close() override;
  VELMAR_ERROR_CODE_E modifyCameraID(const unsigned char* id, unsigned int length) override;
  /// Sets or clears bit 0x10 of the tagging flags.
  VELMAR_ERROR_CODE_E modifyUndistorted(bool undistorted) override;
  VELMAR_ERROR_CODE_E modifyCameraParams(const std::string& params) override;
  VELMAR_ERROR_CODE_E modifyFrameIndexDataChecksum(const std::string& checksum) override;
  /// Changes the file only: the getters keep answering the old time.
  VELMAR_ERROR_CODE_E modifyTimestamp(unsigned int index, unsigned long& timestamp) override;
  VELMAR_ERROR_CODE_E modifyArrivalTime(unsigned int index, unsigned long& time) override;
  VELMAR_ERROR_CODE_E modifyStartTime(unsigned long& startTime) override;
  VELMAR_ERROR_CODE_E modifyExtendedInfo(const std::string& info) override;
  VELMAR_ERROR_CODE_E correctVideoResolution() override;

  /// As the parser's init(), for reading and writing.
  ErrorCode_e init(const char* path);
  /// Sets all bits; modifyUndistorted() changes 0x10 alone. Flags are never written to a version 02
  /// file; kept for existing programs.
  void setTaggingFlags(unsigned int flags);

 private:
  VELMAR_ERROR_CODE_E checkEditable() const;
  VELMAR_ERROR_CODE_E checkByteOrder() const;
  bool writeHeader() const;
};

#endif
