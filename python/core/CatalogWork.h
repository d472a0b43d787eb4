/// What the package does with catalogues.
#ifndef VELMAR_PYTHON_CATALOG_WORK_H
#define VELMAR_PYTHON_CATALOG_WORK_H

#include <pybind11/pybind11.h>

#include <string>
#include <vector>

namespace velmar::python {

// All throw toolkit::Failure.

/// As toolkit::Catalog::add().
/// \return how many recordings were added, unchanged, unreadable and removed
pybind11::tuple catalogAdd(const std::string& database, const std::vector<std::string>& files,
                           const std::vector<std::string>& folders, unsigned int jobs);
/// As toolkit::Catalog::putUnreadable().
bool catalogPutUnreadable(const std::string& database, const std::string& file,
                          const std::string& problem);
/// As toolkit::Catalog::take().
std::size_t catalogTake(const std::string& database, const std::string& other);
/// As toolkit::Catalog::find().
/// \return (file, first, behind, start, end, bytes) of each range and (file, words) of each
///         recording that could not be asked
pybind11::tuple catalogFind(const std::string& database, const std::string& where,
                            unsigned int jobs);

}  // namespace velmar::python

#endif
