#ifndef VELMAR_PYTHON_WITHOUT_GIL_H
#define VELMAR_PYTHON_WITHOUT_GIL_H

#include <Python.h>
#include <unistd.h>

namespace velmar::python {

/// Lets other Python threads run. A thread that wants to go on once the interpreter is ending waits
/// for the end of the process: Python would end it through destructors that must not throw.
class WithoutGil {
 public:
  WithoutGil() : state_(PyEval_SaveThread()) {}
  WithoutGil(const WithoutGil&) = delete;
  WithoutGil& operator=(const WithoutGil&) = delete;
  ~WithoutGil() noexcept(false) {
    while (_Py_IsFinalizing() != 0) ::pause();
    PyEval_RestoreThread(state_);
  }

 private:
  PyThreadState* state_;
};

}  // namespace velmar::python

#endif
