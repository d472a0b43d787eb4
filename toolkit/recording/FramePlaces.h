#ifndef VELMAR_TOOLKIT_FRAME_PLACES_H
#define VELMAR_TOOLKIT_FRAME_PLACES_H

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "toolkit/files/FileBytes.h"
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

/// What is wrong with a frame that SharedBytes finds.
constexpr char kSharedWords[] = "its bytes are those of other frames";

/// Finds frames that have bytes of others, which nobody has recorded: damaged or made-up records
/// can make a small file a large one. A frame that begins where one before it does is one, and so
/// is each that overlaps others once frames come to more than twice the file.
class SharedBytes {
 public:
  /// The file must outlive it.
  explicit SharedBytes(const FileBytes& file) : file_(file) {}

  /// Whether the frame repeats one of those that were asked for before.
  bool repeats(const FilePlace& place);

 private:
  const FileBytes& file_;
  std::unordered_set<std::uint64_t> starts_;
  std::uint64_t bytes_ = 0;  // of all that repeat nothing
};

/// Where the metadata of an img begins; 0 in one that is not finished.
std::uint64_t imgMetaDataOffset(const FileBytes& file);

/// No file is as long: what claims to be is no offset.
constexpr std::uint64_t kLongestFile = std::uint64_t{1} << 48;

/// How an img that was finished is cut short; empty if its metadata are there, at least in part.
std::string cutWords(const FileBytes& file);

}  // namespace velmar::toolkit

#endif
