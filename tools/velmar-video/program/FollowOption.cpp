#include "program/FollowOption.h"

#include "program/StandardOutput.h"

namespace velmar::tool {

void addFollowOption(CLI::App& command, bool& follow) {
  command.add_flag("--follow", follow,
                   "Of one recording: go on as frames come, until its recorder has finished it");
}

void checkFollowsOne(const std::string& command, const InputOptions& inputs) {
  if (!inputs.isOneFile()) throw UsageError(command + ": --follow is for one recording");
}

void writeOut(const std::string& text) {
  StandardOutput output;
  output.write(text);
  output.flush();
}

}  // namespace velmar::tool
