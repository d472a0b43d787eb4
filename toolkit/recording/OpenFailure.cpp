#include "toolkit/recording/OpenFailure.h"

#include <algorithm>
#include <cerrno>

#include "container/img/FrameIndex.h"
#include "container/rtv/RtvLayout.h"
#include "toolkit/files/FileBytes.h"
#include "toolkit/files/FileKind.h"
#include "toolkit/files/LockHolder.h"
#include "toolkit/files/RecorderFiles.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/recording/RecordingDescription.h"

namespace velmar::toolkit {

namespace {

constexpr unsigned int kHeaderSize = detail::rtvLayout(RTV_VER_04).headerSize;

bool isZero(const std::string& bytes) { return bytes.find_first_not_of('\0') == bytes.npos; }

bool beginsAsRtv(const FileBytes& file) {
  return file.read(detail::kMagicCodeAt, detail::kRtvMagic.size()) == detail::kRtvMagic;
}

// Whether the number in front leads to what may be the metadata.
bool beginsAsImg(const FileBytes& file) {
  const std::uint64_t offset = imgMetaDataOffset(file);
  return offset >= detail::kFrameIndexStart && file.read(offset, 1) == "{";
}

// A file with neither a number in front that could be an offset nor metadata at its end never was
// an img.
VELMAR_ERROR_CODE_E codeOfImg(const FileBytes& file) {
  const bool mayBeOffset = imgMetaDataOffset(file) < kLongestFile;
  const std::string end = file.read(file.size() - std::min<std::uint64_t>(file.size(), 2), 2);
  const bool mayBeMetaData = end.find('}') != end.npos;
  return mayBeOffset || mayBeMetaData ? VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E
                                      : VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E;
}

VELMAR_ERROR_CODE_E codeOfRtv(const FileBytes& file, VELMAR_ERROR_CODE_E code) {
  const bool isCut = beginsAsRtv(file) && file.size() < kHeaderSize;
  return isCut || isZero(file.read(0, kHeaderSize)) ? VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E : code;
}

// Its recorder gives it the name when it is finished.
Failure missingFile(const std::string& path) {
  const std::string temporary = temporaryPath(path);
  struct stat status {};
  if (temporary == path || stat(temporary.c_str(), &status) != 0) {
    return {path, VELMAR_ERROR_CODE_FILE_NOT_EXIST_E};
  }
  return {path, "it is not finished: " + recorderWords(lockHolder(temporary)),
          VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E};
}

}  // namespace

std::string recorderWords(const std::optional<std::string>& lockHolder) {
  if (lockHolder) return *lockHolder + " is recording it";
  return "its recorder has ended without finishing it; the command recover makes a recording of it";
}

std::optional<Failure> pathFailure(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return missingFile(path);
    return Failure::ofSystem(path, "cannot open it", errno);
  }
  if (!S_ISREG(status.st_mode)) {
    return Failure(path, "it is " + kindOf(status.st_mode) + ", not a recording",
                   VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E);
  }
  if (path.ends_with(".img.tmp") || path.ends_with(".rtv.tmp")) {
    return Failure(path, recorderWords(lockHolder(path)), VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }
  return std::nullopt;
}

Failure openFailure(const std::string& path, VELMAR_ERROR_CODE_E code) {
  if (const auto failure = pathFailure(path)) return *failure;
  if (code != VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E &&
      code != VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E) {
    return {path, code};
  }
  const FileBytes file(path);
  const bool named = isRtvPath(path);
  if (named ? beginsAsImg(file) : beginsAsRtv(file)) {
    const std::string words = named ? "it is an img, but its name ends in .rtv; rename it to .img"
                                    : "it is an rtv, but its name ends in .img; rename it to .rtv";
    return {path, words, VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E};
  }
  if (named) return {path, codeOfRtv(file, code)};
  const VELMAR_ERROR_CODE_E imgCode = codeOfImg(file);
  const std::string cut =
      imgCode == VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E ? cutWords(file) : std::string();
  return cut.empty() ? Failure(path, imgCode) : Failure(path, cut, imgCode);
}

}  // namespace velmar::toolkit
