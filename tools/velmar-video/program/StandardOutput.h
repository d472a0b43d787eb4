#ifndef VELMAR_TOOL_STANDARD_OUTPUT_H
#define VELMAR_TOOL_STANDARD_OUTPUT_H

#include <string>
#include <string_view>

#include "program/Toolkit.h"
#include "toolkit/base/Failure.h"

namespace velmar::tool {

/// Standard output cannot be written to, whatever recording it is for.
struct OutputFailure final : Failure {
  explicit OutputFailure(const Failure& failure) : Failure(failure) {}
};

/// Collects results and writes them to standard output in large pieces. Throws OutputFailure as
/// soon as they cannot be written. What is not flushed is lost.
class StandardOutput {
 public:
  enum class Mode {
    Direct,
    Held,  ///< nothing is written before flush()
  };

  explicit StandardOutput(Mode mode = Mode::Direct) : mode_(mode) {}

  void write(std::string_view text);
  void flush();

 private:
  Mode mode_;
  std::string pending_;
};

}  // namespace velmar::tool

#endif
