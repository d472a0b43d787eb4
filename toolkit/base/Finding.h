#ifndef VELMAR_TOOLKIT_FINDING_H
#define VELMAR_TOOLKIT_FINDING_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmar::toolkit {

/// Something that is wrong with a recording.
struct Finding {
  enum class Severity {
    Error,    ///< something cannot be had from it, or not as it was recorded
    Warning,  ///< unusual
  };

  Severity severity;
  std::optional<std::uint64_t> frame;
  std::optional<std::uint64_t> offset;  ///< bytes from the start of the file
  std::string text;
  std::optional<std::uint64_t> lastFrame = {};  ///< if it is about all from `frame` on to that

  /// Of the frames, if it is about any.
  std::uint64_t last() const { return lastFrame.value_or(frame.value_or(0)); }
  /// How often something is wrong.
  std::uint64_t count() const { return frame ? last() - *frame + 1 : 1; }
};

/// Passes findings on, those that say the same of neighbouring frames as one.
class FindingMerger {
 public:
  using Report = std::function<void(const Finding&)>;

  explicit FindingMerger(Report report) : report_(std::move(report)) {}

  /// Frames come in the order of their numbers, as often as something is wrong with them.
  void add(const Finding& finding);
  /// Passes on what is still kept back for its next frame.
  void finish();

 private:
  Report report_;
  std::vector<Finding> open_;
};

}  // namespace velmar::toolkit

#endif
