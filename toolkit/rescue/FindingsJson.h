#ifndef VELMAR_TOOLKIT_FINDINGS_JSON_H
#define VELMAR_TOOLKIT_FINDINGS_JSON_H

#include <cstdint>
#include <string>

#include "toolkit/base/Finding.h"

namespace velmar::toolkit {

/// "error" or "warning"
const char* nameOf(Finding::Severity severity);

/// What is wrong with a file, counted and as JSON.
class FindingsJson {
 public:
  void add(const Finding& finding);

  std::uint64_t errors() const { return errors_; }
  std::uint64_t warnings() const { return warnings_; }
  /// One object.
  /// \param frames  of the file
  std::string text(const std::string& file, unsigned int frames) const;

 private:
  std::uint64_t errors_ = 0;
  std::uint64_t warnings_ = 0;
  std::string findings_;
};

}  // namespace velmar::toolkit

#endif
