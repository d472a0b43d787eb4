#include "core/CatalogWork.h"

#include <exception>

#include "core/PythonJob.h"
#include "core/WithoutGil.h"
#include "toolkit/catalog/Catalog.h"
#include "toolkit/text/PrintableText.h"

namespace py = pybind11;

namespace velmar::python {

namespace {

using toolkit::Catalog;
using toolkit::Database;

py::object toPath(const std::string& file) {
  return py::reinterpret_steal<py::object>(
      PyUnicode_DecodeFSDefaultAndSize(file.data(), static_cast<py::ssize_t>(file.size())));
}

// Keeps what fails, and ends the work when a Python signal handler raises something.
class PythonReporter {
 public:
  toolkit::CatalogReporter reporter() {
    return {[this](std::size_t, std::size_t) { return goOn(); },
            [this](const toolkit::Failure& failure) { failures_.push_back(failure); },
            [](const std::string&, const std::string&) {},
            [](const std::string&, const std::string&) {}};
  }
  const std::vector<toolkit::Failure>& failures() const { return failures_; }
  void rethrow() const {
    if (thrown_) std::rethrow_exception(thrown_);
  }

 private:
  bool goOn() {
    try {
      throwSignals();
    } catch (...) {
      thrown_ = std::current_exception();
    }
    return thrown_ == nullptr;
  }

  std::vector<toolkit::Failure> failures_;
  std::exception_ptr thrown_;
};

}  // namespace

py::tuple catalogAdd(const std::string& database, const std::vector<std::string>& files,
                     const std::vector<std::string>& folders, unsigned int jobs) {
  toolkit::CatalogChanges changes;
  PythonReporter reporter;
  {
    const WithoutGil release;
    changes = Catalog(database, Database::Access::Write)
                  .add({files, folders, false}, jobs, reporter.reporter());
  }
  reporter.rethrow();
  return py::make_tuple(changes.added, changes.unchanged, changes.unreadable, changes.removed);
}

bool catalogPutUnreadable(const std::string& database, const std::string& file,
                          const std::string& problem) {
  const WithoutGil release;
  return Catalog(database, Database::Access::Write).putUnreadable(file, problem);
}

std::size_t catalogTake(const std::string& database, const std::string& other) {
  const WithoutGil release;
  return Catalog(database, Database::Access::Write).take(other);
}

py::tuple catalogFind(const std::string& database, const std::string& where, unsigned int jobs) {
  std::vector<toolkit::FoundFrames> found;
  PythonReporter reporter;
  {
    const WithoutGil release;
    Catalog(database, Database::Access::Read)
        .find(
            {where, "", {}}, jobs, [&](const auto& frames) { found.push_back(frames); },
            reporter.reporter());
  }
  reporter.rethrow();
  py::list ranges;
  for (const toolkit::FoundFrames& each : found) {
    ranges.append(py::make_tuple(toPath(each.file), each.first, each.behind, each.start, each.end,
                                 each.bytes));
  }
  py::list problems;
  for (const toolkit::Failure& each : reporter.failures()) {
    problems.append(py::make_tuple(toPath(each.file()), toolkit::printable(each.words())));
  }
  return py::make_tuple(ranges, problems);
}

}  // namespace velmar::python
