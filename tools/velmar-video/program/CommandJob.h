#ifndef VELMAR_TOOL_COMMAND_JOB_H
#define VELMAR_TOOL_COMMAND_JOB_H

#include "program/ExitStatus.h"
#include "toolkit/base/Failure.h"
#include "toolkit/base/Job.h"

/// The work of a command: what it has to tell goes to standard error and into the exit status, the
/// wish to stop is SIGINT or SIGTERM.
class CommandJob final : public Job {
 public:
  explicit CommandJob(bool quiet) : quiet_(quiet) {}

  std::unique_ptr<Stage> begin(const std::string& name, std::size_t total) override;
  void lose(const std::string& what, const std::string& words) override;
  void loseRest(const std::string& what, std::size_t done, std::size_t wanted) override;
  void note(const std::string& what, const std::string& words) override;

  /// The command goes on, but will have failed.
  void fail(const Failure& failure);
  ExitStatus status() const { return status_; }

 private:
  bool quiet_;
  ExitStatus status_ = ExitStatus::Done;
};

#endif
