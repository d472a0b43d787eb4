#ifndef VELMAR_TOOLKIT_DEFERRED_JOB_H
#define VELMAR_TOOLKIT_DEFERRED_JOB_H

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"

namespace velmar::toolkit {

/// Ends work that can be done again, after the wish to stop.
class JobStopped : public std::exception {};

/// The job of a thread among several: keeps what it is told until another job can be told of it.
class DeferredJob final : public Job {
 public:
  /// \param isStopped  somebody wishes to stop; it has to outlive the job
  explicit DeferredJob(const std::atomic<bool>& isStopped) : isStopped_(isStopped) {}

  /// Does not say how far it is. After the wish to stop it throws JobStopped, so that no part of an
  /// output stands for all of it.
  std::unique_ptr<Stage> begin(const std::string& name, std::size_t total) override;
  void lose(const std::string& what, const std::string& words) override;
  void loseRest(const std::string& what, std::size_t done, std::size_t wanted) override;
  void note(const std::string& what, const std::string& words) override;

  /// Tells `job` all of it, in order.
  void tell(Job& job) const;

 private:
  const std::atomic<bool>& isStopped_;
  std::vector<std::function<void(Job&)>> told_;
};

}  // namespace velmar::toolkit

#endif
