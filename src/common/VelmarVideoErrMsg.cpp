#include "velmar_video/VelmarVideoErrMsg.h"

#include <array>
#include <string_view>

#include "base/Guarded.h"

using namespace velmar::detail;

namespace {

// A compile-time constant: valid before any constructor has run and after every destructor.
constexpr std::array<std::string_view, VELMAR_ERROR_CODE_MAX_E + 1> StringErrorCode = {
    "VELMAR_ERROR_CODE_SUCCESS_E",
    "VELMAR_ERROR_CODE_STATUS_FILE_CANNOT_READ_E",
    "VELMAR_ERROR_CODE_FILE_NOT_EXIST_E",
    "VELMAR_ERROR_CODE_INVALID_FILE_NAME_E",
    "VELMAR_ERROR_CODE_NULL_POINTER_E",
    "VELMAR_ERROR_CODE_FILE_SIZE_IS_ZERO_E",
    "VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E",
    "VELMAR_ERROR_CODE_FILE_MMAP_FAIL_E",
    "VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E",
    "VELMAR_ERROR_CODE_DUPLICATE_INIT_E",
    "VELMAR_ERROR_CODE_NOT_INIT_E",
    "VELMAR_ERROR_CODE_ALREADY_LAST_FRAME_E",
    "VELMAR_ERROR_CODE_INVALID_PARAMETER_E",
    "VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E",
    "VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E",
    "VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E",
    "VELMAR_ERROR_CODE_ALL_IMAGES_CORRUPTED_E",
    "VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E",
    "VELMAR_ERROR_CODE_OUT_RANGE_E",
    "VELMAR_ERROR_CODE_MAX_E",
};

}  // namespace

std::string errorCode2String(VELMAR_ERROR_CODE_E code) {
  return guarded("VelmarVideoErrMsg", "errorCode2String", std::string(), [code]() -> std::string {
    if (static_cast<unsigned int>(code) >= VELMAR_ERROR_CODE_MAX_E) {
      return "error must >= VELMAR_ERROR_CODE_SUCCESS_E && < VELMAR_ERROR_CODE_MAX_E ";
    }
    return std::string(StringErrorCode[code]);
  });
}
