#ifndef VELMAR_BASE_GUARDED_H
#define VELMAR_BASE_GUARDED_H

#include <exception>
#include <string>

#include "velmar_logger/velmar_logger.h"

namespace velmar::detail {

/// Returns what `work` returns. Nothing may be thrown at the library's callers: if `work` throws,
/// as a rule because memory runs out, the exception is logged with the name of the operation, and
/// the result is `failed`.
template <typename Result, typename Work>
Result guarded(const char* tag, const char* operation, Result failed, Work work) {
  try {
    return work();
  } catch (const std::exception& cause) {
    velmar_logger::e(tag, "%s: %s", operation, cause.what());
    return failed;
  }
}

/// A copy of the text; empty if memory runs out.
inline std::string guardedCopy(const char* tag, const char* operation, const std::string& text) {
  return guarded(tag, operation, std::string(), [&] { return text; });
}

}  // namespace velmar::detail

#endif
