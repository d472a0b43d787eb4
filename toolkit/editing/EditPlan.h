#ifndef VELMAR_TOOLKIT_EDIT_PLAN_H
#define VELMAR_TOOLKIT_EDIT_PLAN_H

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/base/UndoFile.h"
#include "toolkit/editing/TagPatches.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// What `edit` is asked to do, as it stands on the command line.
struct EditRequest {
  struct FrameTime {
    unsigned int index;
    std::uint64_t time;
  };

  std::optional<std::string> deviceId;  ///< bytes
  std::optional<bool> undistorted;
  std::optional<std::uint64_t> startTime;
  std::vector<FrameTime> sensorTimes;
  std::vector<FrameTime> arrivedTimes;
  std::optional<std::vector<FrameTimes>> allTimes;  ///< of every frame
  std::optional<std::int64_t> shift;                ///< microseconds
  std::optional<std::string> cameraParams;          ///< JSON text
  std::optional<std::string> extendedInfo;          ///< JSON text
  std::optional<unsigned int> taggingFlags;
  bool fixResolution = false;
  /// Changes the tags of all frames, and may set the start position if there is none.
  std::function<void(const std::vector<std::uint64_t>& sensorTimes, std::vector<FrameTag>& tags,
                     RecordingDescription& description)>
      changeTags;
};

/// The changes that a request makes to a recording, checked, ready to be made.
class EditPlan {
 public:
  /// Throws Failure, which names the option, for what the container cannot hold, and for a file
  /// that is not edited at all. Nothing is written.
  EditPlan(const Recording& recording, const EditRequest& request);

  bool isEmpty() const { return changes_.empty(); }
  /// Changes the file and brings it to the disk. If it throws Failure, the file is as before or has
  /// an undo file. An interruption leaves an undo file, too.
  void apply(const FileLock& lock) const;
  /// What the changes can reach of the file.
  EditedPlaces places() const;
  /// A line for each change: what, before, after.
  std::string text() const;

 private:
  /// An operation of the library that writes the change.
  using Write = std::function<VELMAR_ERROR_CODE_E(VelmarVideoFileModifier&)>;
  struct Change {
    std::string what, before, after;
    Write write;
  };

  void write() const;
  void checkByteOrder() const;
  [[noreturn]] void refuse(const std::string& option, const std::string& words) const;
  void add(std::string what, std::string before, std::string after, Write write);
  void planDeviceId(const std::string& id);
  void planUndistorted(bool undistorted);
  void planTaggingFlags(unsigned int flags);
  void planJson(const std::string& option, const std::string& before, const std::string& after,
                VELMAR_ERROR_CODE_E (VelmarVideoFileModifier::*modify)(const std::string&));
  void planResolution();
  void planStartTime(std::uint64_t time);
  void planSensorTime(const std::string& option, EditRequest::FrameTime change, bool said);
  void planArrivedTime(const std::string& option, EditRequest::FrameTime change, bool said);
  void planFrameTimes(const EditRequest& request);
  void planAllTimes(const std::string& option, const std::vector<FrameTimes>& times);
  void planShift(std::int64_t shift);
  void planTags(const EditRequest& request);
  void checkIndex(const std::string& option, unsigned int index) const;
  std::uint64_t shifted(std::uint64_t time, std::int64_t shift) const;

  const Recording& recording_;
  RecordingDescription description_;  ///< with the start time as it will be
  std::vector<Change> changes_;
  std::vector<FilePatch> patches_;  ///< of which the library's modifier knows nothing
  bool changesMetaData_ = false;    ///< of an img
  EditedPlaces places_;             ///< of times and tags
};

/// Edits a recording as requested, alone. An edit that was interrupted is undone first.
/// \return EditPlan::text()
std::string editRecording(const std::string& path, const EditRequest& request, Job& job);

}  // namespace velmar::toolkit

#endif
