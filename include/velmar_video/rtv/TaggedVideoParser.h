/// \file
/// Reading RTV files.
#ifndef VELMAR_VIDEO_RTV_TAGGED_VIDEO_PARSER_H
#define VELMAR_VIDEO_RTV_TAGGED_VIDEO_PARSER_H

#include <turbojpeg.h>

#include <cstddef>
#include <memory>
#include <string>

#include "velmar_video/VelmarVideoErrMsg.h"
#include "velmar_video/rtv/CanData.h"
#include "velmar_video/rtv/RecordFile.h"

/// Opens an RTV file of any version: header, frame tags with positions and CAN signals, and the
/// frames, stored or decoded.
///
/// Operations answer RTV_ERR_SUCCESS (0) or a negative code and leave their outputs untouched
/// unless they succeed. Unless stated otherwise they answer RTV_ERR_NOT_INIT before init(), after
/// a failed one and after clear(), and RTV_ERR_INVALID_PARAMETER for a frame index beyond the last
/// frame. Nothing is thrown.
///
/// Threads: init() and clear() exclude each other. The getters take no lock: several threads may
/// use them while neither runs. getImage() is for one thread at a time, since an object has one
/// decoder. The file must not be shortened while it is open.
class VELMAR_VIDEO_API TaggedVideoParser : public RecordFile {
 public:
  /// The characters that a file has to begin with; what follows them is not looked at.
  static const std::string IDENTIFIER;
  static const std::string TAG;  ///< of the log

  using ScalingFactor = tjscalingfactor;  ///< its name in version 1.0

  /// Without memory init() answers RTV_ERR_BUFFER_NOT_ALLOCATED.
  TaggedVideoParser();
  ~TaggedVideoParser();

  /// Maps the file and reads its header and tags; frames are not copied.
  /// RTV_ERR_DUPLICATE_INIT: initialised before and not cleared; RTV_ERR_NULL_POINTER,
  /// RTV_ERR_INVALID_FILE_NAME: null or empty path; RTV_ERR_FILE_NOT_EXIST,
  /// RTV_ERR_STATUS_FILE_CANNOT_READ, RTV_ERR_FILE_SIZE_IS_ZERO, RTV_ERR_FILE_OPEN_FAIL;
  /// RTV_ERR_FILE_MMAP_FAIL, which leaves the file's descriptor open where the system refuses the
  /// map (this is intended);
  /// RTV_ERR_NOT_VELMAR_VIDEO_FORMAT: another version or no such file;
  /// RTV_ERR_VIDEO_NOT_COMPLETE: the last frame does not end where the file ends, or there is none,
  /// or the file is cut behind its version, in the header or the tags;
  /// RTV_ERR_BUFFER_NOT_ALLOCATED: no memory. It may be called again after a failure.
  ErrorCode_e init(const char* path);
  /// Lets the file go. Always succeeds.
  ErrorCode_e clear();
  /// The checks of init() that need no file to be opened.
  ErrorCode_e beforeInitCheck(const char* path);
  /// init() has loaded everything already.
  ErrorCode_e loadAllFromFile();

  /// By the file's version bytes; 0.1, too, is RTV_VER_02.
  ErrorCode_e getVersion(version_e& version);
  /// Frames in the file.
  ErrorCode_e getFramesCount(unsigned short& count);
  /// Slots of the tag table.
  ErrorCode_e getFramesMax(unsigned short& max);
  /// Pixels, as the header says.
  ErrorCode_e getImageResolution(unsigned short& width, unsigned short& height);
  /// The pixel format that the header names.
  ErrorCode_e getColorFormat(format_e& format);
  /// The codec that the header names.
  ErrorCode_e getCodec(codec_e& codec);
  /// Milliseconds as stored: since 2015-01-01 00:00:00 UTC in version 02, since 1970 in the others.
  ErrorCode_e getStartTime(unsigned long& startTime);
  /// All bits; 0x10 marks undistorted frames.
  ErrorCode_e getTaggingFlags(unsigned int& flags);
  /// Copies 24 bytes; RTV_ERR_INVALID_PARAMETER if `size` is smaller,
  /// RTV_ERR_BUFFER_NOT_ALLOCATED for null.
  ErrorCode_e getDeviceId(unsigned char* buf, unsigned int size);
  /// RTV_FMT_BGR, with no need of init().
  ErrorCode_e getImageColorFormat(format_e& format);
  /// NDS units to degrees.
  static double NDS2Degree(int v);
  /// Start position in degrees. `alt` is 0 for version 02, the stored number for version 03 and a
  /// hundredth of it for version 04; the difference is intended.
  ErrorCode_e getStdPosition(double& lat, double& lng, double& alt);
  /// The start position as stored: NDS units, and the altitude (0 for version 02).
  ErrorCode_e getStartPosition(int& lng, int& lat, int& alt);

  /// Whether there is a frame of that index.
  ErrorCode_e checkIndex(unsigned short index);
  /// No frame is ever taken for corrupted: `rIndex` is `index`, and the answer always success.
  ErrorCode_e checkCorruption(unsigned short index, unsigned short& rIndex);
  /// All the numbers of the frame's tag as the file has them. For version 02, z is 0, and x, y and
  /// the distance are extended from their 24 bits, the distance as a signed number.
  ErrorCode_e getTag(unsigned short index, frametag03Ver_t& tag);
  /// Milliseconds since the start time, with their sign.
  ErrorCode_e getTimeFlag(unsigned short index, int& timeFlag);
  /// Milliseconds since 1970: the start time plus the magnitude of the time flag.
  ErrorCode_e getTimeStamp(unsigned short index, unsigned long& timestamp);
  /// Metres from the start position: `a` is the tag's y, `b` its x, `c` its z (0 in version 02).
  /// The crossed order is intended.
  ErrorCode_e getRelPosition(unsigned short index, float& a, float& b, float& c);
  /// Metres travelled since the start.
  ErrorCode_e getRelDistance(unsigned short index, float& distance);
  /// Metres a second.
  ErrorCode_e getSpeed(unsigned short index, float& speed);
  /// Degrees, as stored: not divided by 100 like the speed; this is intended.
  ErrorCode_e getDirection(unsigned short index, float& direction);
  /// The tag's CAN block by can_data_assign(). The tags hold aligned blocks, which that copies as
  /// if they were packed: the values are not those of the file. This is intended; use
  /// getCANRecord(). Versions 02 and 03: an empty block for any index, with every pointer set.
  ErrorCode_e getCAN(unsigned short index, can_data& can);
  /// The CAN signals of the frame as the file has them, in host byte order whatever file came
  /// first in the process; every signal absent in versions 02 and 03.
  ErrorCode_e getCANRecord(unsigned short index, can_data_io& record);

  /// Where the stored frame lies: bytes from the start of the file, and its size. There is no
  /// check of the frame's end against the file's, and nothing is written for an index without
  /// frame. `useCorruptionCheck` makes no difference; `rIndex` may be null.
  void getRawImageRange(unsigned short index, unsigned long& offset, unsigned int& size,
                        bool useCorruptionCheck, unsigned short* rIndex);
  /// Bytes of the stored frame. `useCorruptionCheck` makes no difference.
  ErrorCode_e getRawImageSize(unsigned short index, unsigned int& size, bool useCorruptionCheck);
  /// Copies the stored frame, getRawImageSize() bytes. RTV_ERR_INVALID_PARAMETER: it is longer than
  /// `bufSize`; RTV_ERR_BUFFER_NOT_ALLOCATED: null; RTV_ERR_VIDEO_NOT_COMPLETE: the frame reaches
  /// past the end of the file.
  ErrorCode_e getRawImage(unsigned short index, unsigned int bufSize, unsigned char* buf);
  /// The stored frame instead of what is in `out`. RTV_ERR_BUFFER_NOT_ALLOCATED: no memory.
  ErrorCode_e getRawImage(unsigned short index, std::string& out);

  /// The fraction that is handed to TurboJPEG; 1/1 for a value outside the enumeration.
  static tjscalingfactor getScalingFactor(ScaleFactor_e scale);
  /// TurboJPEG's number for RGB, BGR and GRAY; false, and nothing written, for any other format.
  static bool getPixelFormat(format_e format, int* pixelFormat);
  /// Bytes a pixel, likewise.
  static bool getPixelSize(format_e format, int* bytes);
  /// The size of the buffer that getImage() fills, in bytes:
  ///     width * (height - cropTop - cropBottom) * bytes a pixel
  /// with the header's width and height and both row counts scaled, each rounded up.
  /// \param cropTop, cropBottom  rows of the unscaled image to cut
  /// \param outWidth, outHeight  receive the picture's size in pixels; may be null
  /// RTV_ERR_COLOR_FORMAT_NOT_SUPPROT; RTV_ERR_INVALID_PARAMETER: more rows cut than there are, or
  /// a size beyond 32 bits.
  ErrorCode_e getImageSizeInBytes(unsigned int& size, format_e format, ScaleFactor_e scale,
                                  unsigned short cropTop, unsigned short cropBottom,
                                  unsigned short* outWidth, unsigned short* outHeight);
  /// Decodes a frame: rows from top to bottom without padding.
  /// \param size  exactly the value of getImageSizeInBytes()
  /// The errors of getImageSizeInBytes() and: RTV_ERR_INVALID_PARAMETER: another size, or a header
  /// with width or height 0; RTV_ERR_BUFFER_NOT_ALLOCATED: null, or no memory;
  /// RTV_ERR_VIDEO_NOT_COMPLETE: the frame reaches past the end of the file;
  /// RTV_ERR_DECOMPRESS_ERROR: `buf` may then hold a part of the picture.
  ErrorCode_e getImage(unsigned short index, unsigned int size, unsigned char* buf, format_e format,
                       ScaleFactor_e scale, unsigned short cropTop, unsigned short cropBottom);

 protected:
  /// The open file and the decoder.
  struct State;

  /// Whether init() succeeded and clear() was not called.
  bool isInitialised() const;

  /// What differs between reading and editing.
  struct InitMode {
    bool writable;    ///< whether the map is for writing, too
    const char* tag;  ///< of the log
  };
  /// The public init() for either.
  ErrorCode_e init(const char* path, const InitMode& mode);
  /// Bytes of the map; RTV_ERR_VIDEO_NOT_COMPLETE if they reach past the end of the file.
  ErrorCode_e findBytes(unsigned long offset, unsigned int length,
                        const unsigned char*& bytes) const;

  std::unique_ptr<State> state_;  ///< null without memory

 private:
  ErrorCode_e beforeInitCheck(const char* path, const InitMode& mode) const;
  ErrorCode_e open(const char* path, const InitMode& mode);
  ErrorCode_e load(const InitMode& mode);
  void copyBytes(unsigned long offset, std::size_t size, unsigned char* bytes) const;
  bool readVersion(const unsigned char* file, const InitMode& mode);
  bool readIdentifier(const unsigned char* file);
  void readHeader(const unsigned char* file);
  bool hasTagTable() const;
  ErrorCode_e readTags();
  ErrorCode_e readTagsVer04(unsigned int count);
  ErrorCode_e checkComplete(const InitMode& mode) const;
  void release(const char* tag);

  ErrorCode_e checkInit() const;
  template <typename T>
  ErrorCode_e getHeaderField(T header_t::*field, T& value) const;
  frametag03Ver_t tagAt(unsigned short index) const;
};

#endif
