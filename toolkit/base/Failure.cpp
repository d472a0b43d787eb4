#include "toolkit/base/Failure.h"

#include <cerrno>
#include <cstring>

namespace velmar::toolkit {

namespace {

VELMAR_ERROR_CODE_E codeOfCause(int cause) {
  switch (cause) {
    case ENOENT:
      return VELMAR_ERROR_CODE_FILE_NOT_EXIST_E;
    case EACCES:
    case EPERM:
      return VELMAR_ERROR_CODE_STATUS_FILE_CANNOT_READ_E;
    case ENOSPC:
    case EFBIG:
    case EDQUOT:
    case EIO:
      return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
    default:
      return VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E;
  }
}

}  // namespace

Failure::Failure(const std::string& file, const std::string& words, VELMAR_ERROR_CODE_E code)
    : std::runtime_error(file + ": " + words + " (" + errorCode2String(code) + ")"),
      wordsAt_(file.size() + kSeparator),
      code_(code) {}

Failure::Failure(const std::string& file, VELMAR_ERROR_CODE_E code)
    : Failure(file, plainWords(code), code) {}

Failure Failure::ofSystem(const std::string& file, const std::string& words, int cause) {
  return {file, words + ": " + std::strerror(cause), codeOfCause(cause)};
}

Failure Failure::ofCreation(const std::string& file, int cause) {
  const auto slash = file.rfind('/');
  if (cause != ENOENT || slash == file.npos) return ofSystem(file, "cannot create it", cause);
  return {file, "cannot create it: there is no folder " + file.substr(0, slash),
          codeOfCause(cause)};
}

std::string Failure::wordsFor(const std::string& file) const {
  const std::string line = what();
  return line.compare(0, wordsAt_, file + ": ") == 0 ? words() : line;
}

std::string plainWords(VELMAR_ERROR_CODE_E code) {
  switch (code) {
    case VELMAR_ERROR_CODE_STATUS_FILE_CANNOT_READ_E:
      return "there is no permission to read it";
    case VELMAR_ERROR_CODE_FILE_NOT_EXIST_E:
      return "there is no such file";
    case VELMAR_ERROR_CODE_INVALID_FILE_NAME_E:
      return "the file name is empty";
    case VELMAR_ERROR_CODE_FILE_SIZE_IS_ZERO_E:
      return "the file is empty";
    case VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E:
      return "the system cannot open it";
    case VELMAR_ERROR_CODE_FILE_MMAP_FAIL_E:
      return "the system cannot map it into memory";
    case VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E:
      return "it is not a recording of the kind that its name says";
    case VELMAR_ERROR_CODE_INVALID_PARAMETER_E:
      return "a value does not fit the recording";
    case VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E:
      return "the picture does not decode";
    case VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E:
      return "the pixel format is not supported";
    case VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E:
      return "there is not enough memory";
    case VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E:
      return "it is cut short, damaged or unfinished";
    case VELMAR_ERROR_CODE_OUT_RANGE_E:
      return "there is no frame with that number";
    default:
      return "the operation failed";
  }
}

}  // namespace velmar::toolkit
