#include "core/FileHandle.h"

#include <pybind11/stl.h>
#include <sys/stat.h>

#include <chrono>
#include <map>

#include "core/Arrays.h"
#include "core/Errors.h"
#include "core/PythonJob.h"
#include "core/WithoutGil.h"
#include "toolkit/base/Failure.h"
#include "toolkit/tables/FrameExpression.h"
#include "toolkit/tables/Track.h"
#include "toolkit/text/JsonText.h"

namespace py = pybind11;

namespace velmar::python {

namespace {

const std::map<std::string, VELMAR_FORMAT_E> kFormats = {
    {"rgb", VELMAR_FORMAT_RGB_E}, {"bgr", VELMAR_FORMAT_BGR_E}, {"gray", VELMAR_FORMAT_GRAY_E}};
const std::map<std::string, SCALE_FACTOR_E> kScales = {{"1", SCALE_FACTOR_1_1_E},
                                                       {"1/2", SCALE_FACTOR_1_2_E},
                                                       {"1/4", SCALE_FACTOR_1_4_E},
                                                       {"1/8", SCALE_FACTOR_1_8_E}};

template <typename Value>
Value named(const std::map<std::string, Value>& values, const std::string& name,
            const std::string& what) {
  const auto found = values.find(name);
  if (found != values.end()) return found->second;
  std::string all;
  for (const auto& [each, value] : values) all += (all.empty() ? "" : ", ") + each;
  throwUsage("there is no " + what + " \"" + name + "\"; there are: " + all);
}

toolkit::PixelForm formOf(const std::string& format, const std::string& scale, long top,
                          long bottom) {
  if (std::min(top, bottom) < 0 || std::max(top, bottom) > UINT16_MAX) {
    throwUsage("the numbers of rows to crop are 0 to 65535");
  }
  return {named(kFormats, format, "format"), named(kScales, scale, "scale"),
          static_cast<unsigned short>(top), static_cast<unsigned short>(bottom)};
}

std::vector<py::ssize_t> shapeOf(const detail::ImageGeometry& geometry) {
  return {geometry.rows(), geometry.width, geometry.bytesPerPixel};
}

std::string toText(const std::vector<py::ssize_t>& shape) {
  std::string text;
  for (const py::ssize_t each : shape) text += (text.empty() ? "" : ", ") + std::to_string(each);
  return "(" + text + ")";
}

// The pixels of an array that decoded pictures fill from its first byte to its last.
std::uint8_t* pixelsOf(const py::array& out, const std::vector<py::ssize_t>& shape) {
  const bool hasShape = out.ndim() == static_cast<py::ssize_t>(shape.size()) &&
                        std::equal(shape.begin(), shape.end(), out.shape());
  if (!hasShape || !py::isinstance<py::array_t<std::uint8_t>>(out)) {
    throwUsage("out has to be an array of uint8 with the shape " + toText(shape));
  }
  if ((out.flags() & py::array::c_style) == 0) throwUsage("out has to be C-contiguous");
  if (!out.writeable()) throwUsage("out is read-only");
  return static_cast<std::uint8_t*>(const_cast<void*>(out.data()));
}

// What is mapped behind the end of the file would end the process.
void checkLength(const toolkit::FileBytes& file, std::uint64_t length) {
  struct stat status {};
  if (::fstat(file.descriptor(), &status) == 0 &&
      static_cast<std::uint64_t>(status.st_size) >= length) {
    return;
  }
  throw toolkit::Failure(file.path(), "it has become shorter since it was opened",
                         VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
}

// Asks for signals now and then: it has to wait for the GIL.
std::function<void()> pollSignals() {
  using Clock = std::chrono::steady_clock;
  return [last = Clock::now()]() mutable {
    if (Clock::now() - last < std::chrono::milliseconds(100)) return;
    throwSignals();
    last = Clock::now();
  };
}

py::object startPosition(const toolkit::SharedRecording& recording) {
  if (!recording.recording().isRtv()) return py::none();
  const toolkit::Place start = toolkit::Track(recording.recording()).start();
  return py::make_tuple(start.lng, start.lat, start.alt);
}

}  // namespace

FileMap::FileMap(const toolkit::FileBytes& file) : size_(file.size()) {
  if (!map_.map(file.descriptor(), size_)) {
    throw toolkit::Failure(file.path(), VELMAR_ERROR_CODE_FILE_MMAP_FAIL_E);
  }
}

py::buffer_info FileMap::buffer() const {
  return {map_.data(), static_cast<py::ssize_t>(size_), true};
}

FileHandle::FileHandle(const std::string& path) : path_(path) {
  const WithoutGil release;
  recording_ = std::make_shared<toolkit::SharedRecording>(path);
}

void FileHandle::close() {
  std::shared_ptr<toolkit::SharedRecording> last;
  view_ = {};
  const std::lock_guard lock(mutex_);
  last.swap(recording_);
}

std::shared_ptr<toolkit::SharedRecording> FileHandle::opened() const {
  const std::lock_guard lock(mutex_);
  if (!recording_) throwClosed(path_);
  return recording_;
}

py::dict FileHandle::facts() const {
  const auto recording = opened();
  const toolkit::RecordingDescription& description = recording->description();
  py::dict facts;
  facts["container"] = recording->recording().isRtv() ? "rtv" : "img";
  facts["version"] = velmarVersion2String(recording->recording().version());
  facts["width"] = description.width;
  facts["height"] = description.height;
  facts["device_id"] = py::bytes(description.deviceId);
  facts["undistorted"] = description.undistorted;
  facts["start_time"] = description.startTime;
  facts["start_position"] = startPosition(*recording);
  facts["frames"] = recording->recording().framesCount();
  facts["has_signals"] = recording->recording().isRtv() && description.version == RTV_VER_04;
  return facts;
}

std::string FileHandle::cameraParams() const {
  return toolkit::toJsonText(toolkit::parseJson(opened()->description().cameraParams));
}

std::string FileHandle::extendedInfo() const {
  return toolkit::toJsonText(toolkit::parseJson(opened()->description().extendedInfo));
}

py::array FileHandle::times() const { return timesOf(*opened()); }
py::array FileHandle::sizes() const { return sizesOf(*opened()); }
py::array FileHandle::tags() const { return tagsOf(*opened()); }
py::array FileHandle::positions() const { return positionsOf(*opened()); }
py::dict FileHandle::signals() const { return signalsOf(*opened()); }

py::array FileHandle::find(const std::string& expression) const {
  const auto recording = opened();
  std::vector<unsigned int> found;
  {
    const WithoutGil release;
    toolkit::FrameSelection selection;
    selection.setCondition([&] { return toolkit::parseFrameExpression(expression); });
    found = recording->find(selection);
  }
  py::array_t<std::int64_t> frames(static_cast<py::ssize_t>(found.size()));
  std::copy(found.begin(), found.end(), frames.mutable_data());
  return frames;
}

py::tuple FileHandle::shape(const std::string& format, const std::string& scale, long top,
                            long bottom) const {
  return py::tuple(py::cast(shapeOf(opened()->geometry(formOf(format, scale, top, bottom)))));
}

void FileHandle::decode(unsigned int index, const std::string& format, const std::string& scale,
                        long top, long bottom, const py::array& out) const {
  const auto recording = opened();
  const toolkit::PixelForm form = formOf(format, scale, top, bottom);
  std::uint8_t* const pixels = pixelsOf(out, shapeOf(recording->geometry(form)));
  toolkit::FrameFlaw flaw;
  {
    const WithoutGil release;
    flaw = recording->decode(index, form, pixels);
  }
  if (flaw) throw toolkit::FrameFailure(path_, index, flaw);
}

std::vector<std::size_t> FileHandle::decodeMany(const std::vector<unsigned int>& indices,
                                                const std::string& format, const std::string& scale,
                                                long top, long bottom, const py::array& out,
                                                unsigned int threads, bool masks) const {
  const auto recording = opened();
  const toolkit::PixelForm form = formOf(format, scale, top, bottom);
  std::vector<py::ssize_t> shape = shapeOf(recording->geometry(form));
  shape.insert(shape.begin(), static_cast<py::ssize_t>(indices.size()));
  std::uint8_t* const pixels = pixelsOf(out, shape);
  std::vector<std::pair<std::size_t, toolkit::FrameFlaw>> flaws;
  {
    const WithoutGil release;
    flaws = toolkit::decodeMany(*recording, indices, form, threads,
                                masks ? toolkit::OnFlaw::Continue : toolkit::OnFlaw::Stop, pixels,
                                pollSignals());
  }
  if (!masks && !flaws.empty()) {
    throw toolkit::FrameFailure(path_, indices[flaws.front().first], flaws.front().second);
  }
  std::vector<std::size_t> places;
  places.reserve(flaws.size());
  for (const auto& [place, flaw] : flaws) places.push_back(place);
  return places;
}

py::bytes FileHandle::jpeg(unsigned int index) const {
  const auto recording = opened();
  std::string bytes;
  {
    const WithoutGil release;
    bytes = recording->jpeg(index);
  }
  return bytes;
}

py::object FileHandle::jpegView(unsigned int index) {
  const auto recording = opened();
  const toolkit::FilePlace& place = recording->place(index);
  checkLength(recording->recording().file(), place.end());
  if (!view_) {
    const py::object map = py::cast(std::make_unique<FileMap>(recording->recording().file()));
    view_ = py::reinterpret_steal<py::object>(PyMemoryView_FromObject(map.ptr()));
  }
  return view_[py::slice(static_cast<py::ssize_t>(place.offset),
                         static_cast<py::ssize_t>(place.end()), 1)];
}

}  // namespace velmar::python
