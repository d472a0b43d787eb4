#ifndef VELMAR_PYTHON_ERRORS_H
#define VELMAR_PYTHON_ERRORS_H

#include <string>

namespace velmar::python {

/// Makes the exceptions of the toolkit those of the package.
void registerErrors();

/// An argument that cannot be, ValueError in Python.
[[noreturn]] void throwUsage(const std::string& words);
/// Of an rtv.
void checkDeviceId(const std::string& id);
/// Something that was closed before.
[[noreturn]] void throwClosed(const std::string& path);

}  // namespace velmar::python

#endif
