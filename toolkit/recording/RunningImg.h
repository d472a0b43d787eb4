#ifndef VELMAR_TOOLKIT_RUNNING_IMG_H
#define VELMAR_TOOLKIT_RUNNING_IMG_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "container/img/FrameIndex.h"
#include "toolkit/recording/FrameTimes.h"
#include "toolkit/recording/RunningTables.h"

namespace velmar::toolkit {

/// Goes by the index journal, which gets a frame's record once the frame is in the file.
class RunningImg final : public RunningTables {
 public:
  explicit RunningImg(const std::string& path);

  void update() override;
  bool isReplaced() const override;
  /// Also while the recorder moves frames to make place for the index.
  std::string tryReadFrame(unsigned int index, std::string& bytes) const override;
  VELMAR_VERSION_E version() const override { return VELMAR_VERSION_1_0_E; }
  RecordingDescription description() const override;
  unsigned int framesMax() const override { return UINT32_MAX; }
  std::uint64_t sensorTime(unsigned int index) const override;
  std::uint64_t arrivedTime(unsigned int index) const override;

 private:
  bool readStart();
  bool add(const std::string& bytes);
  std::optional<FrameIndex> replacedRecord(unsigned int index) const;
  std::optional<FrameIndex> finalRecord(unsigned int index) const;
  bool isOf(unsigned int index, const FrameIndex& record) const;

  FileBytes journal_;
  std::uint64_t read_ = 0;  ///< bytes of the journal
  bool hasCheckSums_ = false;
  std::size_t recordSize_ = 0;
  std::vector<FrameTimes> times_;
};

}  // namespace velmar::toolkit

#endif
