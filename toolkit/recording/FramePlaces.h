#ifndef VELMAR_TOOLKIT_FRAME_PLACES_H
#define VELMAR_TOOLKIT_FRAME_PLACES_H

#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/base/FileBytes.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Where in its file a recording has its frames.
struct FramePlaces {
  explicit FramePlaces(const Recording& recording);

  std::vector<FilePlace> frames;
  /// What is kept for them: from the end of the index or the tag table to the metadata or the end
  /// of the file.
  FilePlace room;
  /// Whether bytes of frames that were moved to make place for the index may lie before them.
  bool mayBeginWithGap;
};

/// Where the metadata of an img begins; 0 in one that is not finished.
std::uint64_t imgMetaDataOffset(const FileBytes& file);

/// No file is as long: what claims to be is no offset.
constexpr std::uint64_t kLongestFile = std::uint64_t{1} << 48;

/// How an img that was finished is cut short; empty if its metadata are there, at least in part.
std::string cutWords(const FileBytes& file);

}  // namespace velmar::toolkit

#endif
