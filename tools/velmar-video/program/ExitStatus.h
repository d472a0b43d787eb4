#ifndef VELMAR_TOOL_EXIT_STATUS_H
#define VELMAR_TOOL_EXIT_STATUS_H

enum class ExitStatus : int {
  Done = 0,
  Failed = 1,
  Usage = 2,
  Loss = 3,  ///< done, but something was lost or skipped
};

#endif
