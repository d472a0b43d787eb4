// The module behind the package velmar_video: what needs the library. Shapes and types are checked
// here; numbers of frames, names and defaults are the package's.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "core/Arrays.h"
#include "core/CatalogWork.h"
#include "core/Errors.h"
#include "core/FileHandle.h"
#include "core/Work.h"
#include "core/WriterHandle.h"

#if __has_include(<velmar_logger/control.h>)
#include <velmar_logger/control.h>
#endif

namespace py = pybind11;
using namespace py::literals;

namespace velmar::python {

namespace {

void addFile(py::module_& module) {
  py::class_<FileMap>(module, "FileMap", py::buffer_protocol()).def_buffer(&FileMap::buffer);
  py::class_<FileHandle>(module, "File")
      .def(py::init<std::string>(), "path"_a)
      .def("close", &FileHandle::close)
      .def("facts", &FileHandle::facts)
      .def("camera_params", &FileHandle::cameraParams)
      .def("extended_info", &FileHandle::extendedInfo)
      .def("times", &FileHandle::times)
      .def("sizes", &FileHandle::sizes)
      .def("tags", &FileHandle::tags)
      .def("positions", &FileHandle::positions)
      .def("signals", &FileHandle::signals)
      .def("find", &FileHandle::find, "expression"_a)
      .def("shape", &FileHandle::shape, "format"_a, "scale"_a, "top"_a, "bottom"_a)
      .def("decode", &FileHandle::decode, "index"_a, "format"_a, "scale"_a, "top"_a, "bottom"_a,
           "out"_a)
      .def("decode_many", &FileHandle::decodeMany, "indices"_a, "format"_a, "scale"_a, "top"_a,
           "bottom"_a, "out"_a, "threads"_a, "masks"_a)
      .def("jpeg", &FileHandle::jpeg, "index"_a)
      .def("jpeg_view", &FileHandle::jpegView, "index"_a);
}

}  // namespace

PYBIND11_MODULE(_core, module) {
#if __has_include(<velmar_logger/control.h>)
  velmar_logger::setLevel(4);  // nothing: errors reach Python as exceptions
#endif
  registerErrors();
  addFile(module);
  py::class_<WriterHandle>(module, "Writer")
      .def(py::init<std::string, const py::dict&, unsigned int, bool>(), "path"_a, "description"_a,
           "capacity"_a, "overwrite"_a)
      .def("add", &WriterHandle::add, "jpeg"_a, "capture_time"_a, "arrival_time"_a, "tag"_a)
      .def("finish", &WriterHandle::finish)
      .def("abandon", &WriterHandle::abandon)
      .def_property_readonly("frames", &WriterHandle::frames);
  module.def("edit", &edit, "path"_a, "changes"_a);
  module.def("verify", &verify, "path"_a, "decode"_a);
  module.def("recover", &recover, "leftover"_a, "output"_a, "options"_a, "overwrite"_a);
  module.def("undo_edit", &undoEdit, "path"_a);
  module.def("catalog_add", &catalogAdd, "database"_a, "files"_a, "folders"_a, "jobs"_a);
  module.def("catalog_put_unreadable", &catalogPutUnreadable, "database"_a, "file"_a, "problem"_a);
  module.def("catalog_take", &catalogTake, "database"_a, "other"_a);
  module.def("catalog_find", &catalogFind, "database"_a, "where"_a, "jobs"_a);
  module.def("sample", &sample, "path"_a, "frames"_a, "width"_a, "height"_a, "rate"_a,
             "overwrite"_a);
}

}  // namespace velmar::python
