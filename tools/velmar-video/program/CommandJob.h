#ifndef VELMAR_TOOL_COMMAND_JOB_H
#define VELMAR_TOOL_COMMAND_JOB_H

#include <cstdint>

#include "program/Toolkit.h"
#include "toolkit/base/Failure.h"
#include "toolkit/base/Job.h"

namespace velmar::tool {

enum class ExitStatus : int {
  Done = 0,
  Failed = 1,
  Usage = 2,
  Loss = 3,  ///< done, but something was lost or skipped
};

/// The work of a command: what it has to tell goes to standard error and into the exit status. Work
/// that takes more than a second shows at a terminal how far it is and how long it will take; the
/// wish to stop is SIGINT or SIGTERM. A signal that the program was started to ignore stays
/// ignored.
class CommandJob final : public Job {
 public:
  /// \param quiet  shows no progress; that is for terminals only
  explicit CommandJob(bool quiet) : quiet_(quiet) {}

  std::unique_ptr<Stage> begin(const std::string& name, std::size_t total) override;
  /// The same for bytes in the place of frames.
  std::unique_ptr<Stage> beginBytes(const std::string& name, std::uint64_t total);
  /// And for files.
  std::unique_ptr<Stage> beginFiles(const std::string& name, std::size_t total);
  void lose(const std::string& what, const std::string& words) override;
  void loseRest(const std::string& what, std::size_t done, std::size_t wanted) override;
  void note(const std::string& what, const std::string& words) override;

  /// The command goes on, but will have failed.
  void fail(const Failure& failure);
  ExitStatus status() const { return status_; }

 private:
  bool isShown() const;

  bool quiet_;
  ExitStatus status_ = ExitStatus::Done;
};

}  // namespace velmar::tool

#endif
