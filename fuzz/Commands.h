/// Commands that read a recording, run on files that claim to be more than they are.
#ifndef VELMAR_FUZZ_COMMANDS_H
#define VELMAR_FUZZ_COMMANDS_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

#include "ToolCommand.h"
#include "support.h"

class Commands {
 public:
  /// \param extension  of the recording, without the point
  /// \param other      of the other container
  Commands(const std::string& extension, const std::string& other);

  /// Runs each of them on these bytes. None may take long or much memory.
  void run(const std::uint8_t* data, std::size_t size) const;

 private:
  TemporaryFile file_;
  std::string output_;
  std::deque<ToolCommand> commands_;
};

#endif
