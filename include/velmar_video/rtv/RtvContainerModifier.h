/// \file
/// Editing RTV files in place.
#ifndef VELMAR_VIDEO_RTV_RTV_CONTAINER_MODIFIER_H
#define VELMAR_VIDEO_RTV_RTV_CONTAINER_MODIFIER_H

#include <string>

#include "velmar_video/VelmarVideoFile.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

/// Edits an "rtv" file: frame times in the map at once, header fields with close(). What
/// makeVelmarVideoFileModifier() gives for "rtv"; public for the tagging flags, and for its
/// getters, which show the header as it has been changed so far.
///
/// Times of version 02 files count from 2015-01-01 here as they do in the file, unlike the
/// reader's. Files of big-endian writers are not edited: VELMAR_ERROR_CODE_INVALID_PARAMETER_E.
class VELMAR_VIDEO_API RtvContainerModifier : public VelmarVideoFileModifier,
                                              public TaggedVideoParser {
 public:
  /// Without memory for the path open() answers VELMAR_ERROR_CODE_INVALID_FILE_NAME_E.
  explicit RtvContainerModifier(const std::string& path);

  /// The facade's, not RecordFile's, which gives the whole path of the open file.
  using VelmarVideoFileModifier::getFileName;

  VELMAR_ERROR_CODE_E open() override;
  /// Success as well where no file is open. -1, which is no member of the enumeration, where the
  /// system refuses to unmap the file; the header has been written even so.
  VELMAR_ERROR_CODE_E close() override;
  /// Changes the header in memory, which close() writes: works before open(), after close() and
  /// after a failed open() as well, where it leaves no trace; this is intended.
  VELMAR_ERROR_CODE_E modifyCameraID(const unsigned char* id, unsigned int length) override;
  /// Sets or clears the bit 0x10 of the tagging flags. Works while no file is open, like
  /// modifyCameraID().
  VELMAR_ERROR_CODE_E modifyUndistorted(bool undistorted) override;
  VELMAR_ERROR_CODE_E modifyCameraParams(const std::string& params) override;
  VELMAR_ERROR_CODE_E modifyFrameIndexDataChecksum(const std::string& checksum) override;
  /// The tags in memory keep the old time.
  VELMAR_ERROR_CODE_E modifyTimestamp(unsigned int index, unsigned long& timestamp) override;
  VELMAR_ERROR_CODE_E modifyArrivalTime(unsigned int index, unsigned long& time) override;
  /// Works while no file is open, like modifyCameraID().
  VELMAR_ERROR_CODE_E modifyStartTime(unsigned long& startTime) override;
  VELMAR_ERROR_CODE_E modifyExtendedInfo(const std::string& info) override;
  VELMAR_ERROR_CODE_E correctVideoResolution() override;

  /// The parser's init() for reading and writing.
  ErrorCode_e init(const char* path);
  /// All bits at once; modifyUndistorted() changes 0x10 alone. Flags of a version 02 file never
  /// reach it; this is intended.
  void setTaggingFlags(unsigned int flags);

 private:
  VELMAR_ERROR_CODE_E checkEditable() const;
  VELMAR_ERROR_CODE_E checkByteOrder() const;
  void writeHeader(unsigned char* file) const;
};

#endif
