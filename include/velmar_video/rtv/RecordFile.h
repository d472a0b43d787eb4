/// \file
/// The content of an RTV file in memory: header and frame tags of versions 02, 03 and 04.
///
/// Most programs do not need this header: RecordFileCreater.h writes RTV files and
/// TaggedVideoParser.h reads them, and both classes are built on RecordFile. Include it to use the
/// constants and the frame tag structs, to log the whole content with dump(), or to work on version
/// 04 tags in memory.
#ifndef VELMAR_VIDEO_RTV_RECORD_FILE_H
#define VELMAR_VIDEO_RTV_RECORD_FILE_H

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "velmar_video/VelmarVideoCommDef.h"
#include "velmar_video/export.h"
#include "velmar_video/rtv/CanData.h"

/// The most frames that an RTV file holds.
constexpr unsigned int kRtvFramesMax = 65535;
/// Bytes of the device identifier in an RTV header.
constexpr unsigned int kRtvDeviceIdSize = 24;
/// The bit of the tagging flags that marks the frames as undistorted.
constexpr unsigned int kRtvUndistortedFlag = 0x10;
/// 2015-01-01 00:00:00 UTC in milliseconds since 1970: start times of version 02 count from here,
/// those of later versions from 1970.
constexpr unsigned long kRtvVersion02Epoch = 1420070400000;

/// Always false, since the library runs on little-endian hosts only.
VELMAR_VIDEO_API bool isCPUBigEndian();

/// Frame tag of version 02 as in the file, 29 bytes. The 24-bit fields are signed and have their
/// least significant byte first.
struct __attribute__((packed)) frametag_02ver_t {
  int time_flag;                       ///< milliseconds since the start time
  unsigned long data_offset;           ///< of the JPEG data, from the start of the file
  unsigned int data_length;            ///< bytes
  unsigned char x[3];                  ///< see frametag03Ver_t
  unsigned char y[3];                  ///< see frametag03Ver_t
  unsigned char relative_distance[3];  ///< see frametag03Ver_t
  unsigned short speed;                ///< see frametag03Ver_t
  unsigned short direction;            ///< degrees
};
static_assert(sizeof(frametag_02ver_t) == 29);

/// Frame tag of version 03 as in the file, 36 bytes.
struct __attribute__((packed)) frametag03Ver_t {
  int time_flag;                   ///< milliseconds since the start time
  unsigned long data_offset;       ///< of the JPEG data, from the start of the file
  unsigned int data_length;        ///< bytes
  int x;                           ///< hundredths of a metre from the start position
  int y;                           ///< hundredths of a metre from the start position
  int z;                           ///< hundredths of a metre from the start position
  unsigned int relative_distance;  ///< hundredths of a metre travelled since the start
  unsigned short speed;            ///< hundredths of a metre a second
  unsigned short direction;        ///< degrees
};
static_assert(sizeof(frametag03Ver_t) == 36);

/// The decoded content of one file. Use it from one thread at a time. It cannot be copied, since
/// its tags point to it.
class VELMAR_VIDEO_API RecordFile {
 public:
  class frametag_t;

  static const char MAGIC_CODE_V02[12];       ///< the first bytes of a version 02 file
  static const unsigned char VERSION_V02[2];  ///< major, minor
  static const char MAGIC_CODE_V03[11];       ///< with the zero that is stored behind it
  static const unsigned char VERSION_V03[2];  ///< major, minor
  static const char MAGIC_CODE[11];           ///< version 04
  static const unsigned char VERSION[2];      ///< major, minor

  /// Has no content; the version is RTV_VER_MAX.
  RecordFile();
  /// When memory runs out, the name stays empty, and the log has an error line.
  explicit RecordFile(const std::string& fileName);
  RecordFile(const RecordFile&) = delete;
  RecordFile& operator=(const RecordFile&) = delete;
  ~RecordFile();

  /// The name as given. When memory runs out, it is empty, and the log has an error line.
  std::string getFileName() const;
  /// Zeroes the version 04 header and sets the version to RTV_VER_MAX. The altitude, the tags and
  /// the headers of the other versions stay as they are; kept for existing programs.
  void clear();

  /// Writes the content to the log as readable text, under the tag "RecordFile" at the level
  /// information; the device id takes a line for each byte. If nothing is loaded, there is one
  /// error line. The CAN signals of version 04 are shown as the tags hold them: other values than
  /// those of the file, see frametag_t::operator=.
  void dump();
  /// dump() for a file of version 02.
  void dump_ver02();
  /// dump() for a file of version 03.
  void dump_ver03();
  /// dump() for a file of version 04.
  void dump_ver04();

 protected:
  /// The fields of every version's header; version 02 has no flags and no altitude.
  struct header_t {
    char magic_code[12] = {};          ///< versions 03 and 04: 10 characters and the terminator
    unsigned char flags = 0;           ///< bit 0: written by a big-endian CPU
    unsigned char version_major = 0;   ///< as in the file
    unsigned char version_minor = 0;   ///< as in the file
    unsigned char device_id[24] = {};  ///< the camera's identifier
    unsigned long start_time = 0;      ///< milliseconds
    int lng = 0;                       ///< start position, NDS units
    int lat = 0;                       ///< start position, NDS units
    int alt = 0;  ///< start position: metres in version 03, hundredths of a metre in version 04
    unsigned short frames_count = 0;          ///< frames in the file
    unsigned short frames_max = 0;            ///< slots of the tag table
    unsigned short width = 0;                 ///< pixels
    unsigned short height = 0;                ///< pixels
    format_e frame_format = RTV_FMT_UNKNOWN;  ///< as the writer described the frames
    codec_e frame_codec = RTV_CODEC_UNKNOWN;  ///< as the writer described the frames
    unsigned int tagging_flags = 0;           ///< 0x10: undistorted
  };

  /// The header of a version. Every value but RTV_VER_02 and RTV_VER_03 stands for version 04.
  header_t& headerOf(version_e version);
  /// The same.
  const header_t& headerOf(version_e version) const;

  /// Whether the bytes of fields of this type have to be reversed. Two oddities are kept for
  /// existing programs:
  /// - Bit 0 of the flags in the version 04 header decides, even for a version 03 file. The flags
  ///   in the version 03 header are ignored.
  /// - The first call in the process decides it for each type: every later file is treated as the
  ///   first one was.
  ///
  /// Thread-safe. If several threads open their first files at once, any of those files may decide,
  /// and a different one for each type.
  template <typename T>
  bool mustSwap() const;
  /// The value, with its bytes reversed if mustSwap() says so.
  template <typename T>
  T swauto(T value) const;
  /// mustSwap() for any field of a tag.
  bool mustSwapTag() const;
  /// swauto() on every field.
  void swauto(frametag03Ver_t& tag) const;

  /// The part of dump() that shows the header.
  void dumpHeader(version_e version) const;

  std::string fileName_;             ///< as given to the constructor or to init()
  version_e version_ = RTV_VER_MAX;  ///< of the file
  // Only those of the file's own version are filled.
  header_t header_;                          ///< version 04
  std::vector<frametag_t> tags_;             ///< version 04
  header_t headerVer02_;                     ///< version 02
  std::vector<frametag_02ver_t> tagsVer02_;  ///< version 02
  header_t headerVer03_;                     ///< version 03
  std::vector<frametag03Ver_t> tagsVer03_;   ///< version 03
};

/// Decoded frame tag of version 04: the fields of frametag03Ver_t and a CAN block of its own.
class VELMAR_VIDEO_API RecordFile::frametag_t {
 public:
  /// \param owner  gives the byte order for fill(); must outlive the tag
  explicit frametag_t(RecordFile* owner);
  /// As operator=().
  frametag_t(const frametag_t& other);
  /// Copies the first 109 bytes of the CAN block, whatever its form, and aligns them again if the
  /// size is CAN_SIZE_ALIGNED. So the copy of an aligned block holds other values than the block;
  /// kept for existing programs. TaggedVideoParser::getCANRecord() gives the values of the file.
  /// When memory runs out, the copy has no block.
  frametag_t& operator=(const frametag_t& other);
  /// Takes the CAN block over as it is and purges `other`.
  frametag_t(frametag_t&& other) noexcept;
  /// The same.
  frametag_t& operator=(frametag_t&& other) noexcept;
  ~frametag_t();

  /// Decodes a tag of 145 bytes at `raw`.
  /// \param size  the form of the CAN block: CAN_SIZE_IO or CAN_SIZE_ALIGNED
  /// \return false for any other size and when memory runs out; the tag is then purged
  bool fill(const void* raw, CAN_SIZE size);
  /// Zeroes every field and releases the CAN block.
  void purge();
  /// Reverses the bytes of every field of a packed block if the owner's file has the other byte
  /// order, as far as mustSwap() tells.
  void can_data_io_swauto(can_data_io& block) const;

  ///@{
  /// In the unit of frametag03Ver_t.
  int time_flag() const { return fields_.time_flag; }
  unsigned long data_offset() const { return fields_.data_offset; }
  unsigned int data_length() const { return fields_.data_length; }
  int x() const { return fields_.x; }
  int y() const { return fields_.y; }
  int z() const { return fields_.z; }
  unsigned int relative_distance() const { return fields_.relative_distance; }
  unsigned short speed() const { return fields_.speed; }
  unsigned short direction() const { return fields_.direction; }
  ///@}

  /// The form of the CAN block.
  CAN_SIZE can_size() const { return can_size_; }
  /// The CAN block: can_size() bytes, null if that is CAN_SIZE_NONE. The tag keeps ownership.
  can_data* pCan() const { return pCan_.get(); }

 private:
  struct Free {
    void operator()(can_data* block) const { std::free(block); }
  };

  /// Logs a failure with the name and the number of the place.
  bool allocate(CAN_SIZE size, const char* place, int number);

  frametag03Ver_t fields_{};  ///< a tag of version 04 begins like one of version 03
  CAN_SIZE can_size_ = CAN_SIZE_NONE;
  std::unique_ptr<can_data, Free> pCan_;
  RecordFile* owner_;
};

#endif
