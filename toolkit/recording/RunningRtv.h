#ifndef VELMAR_TOOLKIT_RUNNING_RTV_H
#define VELMAR_TOOLKIT_RUNNING_RTV_H

#include <string>
#include <vector>

#include "container/rtv/RtvLayout.h"
#include "toolkit/recording/RunningTables.h"

namespace velmar::toolkit {

/// Goes by the tag table, in which a tag gets its frame's size once the frame is in the file. Times
/// count from 1970: the start comes with the header.
class RunningRtv final : public RunningTables {
 public:
  using RunningTables::RunningTables;

  void update() override;
  bool isReplaced() const override;
  /// VELMAR_VERSION_MAX_E before the first frame.
  VELMAR_VERSION_E version() const override;
  RecordingDescription description() const override;
  unsigned int framesMax() const override { return framesMax_; }
  std::uint64_t sensorTime(unsigned int index) const override;
  std::uint64_t arrivedTime(unsigned int index) const override { return sensorTime(index); }
  frametag03Ver_t tag(unsigned int index) const override;
  can_data_io can(unsigned int index) const override;

 private:
  void findVersion();
  unsigned int framesMaxOf(version_e version) const;
  bool isWhole(unsigned int index, const frametag03Ver_t& stored,
               const detail::RtvLayout& layout) const;
  bool add(const char* bytes);

  version_e version_ = RTV_VER_MAX;
  unsigned int framesMax_ = 0;
  std::vector<frametag03Ver_t> tags_;
};

}  // namespace velmar::toolkit

#endif
