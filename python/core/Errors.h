#ifndef VELMAR_PYTHON_ERRORS_H
#define VELMAR_PYTHON_ERRORS_H

#include <string>

#include "toolkit/recording/SharedRecording.h"

namespace velmar::python {

/// Makes the exceptions of the toolkit those of the package.
void registerErrors();

/// "frame 7: the picture does not decode", for many frames at once.
[[noreturn]] void throwFrame(const std::string& path, unsigned int index,
                             const toolkit::FrameFlaw& flaw);
/// An argument that cannot be, ValueError in Python.
[[noreturn]] void throwUsage(const std::string& words);
/// Something that was closed before.
[[noreturn]] void throwClosed(const std::string& path);

}  // namespace velmar::python

#endif
