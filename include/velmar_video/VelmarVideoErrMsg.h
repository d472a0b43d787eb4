/// \file
/// The error codes of the whole library and their names.
///
/// The facade (VelmarVideoFile.h) answers with VELMAR_ERROR_CODE_E, the RTV classes with the
/// negated values, ErrorCode_e. TypeConversion.h translates between the two.
#ifndef VELMAR_VIDEO_ERR_MSG_H
#define VELMAR_VIDEO_ERR_MSG_H

#include <string>

#include "velmar_video/export.h"

/// What an operation of the facade answers; 0 is success.
enum VELMAR_ERROR_CODE_E : int {
  VELMAR_ERROR_CODE_SUCCESS_E = 0,
  VELMAR_ERROR_CODE_STATUS_FILE_CANNOT_READ_E = 1,    ///< no permission, or bytes not readable
  VELMAR_ERROR_CODE_FILE_NOT_EXIST_E = 2,             ///< no file under that path
  VELMAR_ERROR_CODE_INVALID_FILE_NAME_E = 3,          ///< empty path
  VELMAR_ERROR_CODE_NULL_POINTER_E = 4,               ///< null where a value is needed
  VELMAR_ERROR_CODE_FILE_SIZE_IS_ZERO_E = 5,          ///< the file is empty
  VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E = 6,             ///< the system refused to open the file
  VELMAR_ERROR_CODE_FILE_MMAP_FAIL_E = 7,             ///< the system refused to map the file
  VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E = 8,    ///< not a container of this kind
  VELMAR_ERROR_CODE_DUPLICATE_INIT_E = 9,             ///< opened before
  VELMAR_ERROR_CODE_NOT_INIT_E = 10,                  ///< not open
  VELMAR_ERROR_CODE_ALREADY_LAST_FRAME_E = 11,        ///< no frame follows
  VELMAR_ERROR_CODE_INVALID_PARAMETER_E = 12,         ///< an argument out of its range
  VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E = 13,          ///< the frame's JPEG does not decode
  VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E = 14,  ///< no decoder for that pixel format
  VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E = 15,      ///< null buffer, or no memory
  VELMAR_ERROR_CODE_ALL_IMAGES_CORRUPTED_E = 16,      ///< never produced
  VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E = 17,        ///< the file is cut short or unfinished
  VELMAR_ERROR_CODE_OUT_RANGE_E = 18,                 ///< no frame with that index
  VELMAR_ERROR_CODE_MAX_E = 19,                       ///< end marker, not an error
};

/// What an operation of the RTV classes answers: 0, or the facade code negated.
enum ErrorCode_e : int {
  RTV_ERR_SUCCESS = 0,
  RTV_ERR_STATUS_FILE_CANNOT_READ = -1,
  RTV_ERR_FILE_NOT_EXIST = -2,
  RTV_ERR_INVALID_FILE_NAME = -3,
  RTV_ERR_NULL_POINTER = -4,
  RTV_ERR_FILE_SIZE_IS_ZERO = -5,
  RTV_ERR_FILE_OPEN_FAIL = -6,
  RTV_ERR_FILE_MMAP_FAIL = -7,
  RTV_ERR_NOT_VELMAR_VIDEO_FORMAT = -8,
  RTV_ERR_DUPLICATE_INIT = -9,
  RTV_ERR_NOT_INIT = -10,
  RTV_ERR_ALREADY_LAST_FRAME = -11,
  RTV_ERR_INVALID_PARAMETER = -12,
  RTV_ERR_DECOMPRESS_ERROR = -13,
  RTV_ERR_COLOR_FORMAT_NOT_SUPPROT = -14,
  RTV_ERR_BUFFER_NOT_ALLOCATED = -15,
  RTV_ERR_ALL_IMAGES_CORRUPTED = -16,
  RTV_ERR_VIDEO_NOT_COMPLETE = -17,
  RTV_ERR_OUT_RANGE = -18,
  RTV_ERR_MAX = -19,
};

/// The member's name, such as "VELMAR_ERROR_CODE_OUT_RANGE_E". VELMAR_ERROR_CODE_MAX_E and every
/// value outside the enumeration give one fixed text, which ends in a blank. When memory runs out,
/// the text is empty, and the log has an error line. Thread-safe.
VELMAR_VIDEO_API std::string errorCode2String(VELMAR_ERROR_CODE_E code);

#endif
