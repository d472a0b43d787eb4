/// Refuses outputs that would destroy something, before anything is written.
#ifndef VELMAR_TOOLKIT_OUTPUT_GUARD_H
#define VELMAR_TOOLKIT_OUTPUT_GUARD_H

#include <string>
#include <vector>

namespace velmar::toolkit {

/// Throws Failure if a file that is written must not be: one that exists, unless `force` is given,
/// one that is no regular file, and one that is among `inputs` ("-" is standard input) under
/// whatever name.
void checkOutput(const std::string& path, const std::vector<std::string>& inputs, bool force);

/// A new recording's temporary file, which no other program takes meanwhile. It goes at the end if
/// nothing has been recorded.
class ReservedOutput {
 public:
  /// As checkOutput() for a recording, whose temporary files count as well: what an interrupted
  /// recording left there can be saved. Not even `force` takes them from a running recorder.
  ReservedOutput(const std::string& path, const std::vector<std::string>& inputs, bool force);
  ReservedOutput(ReservedOutput&& other) noexcept;
  ~ReservedOutput();

 private:
  std::string temporary_;
};

/// Throws Failure if standard output goes into `input`.
void checkStandardOutput(const std::string& input);

}  // namespace velmar::toolkit

#endif
