#include "program/CommandJob.h"

#include "program/Diagnostics.h"
#include "program/Progress.h"
#include "program/StopSignal.h"

namespace {

class CommandStage final : public Job::Stage {
 public:
  CommandStage(const std::string& name, std::size_t total, bool quiet)
      : progress_(name, total, quiet) {}

  void advance(std::size_t done) override { progress_.update(done); }
  bool stopRequested() override { return stop_.requested(); }
  bool waitReadable(int fd) override { return stop_.waitReadable(fd); }

 private:
  StopSignal stop_;
  Progress progress_;
};

}  // namespace

std::unique_ptr<Job::Stage> CommandJob::begin(const std::string& name, std::size_t total) {
  return std::make_unique<CommandStage>(name, total, quiet_);
}

void CommandJob::lose(const std::string& what, const std::string& words) {
  if (status_ == ExitStatus::Done) status_ = ExitStatus::Loss;
  note(what, words);
}

void CommandJob::loseRest(const std::string& what, std::size_t done, std::size_t wanted) {
  lose(what, "stopped by a signal after " + std::to_string(done) + " of " + std::to_string(wanted) +
                 " frames");
}

void CommandJob::note(const std::string& what, const std::string& words) {
  say(what + ": " + words);
}

void CommandJob::fail(const Failure& failure) {
  status_ = ExitStatus::Failed;
  say(failure.what());
}
