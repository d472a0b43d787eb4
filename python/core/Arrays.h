/// The frames' times, tags and signals as arrays of all frames.
#ifndef VELMAR_PYTHON_ARRAYS_H
#define VELMAR_PYTHON_ARRAYS_H

#include <pybind11/numpy.h>

#include "toolkit/frames/SharedRecording.h"

namespace velmar::python {

/// (n, 2) int64: capture and arrival, microseconds since 1970.
pybind11::array_t<std::int64_t> timesOf(const toolkit::SharedRecording& recording);
/// (n,) int64: bytes as stored, whether or not they are all there.
pybind11::array_t<std::int64_t> sizesOf(const toolkit::SharedRecording& recording);
/// Structured; the field names are those of `tags` in the package.
pybind11::array tagsOf(const toolkit::SharedRecording& recording);
/// (n, 3) float64: longitude and latitude in degrees, altitude in metres.
pybind11::array_t<double> positionsOf(const toolkit::SharedRecording& recording);
/// Name -> (values, mask of those that are absent).
pybind11::dict signalsOf(const toolkit::SharedRecording& recording);

}  // namespace velmar::python

#endif
