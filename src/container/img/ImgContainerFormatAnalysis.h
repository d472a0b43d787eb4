#ifndef VELMAR_IMG_IMG_CONTAINER_FORMAT_ANALYSIS_H
#define VELMAR_IMG_IMG_CONTAINER_FORMAT_ANALYSIS_H

#include <sys/stat.h>

#include <string>
#include <vector>

#include "base/LeaveUninitialized.h"
#include "base/MemoryMap.h"
#include "container/img/FrameIndex.h"
#include "container/img/ImgMetaData.h"
#include "velmar_video/VelmarVideoErrMsg.h"

/// What everything that reads an "img" file needs: the map, the metadata and the frame index, and
/// the checks that make them safe to use.
class ImgContainerFormatAnalysis {
 public:
  ImgContainerFormatAnalysis() = default;
  ImgContainerFormatAnalysis(const ImgContainerFormatAnalysis&) = delete;
  ImgContainerFormatAnalysis& operator=(const ImgContainerFormatAnalysis&) = delete;

  virtual ~ImgContainerFormatAnalysis() = default;
  /// Takes the file's size; false if it is 0.
  virtual bool getLength(const std::string& path);
  /// Takes the index in host byte order. Every frame begins between the placeholder and the
  /// metadata; whether it ends inside the file is asked of each frame when it is used.
  virtual bool readFrameIndex();
  virtual bool readMetaDataOffset();
  virtual bool readMetaData();
  /// Accepts an index equal to the number of frames, on purpose; checkFrame() does not.
  virtual bool checkIndex(unsigned int index);
  virtual VELMAR_ERROR_CODE_E checkFileAccess(const std::string& path);
  /// Maps the whole file for reading.
  virtual VELMAR_ERROR_CODE_E openMap(const std::string& path);

 protected:
  /// What open() begins with: forgets an earlier file and checks the path, where it logs with
  /// `tag`. VELMAR_ERROR_CODE_DUPLICATE_INIT_E while a file is open.
  VELMAR_ERROR_CODE_E checkOpening(const std::string& path, const char* tag);
  /// What open() ends with: reads metadata and index of the mapped file. Logs the step that fails
  /// with `tag`, and then lets go of everything.
  /// \param mapped  what the mapping answered
  VELMAR_ERROR_CODE_E analyse(VELMAR_ERROR_CODE_E mapped, const char* tag);
  /// openMap() for either access.
  VELMAR_ERROR_CODE_E mapFile(const std::string& path, MemoryMap::Access access);
  /// Whether there is such a frame: VELMAR_ERROR_CODE_OUT_RANGE_E, VELMAR_ERROR_CODE_NOT_INIT_E.
  VELMAR_ERROR_CODE_E checkFrame(unsigned int index);
  /// Whether the frame's bytes are all in the file: VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E.
  VELMAR_ERROR_CODE_E checkFrameBytes(const FrameIndex& record) const;
  /// Start of the frame's bytes in the map.
  const unsigned char* frameBytes(const FrameIndex& record) const {
    return mapAddr_.data() + record.frameOffset;
  }
  /// Copies a stored frame to a buffer of `size` bytes: the errors of checkFrame() and
  /// checkFrameBytes(), VELMAR_ERROR_CODE_INVALID_PARAMETER_E for too small a buffer,
  /// VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E for none.
  VELMAR_ERROR_CODE_E copyFrame(unsigned int index, unsigned int size, unsigned char* buffer);

  /// Back to what a new object has.
  void forget();

  std::vector<FrameIndex, LeaveUninitialized<FrameIndex>> frameIndex_;  ///< host byte order
  unsigned long metaDataOffset_ = 0;
  unsigned long fileLength_ = 0;
  struct stat openedFile_ {};
  MemoryMap mapAddr_;
  ImgMetaData metaData_;
  bool analysed_ = false;  ///< open() has succeeded; close() clears it
};

#endif
