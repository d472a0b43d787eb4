#include "core/WriterHandle.h"

#include <pybind11/stl.h>

#include <cmath>
#include <tuple>

#include "core/Errors.h"
#include "core/WithoutGil.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/Recording.h"

namespace py = pybind11;

namespace velmar::python {

namespace {

const std::map<std::string, version_e> kVersions = {
    {"02", RTV_VER_02}, {"03", RTV_VER_03}, {"04", RTV_VER_04}};

int storedAltitude(double metres, version_e version) {
  return static_cast<int>(std::lround(version == RTV_VER_04 ? metres * 100 : metres));
}

toolkit::RecordingDescription descriptionOf(const py::dict& values) {
  toolkit::RecordingDescription description;
  description.width = values["width"].cast<unsigned short>();
  description.height = values["height"].cast<unsigned short>();
  description.deviceId = values["device_id"].cast<std::string>();
  description.undistorted = values["undistorted"].cast<bool>();
  description.cameraParams = values["camera_params"].cast<std::string>();
  description.extendedInfo = values["extended_info"].cast<std::string>();
  description.startTime = values["start_time"].cast<std::uint64_t>();
  const auto version = kVersions.find(values["version"].cast<std::string>());
  if (version == kVersions.end()) throwUsage("the versions of rtv are 02, 03 and 04");
  description.version = version->second;
  const auto [lng, lat, alt] = values["start_position"].cast<std::tuple<double, double, double>>();
  description.lng = toolkit::nearestNds(lng);
  description.lat = toolkit::nearestNds(lat);
  description.alt = storedAltitude(alt, description.version);
  return description;
}

// Nothing that is given gets lost.
void checkHeld(const toolkit::RecordingDescription& description, bool isRtv) {
  const bool hasPlace = description.lng != 0 || description.lat != 0 || description.alt != 0;
  const bool isVersion02 = description.version == RTV_VER_02;
  if (!isRtv && hasPlace) throwUsage("an img holds no start_position");
  if (!isRtv) return;
  if (description.cameraParams != "{}") throwUsage("an rtv holds no camera_params");
  if (description.extendedInfo != "{}") throwUsage("an rtv holds no extended_info");
  checkDeviceId(description.deviceId);
  if (isVersion02 && description.undistorted) throwUsage("version 02 of rtv has no undistorted");
  if (isVersion02 && description.alt != 0) throwUsage("version 02 of rtv holds no altitude");
}

std::string bytesOf(const py::buffer& jpeg) {
  const py::buffer_info info = jpeg.request();
  if (PyBuffer_IsContiguous(info.view(), 'C') == 0) throwUsage("jpeg has to be contiguous");
  return {static_cast<const char*>(info.ptr), static_cast<std::size_t>(info.size * info.itemsize)};
}

}  // namespace

WriterHandle::WriterHandle(const std::string& path, const py::dict& description,
                           unsigned int capacity, bool overwrite)
    : path_(path), capacity_(capacity), description_(descriptionOf(description)) {
  toolkit::checkExtension(path);
  checkHeld(description_, toolkit::isRtvPath(path));
  if (toolkit::isRtvPath(path)) {
    for (toolkit::TagColumn& column : toolkit::tagColumns(description_.version)) {
      tagColumns_.emplace(column.name, std::move(column.set));
    }
  }
  reserved_.emplace(path, std::vector<std::string>(), overwrite);
  // An rtv needs to know when it starts.
  if (!toolkit::isRtvPath(path) || description_.startTime != 0) open();
}

void WriterHandle::open() {
  writer_.emplace(path_, description_, capacity_,
                  toolkit::RecordingWriter::OnFailure::KeepTemporary);
}

void WriterHandle::setValue(toolkit::FrameTag& tag, const std::string& name,
                            const std::string& text) const {
  const auto column = tagColumns_.find(name);
  if (column == tagColumns_.end()) throwUsage("there is no such value as " + name);
  if (!column->second(tag, text)) throwUsage(name + " cannot be " + text);
}

void WriterHandle::add(const py::buffer& jpeg, std::uint64_t captureTime, std::uint64_t arrivalTime,
                       const std::map<std::string, std::string>& tag) {
  const std::string bytes = bytesOf(jpeg);
  toolkit::FrameTag values;
  for (const auto& [name, text] : tag) setValue(values, name, text);
  const WithoutGil release;
  const std::lock_guard lock(mutex_);
  if (isOver_) throwClosed(path_);
  const auto size = toolkit::JpegInspector().size(bytes);
  if (!size) throwUsage("jpeg is no JPEG picture");
  if (!toolkit::isWholeJpeg(bytes)) throwUsage("jpeg is cut short: it has no end marker");
  if (description_.width == 0 || description_.height == 0) {
    description_.setSize(*size);
    if (writer_) writer_->setSize(description_.width, description_.height);
  }
  if (*size != description_.size()) {
    throwUsage("jpeg has " + toolkit::toText(*size) + " pixels, the recording " +
               toolkit::toText(description_.size()));
  }
  const bool isRtv = toolkit::isRtvPath(path_);
  if (isRtv && description_.startTime == 0) {
    description_.startTime = captureTime / toolkit::kMillisecond * toolkit::kMillisecond;
  }
  if (isRtv) toolkit::checkRtvTimes(path_, description_, {{captureTime, captureTime}});
  if (isRtv && frames_ == capacity_) {
    throwUsage("the recording has no room for more than " + std::to_string(capacity_) + " frames");
  }
  if (!writer_) open();
  writer_->add(bytes, {captureTime, arrivalTime}, values);
  ++frames_;
}

void WriterHandle::finish() {
  const WithoutGil release;
  const std::lock_guard lock(mutex_);
  if (isOver_) return;
  isOver_ = true;
  if (!writer_) open();  // says that there is no frame
  writer_->finish();
  writer_.reset();
  reserved_.reset();
}

void WriterHandle::abandon() {
  const WithoutGil release;
  const std::lock_guard lock(mutex_);
  isOver_ = true;
  if (writer_ && frames_ > 0) writer_->abandon();
  writer_.reset();
  reserved_.reset();
}

}  // namespace velmar::python
