#include "toolkit/base/DeferredJob.h"

namespace velmar::toolkit {

namespace {

class DeferredStage final : public Job::Stage {
 public:
  explicit DeferredStage(const std::atomic<bool>& isStopped) : isStopped_(isStopped) {}

  void advance(std::size_t /*done*/) override {}
  bool stopRequested() override {
    if (isStopped_) throw JobStopped();
    return false;
  }
  bool waitReadable(int /*fd*/) override { return !stopRequested(); }

 private:
  const std::atomic<bool>& isStopped_;
};

}  // namespace

std::unique_ptr<Job::Stage> DeferredJob::begin(const std::string& /*name*/, std::size_t /*total*/) {
  return std::make_unique<DeferredStage>(isStopped_);
}

void DeferredJob::lose(const std::string& what, const std::string& words) {
  told_.emplace_back([=](Job& job) { job.lose(what, words); });
}

void DeferredJob::loseRest(const std::string& what, std::size_t done, std::size_t wanted) {
  told_.emplace_back([=](Job& job) { job.loseRest(what, done, wanted); });
}

void DeferredJob::note(const std::string& what, const std::string& words) {
  told_.emplace_back([=](Job& job) { job.note(what, words); });
}

void DeferredJob::tell(Job& job) const {
  for (const auto& tell : told_) tell(job);
}

}  // namespace velmar::toolkit
