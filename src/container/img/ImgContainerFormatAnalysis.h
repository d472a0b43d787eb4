#ifndef VELMAR_IMG_IMG_CONTAINER_FORMAT_ANALYSIS_H
#define VELMAR_IMG_IMG_CONTAINER_FORMAT_ANALYSIS_H

#include <sys/stat.h>

#include <string>
#include <vector>

#include "base/FileDescriptor.h"
#include "base/LeaveUninitialized.h"
#include "base/MemoryMap.h"
#include "container/img/FrameIndex.h"
#include "container/img/ImgMetaData.h"
#include "velmar_video/VelmarVideoErrMsg.h"

/// The common part of reader and modifier: the map, the metadata and the frame index of an "img"
/// file, and the checks that make them safe to use.
class ImgContainerFormatAnalysis {
 public:
  ImgContainerFormatAnalysis() = default;
  ImgContainerFormatAnalysis(const ImgContainerFormatAnalysis&) = delete;
  ImgContainerFormatAnalysis& operator=(const ImgContainerFormatAnalysis&) = delete;

  virtual ~ImgContainerFormatAnalysis() = default;
  /// Reads the file's size; false if it is 0.
  virtual bool getLength(const std::string& path);
  /// Reads the index in host byte order, and checks that every frame begins between the placeholder
  /// and the metadata. Whether it ends inside the file is checked when the frame is used.
  virtual bool readFrameIndex();
  virtual bool readMetaDataOffset();
  virtual bool readMetaData();
  /// Also accepts an index equal to the number of frames, on purpose; checkFrame() does not.
  virtual bool checkIndex(unsigned int index);
  virtual VELMAR_ERROR_CODE_E checkFileAccess(const std::string& path);
  /// Maps the whole file for reading.
  virtual VELMAR_ERROR_CODE_E openMap(const std::string& path);

 protected:
  /// The first part of open(): forgets an earlier file and checks the path. Logs with `tag`.
  /// \retval VELMAR_ERROR_CODE_DUPLICATE_INIT_E  a file is open
  VELMAR_ERROR_CODE_E checkOpening(const std::string& path, const char* tag);
  /// The second part of open(): reads metadata and index of the mapped file. If a step fails, logs
  /// it with `tag` and releases everything.
  /// \param mapped  the result of mapping the file
  VELMAR_ERROR_CODE_E analyse(VELMAR_ERROR_CODE_E mapped, const char* tag);
  /// As openMap(); opens `file` with the given flags and leaves it open.
  VELMAR_ERROR_CODE_E mapFile(const std::string& path, int flags,
                              velmar::detail::FileDescriptor& file);
  /// Whether there is such a frame.
  /// \retval VELMAR_ERROR_CODE_OUT_RANGE_E  no frame has that index
  /// \retval VELMAR_ERROR_CODE_NOT_INIT_E   no file is open
  VELMAR_ERROR_CODE_E checkFrame(unsigned int index);
  /// Whether all of the frame's bytes are in the file.
  /// \retval VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E  the frame reaches past the end
  VELMAR_ERROR_CODE_E checkFrameBytes(const FrameIndex& record) const;
  /// Start of the frame's bytes in the map.
  const unsigned char* frameBytes(const FrameIndex& record) const {
    return mapAddr_.data() + record.frameOffset;
  }
  /// Copies a stored frame to a buffer of `size` bytes. Also answers the errors of checkFrame() and
  /// checkFrameBytes().
  /// \retval VELMAR_ERROR_CODE_INVALID_PARAMETER_E     the buffer is too small
  /// \retval VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E  the buffer is null
  VELMAR_ERROR_CODE_E copyFrame(unsigned int index, unsigned int size, unsigned char* buffer);

  /// Returns to the state of a new object.
  void forget();

  std::vector<FrameIndex, velmar::detail::LeaveUninitialized<FrameIndex>>
      frameIndex_;  ///< host byte order
  unsigned long metaDataOffset_ = 0;
  unsigned long fileLength_ = 0;
  struct stat openedFile_ {};
  velmar::detail::MemoryMap mapAddr_;
  ImgMetaData metaData_;
  bool analysed_ = false;  ///< open() has succeeded; close() clears it
};

#endif
