#ifndef VELMAR_TOOL_STANDARD_OUTPUT_H
#define VELMAR_TOOL_STANDARD_OUTPUT_H

#include <string>
#include <string_view>

namespace velmar::tool {

/// Collects results and writes them to standard output in large pieces. Throws Failure as soon as
/// they cannot be written. What is not flushed is lost.
class StandardOutput {
 public:
  void write(std::string_view text);
  void flush();

 private:
  std::string pending_;
};

}  // namespace velmar::tool

#endif
