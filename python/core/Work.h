/// What the package does with whole files.
#ifndef VELMAR_PYTHON_WORK_H
#define VELMAR_PYTHON_WORK_H

#include <pybind11/pybind11.h>

#include <string>

namespace velmar::python {

// All throw toolkit::Failure.

/// \param changes  by the names of toolkit::EditRequest in the package's spelling
void edit(const std::string& path, const pybind11::dict& changes);
/// \return (severity, frame, last frame, offset, text) of each finding
pybind11::list verify(const std::string& path, bool decode);
/// \return frames, frames that there were, losses, notes
pybind11::tuple recover(const std::string& leftover, const std::string& output,
                        const pybind11::dict& options, bool overwrite);
/// Whether there was an interrupted edit to undo.
bool undoEdit(const std::string& path);
void sample(const std::string& path, unsigned int frames, unsigned int width, unsigned int height,
            double rate, bool overwrite);

}  // namespace velmar::python

#endif
