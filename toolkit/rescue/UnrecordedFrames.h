#ifndef VELMAR_TOOLKIT_UNRECORDED_FRAMES_H
#define VELMAR_TOOLKIT_UNRECORDED_FRAMES_H

#include <vector>

#include "toolkit/recording/FramePlaces.h"
#include "toolkit/rescue/Leftover.h"

namespace velmar::toolkit {

/// Follows JPEGs from marker to marker: frames without numbers and times.
std::vector<LeftoverFrame> findPictures(const FileBytes& file, std::uint64_t from,
                                        std::uint64_t to);

/// Finds frames that have no record (in an rtv: no tag) where those with a record leave room for
/// them.
///
/// The frames of an rtv or of an unfinished img lie in it from the first to the last, those of a
/// finished img from any frame to the last, then from the first on. So a frame's place tells its
/// number, unless pictures are missing there as well: then those that are left get the first of the
/// numbers in question.
class UnrecordedFrames {
 public:
  /// \param room        where frames lie in the file
  /// \param areMoved    whether the first frames lie at the end
  /// \param count       of the frames, so far
  /// \param mayGrow     whether there may be more, which had the last numbers
  UnrecordedFrames(const FileBytes& file, FilePlace room, bool areMoved, std::uint64_t count,
                   bool mayGrow)
      : file_(file), room_(room), areMoved_(areMoved), count_(count), mayGrow_(mayGrow) {}

  /// Adds them to those that have a record, in the order of the numbers and without times.
  void addTo(std::vector<LeftoverFrame>& frames);

  /// Of all frames.
  std::uint64_t count() const { return count_; }
  /// At the end of the file, that belong to no frame.
  std::uint64_t strayBytes() const { return strayBytes_; }

 private:
  std::uint64_t missing(std::uint64_t before, std::uint64_t next) const;
  void takeBetween(std::uint64_t before, std::uint64_t next, std::uint64_t from, std::uint64_t to);
  std::uint64_t takeFront(const LeftoverFrame& first, std::uint64_t most);
  void takeEnd(std::uint64_t before, std::uint64_t next, std::uint64_t from);

  const FileBytes& file_;
  const FilePlace room_;
  const bool areMoved_;
  std::uint64_t count_;
  const bool mayGrow_;
  std::vector<LeftoverFrame> found_;
  std::uint64_t strayBytes_ = 0;
};

}  // namespace velmar::toolkit

#endif
