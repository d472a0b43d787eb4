#include "core/Errors.h"

#include <pybind11/pybind11.h>

#include "toolkit/base/Failure.h"
#include "toolkit/frames/SharedRecording.h"
#include "toolkit/text/PrintableText.h"

namespace py = pybind11;

namespace velmar::python {

namespace {

// The package has the classes, since they derive from Python's own.
void raise(const std::string& words, VELMAR_ERROR_CODE_E code, const std::string& file,
           const py::object& index) {
  const auto path = py::reinterpret_steal<py::object>(
      PyUnicode_DecodeFSDefaultAndSize(file.data(), static_cast<py::ssize_t>(file.size())));
  const py::object error =
      py::module_::import("velmar_video._errors")
          .attr("make_error")(toolkit::printable(words), errorCode2String(code), path, index);
  PyErr_SetObject(py::type::of(error).ptr(), error.ptr());
}

}  // namespace

void registerErrors() {
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      std::rethrow_exception(thrown);
    } catch (const toolkit::FrameFailure& failure) {
      raise(failure.words(), failure.code(), failure.file(), py::int_(failure.index()));
    } catch (const toolkit::Failure& failure) {
      raise(failure.words(), failure.code(), failure.file(), py::none());
    } catch (const toolkit::UsageError& error) {
      raise(error.what(), VELMAR_ERROR_CODE_INVALID_PARAMETER_E, "", py::none());
    } catch (const py::cast_error&) {
      raise("an argument has a wrong type or is out of its range",
            VELMAR_ERROR_CODE_INVALID_PARAMETER_E, "", py::none());
    }
  });
}

void throwUsage(const std::string& words) { throw toolkit::UsageError(words); }

void checkDeviceId(const std::string& id) {
  if (id.size() > kRtvDeviceIdSize) throwUsage("an rtv's device_id has 24 bytes at most");
}

void throwClosed(const std::string& path) {
  throw toolkit::Failure(path, "it is closed", VELMAR_ERROR_CODE_NOT_INIT_E);
}

}  // namespace velmar::python
