#ifndef VELMAR_TOOLKIT_RECOVER_FRAMES_H
#define VELMAR_TOOLKIT_RECOVER_FRAMES_H

#include <optional>
#include <string>

#include "toolkit/base/Job.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/FrameLosses.h"
#include "toolkit/recording/RecordFrames.h"
#include "toolkit/rescue/Leftover.h"

/// What is left of an interrupted or damaged recording, as frames of a new one. Of what is lost the
/// job is told.
class LeftoverFrames final : public FrameSource {
 public:
  /// \param keepDamaged  pictures that are cut short or have a hole as well
  /// All of the others must outlive it.
  LeftoverFrames(const FileBytes& file, const Leftover& leftover, bool keepDamaged, Job& job);

  /// Of the first frame that can be had.
  std::optional<JpegSize> firstSize() const;

  std::size_t count() const override { return leftover_.frames.size(); }
  bool read(std::size_t at, NewFrame& frame) override;
  void finish(std::size_t done) override;

 private:
  std::string take(std::size_t at, std::string& jpeg) const;
  bool hasHole(const std::string& jpeg) const;
  void passMissing(std::uint64_t next);

  const FileBytes& file_;
  const Leftover& leftover_;
  const bool keepDamaged_;
  const JpegInspector inspector_;
  FrameNews news_;
  std::uint64_t number_ = 0;  ///< that is next in the recording
};

/// Makes `output` of them under a name of its own beside it (see recoveringPath()), since the
/// output's temporary file may be the very one that is read. Throws Failure.
/// \return the number of frames
unsigned int recoverFrames(LeftoverFrames& frames, const std::string& output,
                           const RecordingDescription& description, unsigned int framesMax,
                           Job& job);

/// The name that the output has until it is complete.
std::string recoveringPath(const std::string& output);

#endif
