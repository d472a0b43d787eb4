#include "core/Work.h"

#include <pybind11/stl.h>

#include <map>

#include "core/Errors.h"
#include "core/PythonJob.h"
#include "core/WithoutGil.h"
#include "toolkit/creating/SampleDrive.h"
#include "toolkit/editing/EditPlan.h"
#include "toolkit/files/RecorderFiles.h"
#include "toolkit/recording/OpenFailure.h"
#include "toolkit/rescue/RecoverFrames.h"
#include "toolkit/rescue/Recovery.h"
#include "toolkit/rescue/Verification.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/writing/OutputGuard.h"

namespace py = pybind11;

namespace velmar::python {

namespace {

using Times = std::map<unsigned int, std::uint64_t>;

template <typename T>
std::optional<T> value(const py::dict& values, const char* name) {
  if (!values.contains(name)) return std::nullopt;
  return values[name].cast<T>();
}

std::vector<toolkit::EditRequest::FrameTime> frameTimes(const py::dict& changes, const char* name) {
  std::vector<toolkit::EditRequest::FrameTime> times;
  for (const auto& [index, time] : value<Times>(changes, name).value_or(Times())) {
    times.push_back({index, time});
  }
  return times;
}

toolkit::EditRequest requestOf(const py::dict& changes) {
  toolkit::EditRequest request;
  request.deviceId = value<std::string>(changes, "device_id");
  request.undistorted = value<bool>(changes, "undistorted");
  request.startTime = value<std::uint64_t>(changes, "start_time");
  request.sensorTimes = frameTimes(changes, "capture_times");
  request.arrivedTimes = frameTimes(changes, "arrival_times");
  request.shift = value<std::int64_t>(changes, "shift");
  request.cameraParams = value<std::string>(changes, "camera_params");
  request.extendedInfo = value<std::string>(changes, "extended_info");
  return request;
}

}  // namespace

void edit(const std::string& path, const py::dict& changes) {
  const toolkit::EditRequest request = requestOf(changes);
  const WithoutGil release;
  PythonJob job;
  toolkit::editRecording(path, request, job);
}

py::list verify(const std::string& path, bool decode) {
  std::vector<toolkit::Finding> findings;
  {
    const WithoutGil release;
    if (const auto failure = toolkit::pathFailure(path)) throw toolkit::Failure(*failure);
    toolkit::verify(path, decode, [&](const auto& finding) { findings.push_back(finding); });
  }
  py::list list;
  for (const toolkit::Finding& each : findings) {
    const bool isError = each.severity == toolkit::Finding::Severity::Error;
    list.append(py::make_tuple(isError ? "error" : "warning", each.frame, each.lastFrame,
                               each.offset, toolkit::printable(each.text)));
  }
  return list;
}

py::tuple recover(const std::string& leftover, const std::string& output, const py::dict& options,
                  bool overwrite) {
  toolkit::RecoveryRequest request{leftover, output};
  request.times.framesPerSecond = value<double>(options, "frame_rate");
  request.startTime = value<std::uint64_t>(options, "start_time");
  request.times.startTime = request.startTime.value_or(0);
  request.keepDamaged = value<bool>(options, "keep_damaged").value_or(false);
  const auto deviceId = value<std::string>(options, "device_id");
  if (deviceId && toolkit::isRtvPath(output)) checkDeviceId(*deviceId);
  request.describe = [&](toolkit::RecordingDescription& description) {
    if (deviceId) description.deviceId = *deviceId;
  };
  request.changesHeader = true;  // what is given in a program is meant
  PythonJob job;
  toolkit::Recovered recovered;
  {
    const WithoutGil release;
    toolkit::checkExtension(output);
    toolkit::checkLeftoverName(leftover, output);
    const std::vector<std::string> inputs{leftover, toolkit::journalPath(leftover)};
    toolkit::checkOutput(output, inputs, overwrite);
    const toolkit::ReservedOutput reserved(toolkit::recoveringPath(output), inputs, true);
    recovered = toolkit::recoverRecording(request, job);
  }
  return py::make_tuple(recovered.frames, recovered.framesCount, job.losses(), job.notes());
}

bool undoEdit(const std::string& path) {
  const WithoutGil release;
  const toolkit::FileLock lock(path, toolkit::FileLock::Kind::Edit);
  return toolkit::undoEdit(path, lock) != toolkit::UndoState::None;
}

void sample(const std::string& path, unsigned int frames, unsigned int width, unsigned int height,
            double rate, bool overwrite) {
  if (frames == 0) throwUsage("a recording has at least one frame");
  if (width == 0 || height == 0 || width > 65500 || height > 65500) {
    throwUsage("width and height are 1 to 65500 pixels");
  }
  PythonJob job;
  {
    const WithoutGil release;
    toolkit::checkExtension(path);
    const toolkit::ReservedOutput reserved(path, {}, overwrite);
    toolkit::recordSample({frames, {static_cast<int>(width), static_cast<int>(height)}, rate}, path,
                          job);
  }
}

}  // namespace velmar::python
