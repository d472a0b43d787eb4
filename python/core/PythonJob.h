#ifndef VELMAR_PYTHON_PYTHON_JOB_H
#define VELMAR_PYTHON_PYTHON_JOB_H

#include <memory>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"

namespace velmar::python {

/// Collects what work without the GIL has to tell, and stops it for Python's signals.
class PythonJob final : public toolkit::Job {
 public:
  std::unique_ptr<Stage> begin(const std::string& name, std::size_t total) override;
  void lose(const std::string& what, const std::string& words) override;
  void loseRest(const std::string& what, std::size_t done, std::size_t wanted) override;
  void note(const std::string& what, const std::string& words) override;

  const std::vector<std::string>& losses() const { return losses_; }
  const std::vector<std::string>& notes() const { return notes_; }
  /// Throws the exception of the signal that has stopped the work, if there was one.
  void throwIfStopped() const;

 private:
  std::vector<std::string> losses_;
  std::vector<std::string> notes_;
  bool isStopped_ = false;
};

}  // namespace velmar::python

#endif
