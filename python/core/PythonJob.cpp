#include "core/PythonJob.h"

#include <pybind11/pybind11.h>

#include "toolkit/text/PrintableText.h"

namespace py = pybind11;

namespace velmar::python {

namespace {

class PythonStage final : public toolkit::Job::Stage {
 public:
  void advance(std::size_t /*done*/) override {}
  bool stopRequested() override {
    throwSignals();
    return false;
  }
  // Only streams are waited for, which the package does not record.
  bool waitReadable(int /*fd*/) override { return true; }
};

}  // namespace

void throwSignals() {
  const py::gil_scoped_acquire acquire;
  if (PyErr_CheckSignals() != 0) throw py::error_already_set();
}

std::unique_ptr<toolkit::Job::Stage> PythonJob::begin(const std::string& /*name*/,
                                                      std::size_t /*total*/) {
  return std::make_unique<PythonStage>();
}

void PythonJob::lose(const std::string& what, const std::string& words) {
  losses_.push_back(toolkit::printable(what + ": " + words));
}

void PythonJob::loseRest(const std::string& what, std::size_t done, std::size_t wanted) {
  lose(what, "stopped after " + std::to_string(done) + " of " + std::to_string(wanted) + " frames");
}

void PythonJob::note(const std::string& what, const std::string& words) {
  notes_.push_back(toolkit::printable(what + ": " + words));
}

}  // namespace velmar::python
