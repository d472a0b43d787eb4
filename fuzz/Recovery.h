/// The command recover, run on what a recorder might have left.
#ifndef VELMAR_FUZZ_RECOVERY_H
#define VELMAR_FUZZ_RECOVERY_H

#include <string>
#include <vector>

#include "ToolCommand.h"

class Recovery {
 public:
  /// \param extension  of the recording to make
  Recovery(const std::string& leftover, const std::string& extension,
           const std::vector<std::string>& options);

  /// Recovers the leftover and deletes what comes of it, which has to be a recording whose frames
  /// are all in their places.
  void run() const;

 private:
  std::string output_;
  ToolCommand command_;
};

#endif
