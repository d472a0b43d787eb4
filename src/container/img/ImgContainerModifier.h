#ifndef VELMAR_IMG_IMG_CONTAINER_MODIFIER_H
#define VELMAR_IMG_IMG_CONTAINER_MODIFIER_H

#include <cstddef>
#include <string>

#include "container/img/ImgContainerFormatAnalysis.h"
#include "velmar_video/VelmarVideoFile.h"

/// Edits an "img" file. Frame times change in the file at once. The metadata changes in memory, and
/// close() writes it over the old block.
class ImgContainerModifier : public ImgContainerFormatAnalysis, public VelmarVideoFileModifier {
 public:
  explicit ImgContainerModifier(const std::string& path);

  VELMAR_ERROR_CODE_E open() override;
  /// Replaces the metadata by one write, so that a reader that opens the file finds the old
  /// metadata or the new. If that fails, the file keeps the old block.
  VELMAR_ERROR_CODE_E close() override;
  using ImgContainerFormatAnalysis::openMap;
  /// Opens the file for writing and maps all of it.
  virtual VELMAR_ERROR_CODE_E openMap();
  VELMAR_ERROR_CODE_E modifyCameraID(const unsigned char* id, unsigned int length) override;
  VELMAR_ERROR_CODE_E modifyUndistorted(bool undistorted) override;
  VELMAR_ERROR_CODE_E modifyCameraParams(const std::string& params) override;
  VELMAR_ERROR_CODE_E modifyFrameIndexDataChecksum(const std::string& checksum) override;
  VELMAR_ERROR_CODE_E modifyTimestamp(unsigned int index, unsigned long& timestamp) override;
  VELMAR_ERROR_CODE_E modifyArrivalTime(unsigned int index, unsigned long& time) override;
  VELMAR_ERROR_CODE_E modifyStartTime(unsigned long& startTime) override;
  VELMAR_ERROR_CODE_E modifyExtendedInfo(const std::string& info) override;
  VELMAR_ERROR_CODE_E correctVideoResolution() override;
  /// As the reader's.
  virtual VELMAR_ERROR_CODE_E getRawImage(unsigned int index, unsigned int size,
                                          unsigned char* buffer);

 private:
  /// Sets a field of the metadata to the result of `makeValue`.
  template <typename T, typename MakeValue>
  VELMAR_ERROR_CODE_E modifyMetaData(T ImgMetaData::*field, MakeValue makeValue);
  /// Stores a frame's time in the file.
  /// \retval VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E  it cannot be written, perhaps only in part
  VELMAR_ERROR_CODE_E storeTime(std::size_t index, std::size_t fieldOffset, unsigned long time);
  /// The part of close() that needs the open file.
  VELMAR_ERROR_CODE_E finish();
  VELMAR_ERROR_CODE_E rewriteMetaData(const std::string& oldText) const;

  velmar::detail::FileDescriptor file_;  ///< while the file is mapped, for the times
  bool metaDataChanged_ = false;
};

#endif
