#include "program/FollowOption.h"

namespace velmar::tool {

void addFollowOption(CLI::App& command, bool& follow) {
  command.add_flag("--follow", follow,
                   "Of one recording: go on as frames come, until its recorder has finished it");
}

void checkFollowsOne(const std::string& command, const InputOptions& inputs) {
  if (!inputs.isOneFile()) throw UsageError(command + ": --follow is for one recording");
}

}  // namespace velmar::tool
