#ifndef VELMAR_TOOLKIT_VERIFICATION_H
#define VELMAR_TOOLKIT_VERIFICATION_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

/// Something that is wrong with a recording.
struct Finding {
  enum class Severity {
    Error,    ///< something cannot be had from it, or not as it was recorded
    Warning,  ///< unusual
  };

  Severity severity;
  std::optional<unsigned int> frame;
  std::optional<std::uint64_t> offset;  ///< bytes from the start of the file
  std::string text;
  std::optional<unsigned int> lastFrame = {};  ///< if it is about all from `frame` on to that

  /// Of the frames, if it is about any.
  unsigned int last() const { return lastFrame.value_or(frame.value_or(0)); }
  /// How often something is wrong.
  std::uint64_t count() const { return frame ? std::uint64_t{last()} - *frame + 1 : 1; }
};

/// Checks what opening a recording does not. Findings come in the order of the checks: places,
/// then frames one by one, then what is said of the whole. What is wrong with neighbouring frames
/// is one finding.
/// \param decode  every frame as well
/// \return the number of frames; 0 if the recording does not open, which is a finding, too
/// Throws Failure if the file cannot be read on.
unsigned int verify(const std::string& path, bool decode,
                    const std::function<void(const Finding&)>& report);

#endif
