/// \file
/// Writing RTV files.
#ifndef VELMAR_VIDEO_RTV_RECORD_FILE_CREATER_H
#define VELMAR_VIDEO_RTV_RECORD_FILE_CREATER_H

#include <memory>
#include <string>

#include "velmar_video/rtv/RecordFile.h"

/// Writes one RTV file of any version, with tags and CAN signals.
///
/// The constructor creates a file under the name plus ".tmp", with the whole tag table. close(), or
/// else the destructor, writes the header, brings the file to the disk and renames it. If the
/// process ends without either, the file keeps the ".tmp" name and a header of zeros. Failures are
/// logged under the tag "RecordFileCreater". Use it from one thread at a time.
class VELMAR_VIDEO_API RecordFileCreater : public RecordFile {
 public:
  /// Only the log and isOpen() report a failure.
  /// \param framesMax    slots of the tag table
  /// \param version      every value but RTV_VER_02 and RTV_VER_03 stands for version 04
  /// \param fileSizeOut  receives the size of the new file in bytes, cut to 32 bits; may be null
  RecordFileCreater(const std::string& fileName, unsigned short framesMax, version_e version,
                    unsigned int* fileSizeOut);
  /// \param duration  seconds at 60 frames a second: duration * 60 slots, modulo 65536; 65535 for
  ///                  a duration of 0
  RecordFileCreater(std::string fileName, unsigned int duration, version_e version,
                    unsigned int* fileSizeOut);
  /// Closes a file that is open.
  ~RecordFileCreater();

  /// Whether frames can be added: the file has been created and not yet closed.
  bool isOpen() const;

  // The setters take effect at close().

  /// Copies the first 24 bytes. A shorter id leaves the rest as it was, zero at first. Any size
  /// other than 24 is logged as a warning. Null changes nothing.
  void setDeviceId(const unsigned char* id, unsigned int size);
  /// Milliseconds; stored as given. Version 02 counts from 2015-01-01 00:00:00 UTC, the others
  /// from 1970.
  void setStartTime(unsigned long startTime);
  /// Pixels.
  void setVideoResolution(unsigned short width, unsigned short height);
  /// The format that the header names; RTV_FMT_UNKNOWN at first.
  void setFrameFormat(format_e format);
  /// The codec that the header names; RTV_CODEC_UNKNOWN at first.
  void setFrameCodec(codec_e codec);
  /// Where frame positions are counted from.
  /// \param lng, lat  NDS units: 2^30 are 90 degrees
  /// \param alt       metres in version 03, hundredths of a metre in version 04; not stored in
  ///                  version 02
  void setStartPosition(int lng, int lat, int alt);
  /// All bits; 0x10 marks the frames as undistorted. Version 02 files are written with 0 whatever
  /// is set here; kept for existing programs.
  void setTaggingFlags(unsigned int flags);
  /// The flags as they were set, 0 at first.
  void getTaggingFlags(unsigned int& flags);

  /// Appends a frame: its bytes first, then its tag, so that a tag never stands for bytes that are
  /// not there.
  /// \param timeFlag          milliseconds since the start time
  /// \param data              `length` bytes, not looked at; null is refused unless length is 0
  /// \param x, y, z           hundredths of a metre from the start position; version 02 stores the
  ///                          low 24 bits of x and y and no z
  /// \param relativeDistance  hundredths of a metre; version 02 stores the low 24 bits
  /// \param speed             hundredths of a metre a second
  /// \param direction         degrees
  /// \param can               version 04: copied; null for no signals
  /// \return false if the frame was not added: there are framesMax already (not logged), the disk
  ///         is full, its tag cannot be written, no file is open, or the data is refused
  bool addFrame(int timeFlag, const char* data, unsigned int length, int x, int y, int z,
                unsigned int relativeDistance, unsigned short speed, unsigned short direction,
                const can_data_io* can);
  /// The same for the bytes of a string.
  bool addFrame(int timeFlag, const std::string& data, int x, int y, int z,
                unsigned int relativeDistance, unsigned short speed, unsigned short direction,
                const can_data_io* can);

  /// Finishes the file. If that fails, the temporary file stays, with all frames in it. The
  /// temporary file is locked until then; another writer of the same path is not open.
  /// \return whether the finished file has its name; false for a second call, which does nothing
  bool close();

  /// Deletes the temporary file instead of finishing it. Does nothing if no file is open.
  void abandon();

 private:
  struct File;

  bool makeTagTable();
  bool appendBytes(const char* data, unsigned int length);
  bool storeTag(const unsigned char* tag, unsigned int index);
  bool storeHeader();
  /// Logs the system call that failed and answers false.
  bool logged(const char* step) const;
  bool publish();
  /// Takes off what a frame that was not added has left at the end.
  bool cutBehindFrames();
  void release();
  void encodeHeader(unsigned char* bytes) const;
  header_t& headerWithAllFields();

  std::string temporaryPath_;
  std::unique_ptr<File> file_;  ///< null when no file is open
  unsigned long fileSize_ = 0;  ///< bytes
  unsigned short framesWritten_ = 0;
};

#endif
