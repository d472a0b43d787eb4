/// \file
/// Creating, reading and editing recordings: the interfaces, and the factories that choose the
/// container, img or rtv, by the path's extension.
///
/// Every operation answers VELMAR_ERROR_CODE_SUCCESS_E or an error code, and writes its output
/// arguments only if it succeeds. The lists of return values name the codes that need explaining.
///
/// Nothing is thrown. When memory runs out, an operation logs an error line and answers an error
/// code, mostly VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E. One that returns a text answers an empty
/// one, getMetaInfo() "{}".
///
/// All times are microseconds since 1970-01-01 00:00:00 UTC unless stated otherwise.
///
/// Threads: an object is used by one thread at a time. Different objects are independent, even two
/// readers of one file: each has its own map and its own decoder. The factories may be called from
/// any thread.
///
/// # Where img and rtv differ
///
/// The declarations say what holds for both containers, this table says the rest. A star marks
/// behaviour that is kept for existing programs. Error codes are shortened: NOT_INIT stands for
/// VELMAR_ERROR_CODE_NOT_INIT_E.
///
/// ~~~{.unparsed}
/// Operation               img                                 rtv
/// ----------------------  ----------------------------------  ----------------------------------
/// CREATERS
///
/// factory                 touches no file                     creates the temporary file with
///                                                             its whole tag table
/// open()                  creates the temporary file;         does nothing and always succeeds;
///                         DUPLICATE_INIT after close(),       close() reports a temporary file
///                         since an object writes one file     that could not be created
/// until a setter is       1280 x 800, BGR, JPG                0 x 0, unknown, unknown
/// called
/// setDeviceId()           any length                          24 bytes: a longer id is cut, a
///                                                             shorter one leaves the rest as it
///                                                             was, zero at first
/// setStartTime()          does nothing: the first frame's     is stored; frame times are stored
///                         arrival time is the start           relative to it
/// setCameraParams(),      are stored                          do nothing
/// setExtendedInfo()
/// addFrame() fails        false; after a failed write every   true all the same; close() reports
///                         later frame is refused, too         the missing frame *
/// arrival time            is stored                           is not stored
/// most frames             4294967295                          65535
/// close()                 NOT_INIT without open();            needs no open(); if a frame was
///                         VIDEO_NOT_COMPLETE if the frames    refused, finishes the file without
///                         together are not larger than the    it and then answers
///                         index, 28 bytes a frame             VIDEO_NOT_COMPLETE
///   without frames        VIDEO_NOT_COMPLETE                  finishes a file that readers refuse
/// destructor              closes what was opened              closes after open() or addFrame(),
///                                                             else deletes the temporary file
///
/// READERS
///
/// index beyond the last   OUT_RANGE                           INVALID_PARAMETER; only the low 16
/// frame                                                       bits count: 65536 is frame 0 *
/// header getters while    succeed with meaningless values     NOT_INIT; getFramesCount() and
/// no file is open                                             getFramesMax() still write 0
/// close() when not open   NOT_INIT                            succeeds
/// close()                 keeps the map's address range       gives the address range back
///                         reserved, with no memory behind
///                         it, until open() or destructor
/// getTimeFlag()           arrival time minus that of frame    stored milliseconds times 1000 in
///                         0, unsigned: an earlier frame       signed 32 bits: wraps beyond 35
///                         gives a huge value *                minutes; getTimeStamp() does not *
/// getTimeStamp()          arrival time, although              start time plus the magnitude of
///                         modifyTimestamp() changes the       the frame's stored time, in whole
///                         capture time *                      milliseconds
/// getArrivedTime()        arrival time                        as getTimeStamp()
/// getSensorTime()         capture time                        as getTimeStamp()
/// getStartTime()          arrival time of frame 0;            start time of the header
///                         0 without frames
/// getRawImage() to a      appends to the string *             replaces the string
/// string
/// getImageSizeInBytes(),  unknown format:                     unknown format: taken for BGR
/// getImage()              COLOR_FORMAT_NOT_SUPPROT
///                         unknown scale: INVALID_PARAMETER    unknown scale: 1/1
/// getImage(), index is    checks all other arguments before   checks the index first
/// the number of frames    it answers OUT_RANGE *
/// getFramesMax()          4294967295                          size of the tag table
/// getDeviceId()           fills the whole buffer, with        writes 24 bytes; INVALID_PARAMETER
///                         zeros behind the identifier         if the buffer is smaller
/// getCameraParams(),      JSON text                           "{}"
/// getExtendedInfo()
/// getMetaInfo()           the header as JSON text without     "{}"
///                         the index checksum; "{}" on
///                         failure
/// loadAllFromFile()       locks the file in memory until      does nothing
///                         close(); a lock that the system
///                         refuses is logged, and the answer
///                         is success
///
/// MODIFIERS
///
/// edits while no file     an error                            modifyCameraID(), modifyStartTime()
/// is open                                                     and modifyUndistorted() succeed and
///                                                             leave no trace *; operations that
///                                                             do nothing succeed
/// big-endian file         does not exist                      INVALID_PARAMETER
/// close() when not open   NOT_INIT                            succeeds
/// close() while another   if the header was changed,          edits the file that was opened
/// file has the path       FILE_OPEN_FAIL
/// close() cannot unmap    FILE_MMAP_FAIL                      -1, no member of the enumeration
/// modifyCameraID()        any length                          24 bytes, as setDeviceId()
/// modifyTimestamp()       changes the capture time            stores milliseconds since the start
///                                                             time as changed so far, in 32 bits;
///                                                             readers take a time before the
///                                                             start for one after it
/// modifyArrivalTime()     changes the arrival time            does nothing
/// modifyStartTime()       does nothing                        changes the header, in whole
///                                                             milliseconds; frame times, stored
///                                                             relative to it, move along
/// version 02              does not exist                      modifyTimestamp(), modifyStartTime()
///                                                             count from 2015-01-01 00:00:00 UTC
///                                                             like the file; readers from 1970
/// modifyCameraParams(),   change the header                   do nothing
/// modifyExtendedInfo()
/// modifyFrameIndexData-   drops the checksum from the file,   does nothing
/// Checksum()              since the new header has no such
///                         key *
/// ~~~
#ifndef VELMAR_VIDEO_FILE_H
#define VELMAR_VIDEO_FILE_H

#include <memory>
#include <string>

#include "velmar_video/VelmarVideoCommDef.h"
#include "velmar_video/VelmarVideoErrMsg.h"
#include "velmar_video/export.h"

/// What creaters, readers and modifiers have in common.
class VELMAR_VIDEO_API IVelmarVideoFile {
 public:
  /// Keeps the path as it is and touches no file.
  explicit IVelmarVideoFile(std::string path);
  IVelmarVideoFile(const IVelmarVideoFile&) = delete;
  IVelmarVideoFile& operator=(const IVelmarVideoFile&) = delete;

  virtual ~IVelmarVideoFile();
  /// Use the object only after this has succeeded. A failed open() releases everything and may be
  /// tried again. After close(), a reader or modifier may be opened again and reads the file anew.
  /// \retval VELMAR_ERROR_CODE_DUPLICATE_INIT_E  the object is open already; nothing changes
  virtual VELMAR_ERROR_CODE_E open() = 0;
  /// Ends the work on the file and succeeds only if all of it is done.
  /// \retval VELMAR_ERROR_CODE_NOT_INIT_E  the object is not open; nothing changes
  virtual VELMAR_ERROR_CODE_E close() = 0;
  /// The path's part after its last "/"; empty if the path ends in "/".
  virtual std::string getFileName();

 protected:
  const std::string filePath_;  ///< as given to the constructor
};

/// Writes one new recording.
///
/// Frames go to the path plus ".tmp". close() finishes that file, brings it to the disk and
/// renames it to the path, where it replaces a file that was there. So the path never stands for an
/// unfinished recording, not even after a power cut. If close() cannot finish, the temporary file
/// stays, with all frames in it. The destructor closes what is still open.
///
/// The setters may be called at any time before close(), also before open(). One that has no
/// memory for its value keeps the old one; close() then finishes the file with that and answers
/// VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E.
class VELMAR_VIDEO_API VelmarVideoFileCreater : public IVelmarVideoFile {
 public:
  /// \param path  the recording's, once it is finished
  explicit VelmarVideoFileCreater(std::string path);
  ~VelmarVideoFileCreater() override;

  /// Prepares the temporary file. It overwrites one that an interrupted recording left behind.
  /// Recover that one before you make the creater. The file is locked (flock(2)) until close(). A
  /// file that another creater has locked stays as it is, and so does anything that is no regular
  /// file, such as a symbolic link.
  /// \retval VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E  img: the temporary file cannot be created, or is
  ///                                             another creater's; of an rtv, close() reports that
  VELMAR_ERROR_CODE_E open() override = 0;
  /// Finishes the recording. Success means that it is complete, on the disk and under its name.
  /// \retval VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E    the file could not be finished
  /// \retval VELMAR_ERROR_CODE_INVALID_PARAMETER_E     a text that was set is not JSON
  /// \retval VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E  finished, but a setter had no memory
  VELMAR_ERROR_CODE_E close() override = 0;

  /// Marks the frames as undistorted. It cannot be taken back.
  virtual void setUndistortFlags() = 0;
  /// Copies the device identifier, `length` bytes at `id`. Null changes nothing.
  virtual void setDeviceId(const unsigned char* id, unsigned int length) = 0;
  /// The start of the recording. Set it before the first frame.
  virtual void setStartTime(unsigned long startTime);
  /// Pixels, as in the frames' JPEG headers; readers decode to this size.
  virtual void setVideoResolution(unsigned short width, unsigned short height) = 0;
  /// The pixel format to name in the header. Frames are not converted.
  virtual void setFrameFormat(VELMAR_FORMAT_E format) = 0;
  /// The codec to name in the header. Frames are not checked.
  virtual void setFrameCodec(VELMAR_CODEC_E codec) = 0;

  /// Appends a frame without looking at its bytes. They are with the operating system when the
  /// call returns, so a killed process loses no frame that was added.
  /// \param jpegData     the encoded frame, not kept
  /// \param sensorTime   capture time
  /// \param arrivedTime  time of arrival at the recorder
  /// \return false if the frame is not in the recording
  virtual bool addFrame(const std::string& jpegData, unsigned long sensorTime,
                        unsigned long arrivedTime) = 0;
  /// The same for `size` bytes at `jpegData`. Null is refused unless `size` is 0.
  virtual bool addFrame(const unsigned char* jpegData, unsigned int size, unsigned long sensorTime,
                        unsigned long arrivedTime) = 0;

  /// A JSON text, "{}" at first. Only close() checks it.
  virtual void setCameraParams(const std::string& params) = 0;
  /// As setCameraParams().
  virtual void setExtendedInfo(const std::string& info) = 0;
};

/// Reads a recording through a shared, read-only map of the file. Opening copies no frame.
///
/// Frames are numbered from 0 to the frame count minus 1. Operations on a frame answer an error
/// for any other index, before open(), after a failed one and after close().
///
/// The file must not be shortened while it is open. If a creater finishes another recording under
/// the path, open() finds the old one or the new one, each complete. A reader that is open stays
/// with the one that it opened.
class VELMAR_VIDEO_API VelmarVideoFileReader : public IVelmarVideoFile {
 public:
  /// If there is no memory for the path, open() answers VELMAR_ERROR_CODE_INVALID_FILE_NAME_E.
  explicit VelmarVideoFileReader(const std::string& path);
  ~VelmarVideoFileReader() override;

  /// Checks and maps the file and reads its header and index.
  /// \retval VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E  the file is cut short or still being written
  VELMAR_ERROR_CODE_E open() override = 0;
  /// Releases the file.
  VELMAR_ERROR_CODE_E close() override = 0;

  /// The version that the header names.
  virtual VELMAR_ERROR_CODE_E getVersion(VELMAR_VERSION_E& version) = 0;
  /// The frame's time relative to the start, microseconds.
  virtual VELMAR_ERROR_CODE_E getTimeFlag(unsigned int index, unsigned long& value) = 0;
  /// The frame's time.
  virtual VELMAR_ERROR_CODE_E getTimeStamp(unsigned int index, unsigned long& timestamp) = 0;
  /// Size of the stored frame in bytes. `flag` makes no difference.
  virtual VELMAR_ERROR_CODE_E getRawImageSize(unsigned int index, unsigned int& size,
                                              bool flag) = 0;
  /// Copies the stored frame, getRawImageSize() bytes, to `buffer`, which has `bufferSize` bytes.
  /// \retval VELMAR_ERROR_CODE_INVALID_PARAMETER_E     the buffer is too small
  /// \retval VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E  the buffer is null
  /// \retval VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E    the frame reaches past the end of the file
  virtual VELMAR_ERROR_CODE_E getRawImage(unsigned int index, unsigned int bufferSize,
                                          unsigned char* buffer) = 0;
  /// The stored frame. Pass an empty string: what is in `data` may stay in front of it.
  /// \retval VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E  no memory
  /// \retval VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E    the frame reaches past the end of the file
  virtual VELMAR_ERROR_CODE_E getRawImage(unsigned int index, std::string& data) = 0;

  /// The size of the buffer that getImage() fills:
  ///     width * (height - rows cut) * bytes a pixel
  /// with the header's width and height and both row counts scaled, each rounded up.
  /// \param cropTop, cropBottom  rows of the unscaled image to cut
  /// \param outWidth, outHeight  receive the picture's size in pixels; may be null
  /// \retval VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E  not RGB, BGR or GRAY
  /// \retval VELMAR_ERROR_CODE_INVALID_PARAMETER_E         more rows to cut than there are, or a
  ///                                                       size beyond 32 bits
  virtual VELMAR_ERROR_CODE_E getImageSizeInBytes(unsigned int& size, VELMAR_FORMAT_E format,
                                                  SCALE_FACTOR_E scale, unsigned short cropTop,
                                                  unsigned short cropBottom,
                                                  unsigned short* outWidth,
                                                  unsigned short* outHeight) = 0;
  /// Decodes a frame into `buffer`: rows from top to bottom without padding, 3 bytes a pixel in
  /// the order of the format's name, or 1 byte of grey.
  ///
  /// A frame of another size than the header says is decoded at the largest scale that fits. The
  /// rest of the buffer then stays as it was, or becomes zero if rows are cut. Nothing is allocated
  /// per call: if rows are cut, the whole picture is decoded into scratch memory that the reader
  /// keeps.
  /// \param bufferSize  exactly the value of getImageSizeInBytes() for the same arguments
  /// \param cropTop, cropBottom  rows of the unscaled image to cut
  /// \retval VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E  not RGB, BGR or GRAY
  /// \retval VELMAR_ERROR_CODE_INVALID_PARAMETER_E         as getImageSizeInBytes(); or the buffer
  ///                                                       has another size, even a larger one; or
  ///                                                       the header says width or height 0
  /// \retval VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E      the buffer is null, or no memory
  /// \retval VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E        the frame reaches past the end of the
  ///                                                       file
  /// \retval VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E          the frame is no JPEG, is damaged, does
  ///                                                       not fit at any scale, or would need far
  ///                                                       more memory than its size justifies; the
  ///                                                       buffer may hold part of the picture
  virtual VELMAR_ERROR_CODE_E getImage(unsigned int index, unsigned int bufferSize,
                                       unsigned char* buffer, VELMAR_FORMAT_E format,
                                       SCALE_FACTOR_E scale, unsigned short cropTop,
                                       unsigned short cropBottom) = 0;
  /// Always BGR, whatever the file holds and whatever format getImage() was asked for.
  virtual VELMAR_ERROR_CODE_E getImageColorFormat(VELMAR_FORMAT_E& format) = 0;

  /// Number of frames.
  virtual VELMAR_ERROR_CODE_E getFramesCount(unsigned int& count) = 0;
  /// The most frames that the file could hold.
  virtual VELMAR_ERROR_CODE_E getFramesMax(unsigned int& max) = 0;
  /// Pixels, as the header says; the frames themselves are not looked at.
  virtual VELMAR_ERROR_CODE_E getImageResolution(unsigned short& width, unsigned short& height) = 0;
  /// The pixel format that the header names.
  virtual VELMAR_ERROR_CODE_E getColorFormat(VELMAR_FORMAT_E& format) = 0;
  /// The codec that the header names.
  virtual VELMAR_ERROR_CODE_E getCodec(VELMAR_CODEC_E& codec) = 0;
  /// The start of the recording.
  virtual VELMAR_ERROR_CODE_E getStartTime(unsigned long& startTime) = 0;
  /// Arrival time of the frame at the recorder.
  virtual VELMAR_ERROR_CODE_E getArrivedTime(unsigned int index, unsigned long& time) = 0;
  /// Capture time of the frame.
  virtual VELMAR_ERROR_CODE_E getSensorTime(unsigned int index, unsigned long& time) = 0;
  /// Copies the device identifier to `buffer`, which has `bufferSize` bytes. The identifier
  /// of an rtv has 24 bytes.
  /// \retval VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E  the buffer is null
  virtual VELMAR_ERROR_CODE_E getDeviceId(unsigned char* buffer, unsigned int bufferSize) = 0;
  /// 1 if the frames are marked as undistorted, else 0.
  virtual VELMAR_ERROR_CODE_E getUndistortFlags(unsigned int& flags) = 0;
  /// JSON text.
  virtual std::string getCameraParams() = 0;
  /// Asks the system to keep the whole file in memory.
  /// \retval VELMAR_ERROR_CODE_NOT_INIT_E  not open
  virtual VELMAR_ERROR_CODE_E loadAllFromFile() = 0;
  /// The header as JSON text.
  virtual std::string getMetaInfo() = 0;
  /// JSON text.
  virtual std::string getExtendedInfo() = 0;
};

/// Edits a recording in place. Frames are never touched.
///
/// Changed frame times are in the file at once, everything else when close() succeeds; a modifier
/// that is destroyed without close() drops the latter. Operations answer an error before open() and
/// after close(). An index beyond the last frame gives VELMAR_ERROR_CODE_OUT_RANGE_E.
///
/// Nothing locks the file: two modifiers of one file overwrite each other's changes. Readers take
/// header and times when they open the file. One that opens at the very moment of a change (of a
/// time; of the header, in close()) may get a value that is part old and part new.
class VELMAR_VIDEO_API VelmarVideoFileModifier : public IVelmarVideoFile {
 public:
  /// If there is no memory for the path, open() answers VELMAR_ERROR_CODE_INVALID_FILE_NAME_E.
  explicit VelmarVideoFileModifier(const std::string& path);
  ~VelmarVideoFileModifier() override;

  /// As the reader's open(), for reading and writing.
  VELMAR_ERROR_CODE_E open() override = 0;
  /// Writes the changed header and releases the file. If another file has got the path since
  /// open(), that one is left alone. If the system refuses to unmap the file, the answer is an
  /// error although everything is written.
  /// \retval VELMAR_ERROR_CODE_INVALID_PARAMETER_E  a text of the new header is not JSON; the old
  ///                                                header stays
  VELMAR_ERROR_CODE_E close() override = 0;

  /// Replaces the device identifier by the `length` bytes at `id`.
  /// \retval VELMAR_ERROR_CODE_NULL_POINTER_E  null, although `length` is not 0
  virtual VELMAR_ERROR_CODE_E modifyCameraID(const unsigned char* id, unsigned int length) = 0;
  /// Marks the frames as undistorted, or takes the mark away.
  virtual VELMAR_ERROR_CODE_E modifyUndistorted(bool undistorted) = 0;
  /// Replaces the camera parameters by another JSON text, which close() checks.
  virtual VELMAR_ERROR_CODE_E modifyCameraParams(const std::string& params) = 0;
  /// Kept for existing programs: `checksum` is written nowhere.
  virtual VELMAR_ERROR_CODE_E modifyFrameIndexDataChecksum(const std::string& checksum) = 0;
  /// Changes what the reader's getSensorTime() answers for a frame. `timestamp` is only read.
  /// \retval VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E  the disk failed; the time may be half written
  virtual VELMAR_ERROR_CODE_E modifyTimestamp(unsigned int index, unsigned long& timestamp) = 0;
  /// Changes the arrival time of a frame. `time` is only read. Answers as modifyTimestamp().
  virtual VELMAR_ERROR_CODE_E modifyArrivalTime(unsigned int index, unsigned long& time) = 0;
  /// Changes the start of the recording. `startTime` is only read.
  virtual VELMAR_ERROR_CODE_E modifyStartTime(unsigned long& startTime) = 0;
  /// Replaces the extended information by another JSON text, which close() checks.
  virtual VELMAR_ERROR_CODE_E modifyExtendedInfo(const std::string& info) = 0;
  /// Sets the header's width and height to those of frame 0's JPEG.
  /// \retval VELMAR_ERROR_CODE_OUT_RANGE_E         there is no frame
  /// \retval VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E  frame 0 is no picture
  virtual VELMAR_ERROR_CODE_E correctVideoResolution() = 0;
};

/// A creater for the path's extension: the text after the last "." of the whole path, "img" or
/// "rtv", in lower case. Null for any other extension, and, with an error line in the log, when
/// memory runs out.
[[nodiscard]] VELMAR_VIDEO_API std::shared_ptr<VelmarVideoFileCreater> makeVelmarVideoFileCreater(
    const std::string& path);
/// A reader, by the same rule. No file is touched before open().
[[nodiscard]] VELMAR_VIDEO_API std::shared_ptr<VelmarVideoFileReader> makeVelmarVideoFileReader(
    const std::string& path);
/// A modifier, by the same rule. No file is touched before open().
[[nodiscard]] VELMAR_VIDEO_API std::shared_ptr<VelmarVideoFileModifier> makeVelmarVideoFileModifier(
    const std::string& path);

#endif
