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
/// Operations answer RTV_ERR_SUCCESS (0) or a negative code, and write their outputs only if they
/// succeed. Unless stated otherwise, they answer RTV_ERR_NOT_INIT before init(), after a failed one
/// and after clear(), and RTV_ERR_INVALID_PARAMETER for a frame index beyond the last frame.
/// Nothing is thrown. The file must not be shortened while it is open.
///
/// Threads: init() and clear() exclude each other. The getters take no lock: several threads may
/// use them while neither of the two runs. getImage() is for one thread at a time, since an object
/// has one decoder.
class VELMAR_VIDEO_API TaggedVideoParser : public RecordFile {
 public:
  /// The characters that a file has to begin with; the rest of its magic code is not looked at.
  static const std::string IDENTIFIER;
  static const std::string TAG;  ///< of the log lines

  using ScalingFactor = tjscalingfactor;  ///< the type's name in version 1.0

  /// When memory runs out, init() answers RTV_ERR_BUFFER_NOT_ALLOCATED.
  TaggedVideoParser();
  ~TaggedVideoParser();

  /// Maps the file and reads its header and tags; frames are not copied. After a failure it may be
  /// called again.
  /// \retval RTV_ERR_DUPLICATE_INIT           a file is open; clear() comes first
  /// \retval RTV_ERR_NULL_POINTER             the path is null
  /// \retval RTV_ERR_INVALID_FILE_NAME        the path is empty
  /// \retval RTV_ERR_FILE_NOT_EXIST           there is no such file
  /// \retval RTV_ERR_STATUS_FILE_CANNOT_READ  no permission to read it
  /// \retval RTV_ERR_FILE_SIZE_IS_ZERO        it is empty
  /// \retval RTV_ERR_FILE_OPEN_FAIL           the system refuses to open it
  /// \retval RTV_ERR_FILE_MMAP_FAIL           the system refuses to map it; its descriptor stays
  ///                                          open, kept for existing programs
  /// \retval RTV_ERR_NOT_VELMAR_VIDEO_FORMAT  no RTV file, or of another version
  /// \retval RTV_ERR_VIDEO_NOT_COMPLETE       it is cut in header or tags, it has no frame, or the
  ///                                          last frame does not end where the file ends
  /// \retval RTV_ERR_BUFFER_NOT_ALLOCATED     no memory
  ErrorCode_e init(const char* path);
  /// Releases the file. Always succeeds.
  ErrorCode_e clear();
  /// The checks that init() makes before it opens the file.
  ErrorCode_e beforeInitCheck(const char* path);
  /// Does nothing, since init() has loaded everything.
  ErrorCode_e loadAllFromFile();

  /// The version that the header names; 0.1 gives RTV_VER_02, too.
  ErrorCode_e getVersion(version_e& version);
  /// Number of frames in the file.
  ErrorCode_e getFramesCount(unsigned short& count);
  /// Number of slots in the tag table.
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
  /// Copies 24 bytes.
  /// \retval RTV_ERR_INVALID_PARAMETER     `size` is smaller
  /// \retval RTV_ERR_BUFFER_NOT_ALLOCATED  `buf` is null
  ErrorCode_e getDeviceId(unsigned char* buf, unsigned int size);
  /// Always RTV_FMT_BGR, even before init().
  ErrorCode_e getImageColorFormat(format_e& format);
  /// NDS units to degrees.
  static double NDS2Degree(int v);
  /// Start position in degrees and metres. Version 02 stores no altitude: `alt` is 0. In version 03
  /// it is the stored number, which is metres, in version 04 a hundredth of that.
  ErrorCode_e getStdPosition(double& lat, double& lng, double& alt);
  /// The start position as stored: NDS units, and the altitude (0 for version 02).
  ErrorCode_e getStartPosition(int& lng, int& lat, int& alt);

  /// Whether there is a frame of that index.
  ErrorCode_e checkIndex(unsigned short index);
  /// Kept for existing programs: sets `rIndex` to `index` and succeeds, whatever the frame.
  ErrorCode_e checkCorruption(unsigned short index, unsigned short& rIndex);
  /// All numbers of the frame's tag as stored. In version 02, z is 0, and x, y and the distance are
  /// sign-extended from 24 bits.
  ErrorCode_e getTag(unsigned short index, frametag03Ver_t& tag);
  /// Milliseconds since the start time, with their sign.
  ErrorCode_e getTimeFlag(unsigned short index, int& timeFlag);
  /// Milliseconds since 1970: the start time plus the magnitude of the time flag.
  ErrorCode_e getTimeStamp(unsigned short index, unsigned long& timestamp);
  /// Metres from the start position: `a` is the tag's y, `b` its x, `c` its z (0 in version 02).
  /// This order is kept for existing programs.
  ErrorCode_e getRelPosition(unsigned short index, float& a, float& b, float& c);
  /// Metres travelled since the start.
  ErrorCode_e getRelDistance(unsigned short index, float& distance);
  /// Metres a second.
  ErrorCode_e getSpeed(unsigned short index, float& speed);
  /// Degrees, as stored; unlike the speed, it is not in hundredths.
  ErrorCode_e getDirection(unsigned short index, float& direction);
  /// Kept for existing programs: values that are not those of the file. New programs use
  /// getCANRecord(). The tags hold aligned blocks, and can_data_assign() copies them as if they
  /// were packed. Versions 02 and 03 give an empty block for any index, with every pointer set.
  ErrorCode_e getCAN(unsigned short index, can_data& can);
  /// The CAN signals of the frame as the file has them, in host byte order, whichever rtv file the
  /// process opened first. In versions 02 and 03 every signal is absent.
  ErrorCode_e getCANRecord(unsigned short index, can_data_io& record);

  /// Where the stored frame lies: its offset from the start of the file and its size, in bytes. The
  /// range is not checked against the length of the file. For an index without a frame nothing is
  /// written. `useCorruptionCheck` makes no difference; `rIndex` may be null.
  void getRawImageRange(unsigned short index, unsigned long& offset, unsigned int& size,
                        bool useCorruptionCheck, unsigned short* rIndex);
  /// Size of the stored frame in bytes. `useCorruptionCheck` makes no difference.
  ErrorCode_e getRawImageSize(unsigned short index, unsigned int& size, bool useCorruptionCheck);
  /// Copies the stored frame, getRawImageSize() bytes.
  /// \retval RTV_ERR_INVALID_PARAMETER     no such frame, or it is larger than `bufSize`
  /// \retval RTV_ERR_BUFFER_NOT_ALLOCATED  `buf` is null
  /// \retval RTV_ERR_VIDEO_NOT_COMPLETE    the frame reaches past the end of the file
  ErrorCode_e getRawImage(unsigned short index, unsigned int bufSize, unsigned char* buf);
  /// Replaces `out` by the stored frame.
  /// \retval RTV_ERR_BUFFER_NOT_ALLOCATED  no memory
  /// \retval RTV_ERR_VIDEO_NOT_COMPLETE    the frame reaches past the end of the file
  ErrorCode_e getRawImage(unsigned short index, std::string& out);

  /// TurboJPEG's factor for a scale; 1/1 for a value outside the enumeration.
  static tjscalingfactor getScalingFactor(ScaleFactor_e scale);
  /// TurboJPEG's number for RGB, BGR or GRAY. For any other format it answers false and writes
  /// nothing.
  static bool getPixelFormat(format_e format, int* pixelFormat);
  /// Bytes a pixel; otherwise as getPixelFormat().
  static bool getPixelSize(format_e format, int* bytes);
  /// The size of the buffer that getImage() fills, in bytes:
  ///     width * (height - cropTop - cropBottom) * bytes a pixel
  /// with the header's width and height and both row counts scaled, each rounded up.
  /// \param cropTop, cropBottom  rows of the unscaled image to cut
  /// \param outWidth, outHeight  receive the picture's size in pixels; may be null
  /// \retval RTV_ERR_COLOR_FORMAT_NOT_SUPPROT  not RGB, BGR or GRAY
  /// \retval RTV_ERR_INVALID_PARAMETER         more rows to cut than there are, or a size beyond 32
  ///                                           bits
  ErrorCode_e getImageSizeInBytes(unsigned int& size, format_e format, ScaleFactor_e scale,
                                  unsigned short cropTop, unsigned short cropBottom,
                                  unsigned short* outWidth, unsigned short* outHeight);
  /// Decodes a frame: rows from top to bottom without padding.
  /// \param size  exactly the value of getImageSizeInBytes() for the same arguments
  /// \retval RTV_ERR_COLOR_FORMAT_NOT_SUPPROT  not RGB, BGR or GRAY
  /// \retval RTV_ERR_INVALID_PARAMETER         no such frame; as getImageSizeInBytes(); another
  ///                                           size; or the header says width or height 0
  /// \retval RTV_ERR_BUFFER_NOT_ALLOCATED      `buf` is null, or no memory
  /// \retval RTV_ERR_VIDEO_NOT_COMPLETE        the frame reaches past the end of the file
  /// \retval RTV_ERR_DECOMPRESS_ERROR          the frame does not decode; `buf` may hold a part
  ///                                           of the picture
  ErrorCode_e getImage(unsigned short index, unsigned int size, unsigned char* buf, format_e format,
                       ScaleFactor_e scale, unsigned short cropTop, unsigned short cropBottom);

 protected:
  /// The open file and the decoder.
  struct State;

  /// Whether init() has succeeded and clear() was not called since.
  bool isInitialised() const;

  /// What differs between reading and editing.
  struct InitMode {
    bool writable;    ///< whether the file is opened for writing, too
    const char* tag;  ///< of the log lines
  };
  /// The public init(), for either.
  ErrorCode_e init(const char* path, const InitMode& mode);
  /// Finds bytes in the map.
  /// \retval RTV_ERR_VIDEO_NOT_COMPLETE  they reach past the end of the file
  ErrorCode_e findBytes(unsigned long offset, unsigned int length,
                        const unsigned char*& bytes) const;

  std::unique_ptr<State> state_;  ///< null if memory ran out

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
