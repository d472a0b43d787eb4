#ifndef VELMAR_PYTHON_PYTHON_JOB_H
#define VELMAR_PYTHON_PYTHON_JOB_H

#include <memory>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"

namespace velmar::python {

/// Throws the exception that a Python signal handler raises, such as KeyboardInterrupt. To be
/// called without the GIL.
void throwSignals();

/// Collects what work without the GIL has to tell. A signal ends it by throwSignals(), so that
/// nothing half done gets a name.
class PythonJob final : public toolkit::Job {
 public:
  std::unique_ptr<Stage> begin(const std::string& name, std::size_t total) override;
  void lose(const std::string& what, const std::string& words) override;
  void loseRest(const std::string& what, std::size_t done, std::size_t wanted) override;
  void note(const std::string& what, const std::string& words) override;

  const std::vector<std::string>& losses() const { return losses_; }
  const std::vector<std::string>& notes() const { return notes_; }

 private:
  std::vector<std::string> losses_;
  std::vector<std::string> notes_;
};

}  // namespace velmar::python

#endif
