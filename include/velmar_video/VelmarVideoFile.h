/// \file
/// Creating, reading and editing recordings: the interfaces, and the factories that choose the
/// container ("img" or "rtv") by the path's extension.
///
/// Every operation answers VELMAR_ERROR_CODE_SUCCESS_E or says what went wrong, and leaves its
/// output arguments untouched unless it succeeds (an operation that differs says so). Nothing is
/// thrown: for want of memory, too, there is an error code, mostly
/// VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E, or an empty text from an operation that gives a text
/// (getMetaInfo() differs), and an error line in the log. All times are microseconds since
/// 1970-01-01 00:00:00 UTC unless stated otherwise.
///
/// Threads: an object is used by one thread at a time. Different objects are independent, readers
/// of one file included: each has its own map and its own decoder. The factories may be called
/// from any thread.
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
  /// The path is kept as it is; no file is touched.
  explicit IVelmarVideoFile(std::string path);
  IVelmarVideoFile(const IVelmarVideoFile&) = delete;
  IVelmarVideoFile& operator=(const IVelmarVideoFile&) = delete;

  virtual ~IVelmarVideoFile();
  /// Go on only after success. While the object is open, another call answers
  /// VELMAR_ERROR_CODE_DUPLICATE_INIT_E and changes nothing. A failed open() lets go of everything
  /// and may be tried again. After close(), readers and modifiers may be opened again and read the
  /// file anew; an img creater, which writes one file, answers
  /// VELMAR_ERROR_CODE_DUPLICATE_INIT_E. An rtv creater's open() does nothing and always answers
  /// success, since its constructor has done it all; close() tells whether it could.
  virtual VELMAR_ERROR_CODE_E open() = 0;
  /// Success only if what there was to do is done. A second call, or one without open(), does
  /// nothing and answers VELMAR_ERROR_CODE_NOT_INIT_E; rtv readers and modifiers answer success,
  /// and an rtv creater needs no open() to be closed.
  virtual VELMAR_ERROR_CODE_E close() = 0;
  /// The path's part after its last "/"; empty if the path ends in "/".
  virtual std::string getFileName();

 protected:
  const std::string filePath_;  ///< as given to the constructor
};

/// Writes one new recording.
///
/// Frames go to the path plus ".tmp". close() finishes that file, brings it to the disk and
/// renames it to the path, so the path never stands for an unfinished recording, not even after a
/// power cut; a file that was there is replaced. Where close() cannot finish, the temporary file
/// stays with all frames in it; where an rtv creater only had to refuse a frame, close() finishes
/// the file with the others and answers an error all the same. The destructor closes what was
/// opened, or was given frames, and not closed. An rtv creater on which nothing but setters was
/// called leaves no file and replaces none when it is destroyed.
///
/// The setters may be called before or after open(), any time before close(). One that has no
/// memory for its value leaves the old one whole; close() then finishes the file with that and
/// answers VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E.
class VELMAR_VIDEO_API VelmarVideoFileCreater : public IVelmarVideoFile {
 public:
  /// The recording's path when it is finished.
  explicit VelmarVideoFileCreater(std::string path);
  ~VelmarVideoFileCreater() override;

  /// Creates the temporary file; of an rtv makeVelmarVideoFileCreater() has done so already. It
  /// replaces one that an interrupted recording left behind: save that first.
  VELMAR_ERROR_CODE_E open() override = 0;
  /// Finishes the recording: success means that it is complete, on the disk and under its name.
  /// img refuses a recording whose frames together are not larger than its index (28 bytes a
  /// frame), one without frames included.
  VELMAR_ERROR_CODE_E close() override = 0;

  /// Marks the frames as undistorted. It cannot be taken back.
  virtual void setUndistortFlags() = 0;
  /// `id`: `length` bytes, copied. img keeps any length; rtv keeps 24 bytes, a longer id is cut,
  /// a shorter one leaves the rest as it was (zero at first).
  virtual void setDeviceId(const unsigned char* id, unsigned int length) = 0;
  /// rtv only: the start of the recording; frame times are stored relative to it, so set it
  /// before the first frame. img has no such field and takes the first frame's arrival time.
  virtual void setStartTime(unsigned long startTime);
  /// Pixels, as in the frames' JPEG headers; readers decode to this size. img starts from
  /// 1280 x 800.
  virtual void setVideoResolution(unsigned short width, unsigned short height) = 0;
  /// A description of the frames for readers; img starts from BGR.
  virtual void setFrameFormat(VELMAR_FORMAT_E format) = 0;
  /// A description of the frames for readers; img starts from JPG.
  virtual void setFrameCodec(VELMAR_CODEC_E codec) = 0;

  /// Appends a frame. Its bytes are not looked at; they are with the operating system when the
  /// call returns, so a killed process loses no frame that was added.
  /// \param jpegData     the encoded frame, not kept
  /// \param sensorTime   capture time
  /// \param arrivedTime  time of arrival at the recorder (rtv does not store it)
  /// \return img: whether the frame is in the recording; after a failed write every later frame
  ///         is refused. rtv answers true even for a frame that it could not take; close() tells.
  virtual bool addFrame(const std::string& jpegData, unsigned long sensorTime,
                        unsigned long arrivedTime) = 0;
  /// The same for `size` bytes at `jpegData`. Null is refused, unless `size` is 0.
  virtual bool addFrame(const unsigned char* jpegData, unsigned int size, unsigned long sensorTime,
                        unsigned long arrivedTime) = 0;

  /// img only: a JSON text, "{}" at first. It is not checked here: a text that is not JSON makes
  /// close() fail.
  virtual void setCameraParams(const std::string& params) = 0;
  /// As setCameraParams().
  virtual void setExtendedInfo(const std::string& info) = 0;
};

/// Reads a recording through a shared, read-only map of the file; opening copies no frame.
///
/// Frames are numbered from 0 to the frame count minus 1. Any other index gives
/// VELMAR_ERROR_CODE_OUT_RANGE_E (img) or VELMAR_ERROR_CODE_INVALID_PARAMETER_E (rtv, which cuts
/// indexes to 16 bits first, so that 65536 is frame 0; this is intended). Per-frame operations
/// answer an error before open(), after a failed one and after close().
///
/// The file must not be shortened while it is open. If a creater finishes another recording under
/// the path, open() finds the old one or the new one, each complete, and a reader that is open
/// stays with the one that it opened.
class VELMAR_VIDEO_API VelmarVideoFileReader : public IVelmarVideoFile {
 public:
  /// Without memory for the path open() answers VELMAR_ERROR_CODE_INVALID_FILE_NAME_E.
  explicit VelmarVideoFileReader(const std::string& path);
  ~VelmarVideoFileReader() override;

  /// Checks and maps the file and reads its header and index.
  /// VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E: a file that is cut short or still being written.
  VELMAR_ERROR_CODE_E open() override = 0;
  /// Lets the file go. img keeps the map's address range reserved, with no memory behind it,
  /// until the object is opened again or destroyed.
  VELMAR_ERROR_CODE_E close() override = 0;

  /// The version that the header names.
  virtual VELMAR_ERROR_CODE_E getVersion(VELMAR_VERSION_E& version) = 0;
  /// The frame's time relative to the start, microseconds. img: arrival time minus that of frame
  /// 0 in unsigned arithmetic, so an earlier frame gives a huge value. rtv: the stored
  /// milliseconds times 1000 in signed 32-bit arithmetic, so it wraps beyond 35 minutes; use
  /// getTimeStamp() for longer recordings. Both are intended.
  virtual VELMAR_ERROR_CODE_E getTimeFlag(unsigned int index, unsigned long& value) = 0;
  /// img: the arrival time (the modifier's modifyTimestamp() changes the capture time instead;
  /// both names are kept). rtv: the start time plus the magnitude of the frame's stored time,
  /// in whole milliseconds.
  virtual VELMAR_ERROR_CODE_E getTimeStamp(unsigned int index, unsigned long& timestamp) = 0;
  /// Size of the stored frame in bytes. `flag` makes no difference.
  virtual VELMAR_ERROR_CODE_E getRawImageSize(unsigned int index, unsigned int& size,
                                              bool flag) = 0;
  /// Copies the stored frame to `buffer`, which is `bufferSize` bytes long; the number of bytes
  /// is that of getRawImageSize(). VELMAR_ERROR_CODE_INVALID_PARAMETER_E: the buffer is too
  /// small; VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E: it is null;
  /// VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E: the frame reaches past the end of the file.
  virtual VELMAR_ERROR_CODE_E getRawImage(unsigned int index, unsigned int bufferSize,
                                          unsigned char* buffer) = 0;
  /// The stored frame in `data`. img appends to what is in `data`, rtv replaces it; both are
  /// intended. VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E: no memory.
  virtual VELMAR_ERROR_CODE_E getRawImage(unsigned int index, std::string& data) = 0;

  /// The size of the buffer that getImage() fills:
  ///     width * (height - rows cut) * bytes a pixel
  /// with the header's width and height and both row counts scaled, each rounded up.
  /// \param cropTop, cropBottom  rows of the unscaled image to cut
  /// \param outWidth, outHeight  receive the picture's size in pixels; may be null
  /// VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E: not RGB, BGR or GRAY (rtv takes every value
  /// that it does not know for BGR). VELMAR_ERROR_CODE_INVALID_PARAMETER_E: more rows cut than
  /// there are, a size beyond 32 bits, a scale outside the enumeration (rtv decodes at 1/1).
  virtual VELMAR_ERROR_CODE_E getImageSizeInBytes(unsigned int& size, VELMAR_FORMAT_E format,
                                                  SCALE_FACTOR_E scale, unsigned short cropTop,
                                                  unsigned short cropBottom,
                                                  unsigned short* outWidth,
                                                  unsigned short* outHeight) = 0;
  /// Decodes a frame into `buffer`: rows from top to bottom without padding, 3 bytes a pixel in
  /// the order of the format's name, or 1 byte of grey.
  /// \param bufferSize  exactly the value of getImageSizeInBytes() for the same arguments; a
  ///                    larger buffer is refused too (VELMAR_ERROR_CODE_INVALID_PARAMETER_E)
  /// The other errors of getImageSizeInBytes(), and VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E: null
  /// buffer, or no memory; VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E: the frame reaches past the end
  /// of the file; VELMAR_ERROR_CODE_INVALID_PARAMETER_E: the header says width or height 0;
  /// VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E: no JPEG, a damaged one, one that no scale makes small
  /// enough, or one that would take absurdly much memory for its few bytes; the buffer may then
  /// hold a part of the picture. A frame of another size than the header says is decoded at the
  /// largest scale that fits, and leaves the rest of the buffer as it was, or zero where rows are
  /// cut. img looks at the frame count itself as an index only after all other arguments; this is
  /// intended. Nothing is allocated per call: where rows are cut, the whole picture is decoded into
  /// scratch memory that the reader keeps.
  virtual VELMAR_ERROR_CODE_E getImage(unsigned int index, unsigned int bufferSize,
                                       unsigned char* buffer, VELMAR_FORMAT_E format,
                                       SCALE_FACTOR_E scale, unsigned short cropTop,
                                       unsigned short cropBottom) = 0;
  /// The format that decoded pictures are said to have: always BGR, whatever the file holds.
  virtual VELMAR_ERROR_CODE_E getImageColorFormat(VELMAR_FORMAT_E& format) = 0;

  /// Number of frames. rtv writes it even on error (0 then).
  virtual VELMAR_ERROR_CODE_E getFramesCount(unsigned int& count) = 0;
  /// The most frames that the file could hold: 4294967295 for img, the size of the tag table for
  /// rtv, which writes it even on error (0 then).
  virtual VELMAR_ERROR_CODE_E getFramesMax(unsigned int& max) = 0;
  /// Pixels, as the header says; the frames themselves are not looked at.
  virtual VELMAR_ERROR_CODE_E getImageResolution(unsigned short& width, unsigned short& height) = 0;
  /// The pixel format that the header names.
  virtual VELMAR_ERROR_CODE_E getColorFormat(VELMAR_FORMAT_E& format) = 0;
  /// The codec that the header names.
  virtual VELMAR_ERROR_CODE_E getCodec(VELMAR_CODEC_E& codec) = 0;
  /// img: the arrival time of frame 0, 0 without frames. rtv: the header's start time.
  virtual VELMAR_ERROR_CODE_E getStartTime(unsigned long& startTime) = 0;
  /// Arrival time of the frame. rtv stores none and gives getTimeStamp().
  virtual VELMAR_ERROR_CODE_E getArrivedTime(unsigned int index, unsigned long& time) = 0;
  /// Capture time of the frame. rtv: the same as getTimeStamp().
  virtual VELMAR_ERROR_CODE_E getSensorTime(unsigned int index, unsigned long& time) = 0;
  /// img: fills all `bufferSize` bytes, with zeros behind the identifier's end. rtv: copies
  /// exactly 24 bytes, VELMAR_ERROR_CODE_INVALID_PARAMETER_E if the buffer is smaller.
  virtual VELMAR_ERROR_CODE_E getDeviceId(unsigned char* buffer, unsigned int bufferSize) = 0;
  /// 1 if the frames are marked as undistorted, else 0.
  virtual VELMAR_ERROR_CODE_E getUndistortFlags(unsigned int& flags) = 0;
  /// JSON text; "{}" for rtv.
  virtual std::string getCameraParams() = 0;
  /// img: locks the whole file in memory until close(); a lock that the system refuses is logged
  /// and still answers success. rtv: nothing to load. VELMAR_ERROR_CODE_NOT_INIT_E: not open.
  virtual VELMAR_ERROR_CODE_E loadAllFromFile() = 0;
  /// img: the header as JSON text, without the index checksum; "{}" for rtv and on failure.
  virtual std::string getMetaInfo() = 0;
  /// JSON text; "{}" for rtv.
  virtual std::string getExtendedInfo() = 0;
};

/// Edits a recording in place, through a shared writable map of the file.
///
/// Frame times are in the file at once, everything else when close() succeeds; a modifier that is
/// destroyed without close() drops the latter. Operations answer an error before open() and after
/// close(), unless they have nothing to do in the container, or only change the header in memory
/// (rtv: modifyCameraID(), modifyUndistorted() and modifyStartTime() answer success and leave no
/// trace; this is intended). Nothing locks the file: two modifiers
/// at work on one file overwrite each other's changes.
///
/// Readers take header and times when they open the file. One that does so in the very moment of a
/// change (of a time; of the header, in close()) may find a part of the old value and a part of the
/// new one; frames are never touched.
class VELMAR_VIDEO_API VelmarVideoFileModifier : public IVelmarVideoFile {
 public:
  /// Without memory for the path open() answers VELMAR_ERROR_CODE_INVALID_FILE_NAME_E.
  explicit VelmarVideoFileModifier(const std::string& path);
  ~VelmarVideoFileModifier() override;

  /// As the reader's open(), for reading and writing.
  VELMAR_ERROR_CODE_E open() override = 0;
  /// Writes the changed header and lets the file go. Where another file has got the path meanwhile,
  /// that one is left alone: img answers VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E, rtv edits the old one.
  /// Where the system refuses to unmap the file, img answers VELMAR_ERROR_CODE_FILE_MMAP_FAIL_E and
  /// rtv -1, which is no member of the enumeration; both have written everything.
  VELMAR_ERROR_CODE_E close() override = 0;

  /// Replaces the device identifier; lengths as in VelmarVideoFileCreater::setDeviceId().
  virtual VELMAR_ERROR_CODE_E modifyCameraID(const unsigned char* id, unsigned int length) = 0;
  /// Marks the frames as undistorted, or takes the mark away.
  virtual VELMAR_ERROR_CODE_E modifyUndistorted(bool undistorted) = 0;
  /// img only: a JSON text; one that is not JSON makes close() fail.
  virtual VELMAR_ERROR_CODE_E modifyCameraParams(const std::string& params) = 0;
  /// img only, and never written: the rewritten header has no such key, so the change drops the
  /// checksum from the file. This is intended.
  virtual VELMAR_ERROR_CODE_E modifyFrameIndexDataChecksum(const std::string& checksum) = 0;
  /// Changes the capture time of a frame: what the reader's getSensorTime() gives. `timestamp` is
  /// only read. rtv stores whole milliseconds since the start time as it has been changed so far,
  /// in 32 bits, and readers take a time before the start for one after it; in version 02 the time
  /// counts from 2015-01-01 00:00:00 UTC here, as in the file, and not from 1970 as the reader's.
  virtual VELMAR_ERROR_CODE_E modifyTimestamp(unsigned int index, unsigned long& timestamp) = 0;
  /// img only: changes the arrival time of a frame. `time` is only read.
  virtual VELMAR_ERROR_CODE_E modifyArrivalTime(unsigned int index, unsigned long& time) = 0;
  /// rtv only: changes the header's start time, in whole milliseconds; img has none. `startTime` is
  /// only read, and counts from 2015-01-01 00:00:00 UTC in version 02. Frame times are stored
  /// relative to it and move with it. Works before open() as well, where it leaves no trace.
  virtual VELMAR_ERROR_CODE_E modifyStartTime(unsigned long& startTime) = 0;
  /// img only: as modifyCameraParams().
  virtual VELMAR_ERROR_CODE_E modifyExtendedInfo(const std::string& info) = 0;
  /// Sets the header's width and height to those of frame 0's JPEG.
  virtual VELMAR_ERROR_CODE_E correctVideoResolution() = 0;
};

/// A creater for the path's extension: the text after the last "." of the whole path, "img" or
/// "rtv" to the letter. Null for every other, and, with an error line, without memory. No file is
/// touched before open(), except that an rtv creater creates, sizes and maps its temporary file at
/// once.
VELMAR_VIDEO_API std::shared_ptr<VelmarVideoFileCreater> makeVelmarVideoFileCreater(
    const std::string& path);
/// A reader, by the same rule. No file is touched before open().
VELMAR_VIDEO_API std::shared_ptr<VelmarVideoFileReader> makeVelmarVideoFileReader(
    const std::string& path);
/// A modifier, by the same rule. No file is touched before open().
VELMAR_VIDEO_API std::shared_ptr<VelmarVideoFileModifier> makeVelmarVideoFileModifier(
    const std::string& path);

#endif
