#include "core/Arrays.h"
#include "core/WithoutGil.h"

#include <algorithm>
#include <cstring>

#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/Track.h"

namespace py = pybind11;

namespace velmar::python {

namespace {

struct __attribute__((packed)) StoredTag {
  std::int32_t x, y, z;
  std::uint32_t relativeDistance;
  std::uint16_t speed, direction;
};

py::dtype tagType() {
  using namespace py::literals;
  return py::dtype(py::make_tuple("x", "y", "z", "relative_distance", "speed", "direction"),
                   py::make_tuple("<i4", "<i4", "<i4", "<u4", "<u2", "<u2"),
                   py::make_tuple(0, 4, 8, 12, 16, 18), sizeof(StoredTag));
}

std::vector<toolkit::FrameTag> readTags(const toolkit::SharedRecording& recording) {
  const WithoutGil release;
  return recording.tags();
}

// As numpy's datetime64 has it; NaT for what that cannot hold.
std::int64_t toDateTime(std::uint64_t time) {
  return time > INT64_MAX ? INT64_MIN : static_cast<std::int64_t>(time);
}

const char* typeOf(CanFieldType type) {
  switch (type) {
    case CanFieldType::Float:
      return "f4";
    case CanFieldType::Unsigned8:
      return "u1";
    case CanFieldType::Unsigned16:
      return "u2";
    default:
      return "u4";
  }
}

}  // namespace

py::array_t<std::int64_t> timesOf(const toolkit::SharedRecording& recording) {
  std::vector<toolkit::FrameTimes> times;
  {
    const WithoutGil release;
    times = recording.times();
  }
  py::array_t<std::int64_t> array({times.size(), std::size_t{2}});
  std::int64_t* out = array.mutable_data();
  for (const toolkit::FrameTimes& each : times) {
    *out++ = toDateTime(each.sensor);
    *out++ = toDateTime(each.arrived);
  }
  return array;
}

py::array_t<std::int64_t> sizesOf(const toolkit::SharedRecording& recording) {
  const auto& places = recording.recording().places();
  py::array_t<std::int64_t> sizes(static_cast<py::ssize_t>(places.size()));
  std::transform(places.begin(), places.end(), sizes.mutable_data(),
                 [](const auto& place) { return static_cast<std::int64_t>(place.size); });
  return sizes;
}

py::array tagsOf(const toolkit::SharedRecording& recording) {
  const auto tags = readTags(recording);
  py::array array(tagType(), tags.size());
  auto* out = static_cast<StoredTag*>(array.mutable_data());
  for (const toolkit::FrameTag& tag : tags) {
    *out++ = {tag.x, tag.y, tag.z, tag.relativeDistance, tag.speed, tag.direction};
  }
  return array;
}

// With the GIL: there may be one Track at a time.
py::array_t<double> positionsOf(const toolkit::SharedRecording& recording) {
  const auto tags = readTags(recording);
  py::array_t<double> positions({tags.size(), std::size_t{3}});
  double* out = positions.mutable_data();
  const toolkit::Track track(recording.recording());
  for (const toolkit::FrameTag& tag : tags) {
    const toolkit::Place place = track.at(tag);
    *out++ = place.lng;
    *out++ = place.lat;
    *out++ = place.alt;
  }
  return positions;
}

py::dict signalsOf(const toolkit::SharedRecording& recording) {
  const auto tags = readTags(recording);
  py::dict signals;
  for (const CanField& field : toolkit::canSignals()) {
    py::array values(py::dtype(typeOf(field.type)), tags.size());
    py::array_t<bool> absent(tags.size());
    auto* out = static_cast<unsigned char*>(values.mutable_data());
    bool* mask = absent.mutable_data();
    for (const toolkit::FrameTag& tag : tags) {
      std::memcpy(out, reinterpret_cast<const unsigned char*>(&tag.can) + field.offset,
                  field.size());
      out += field.size();
      *mask++ = canFieldIsAbsent(tag.can, field);
    }
    signals[field.name] = py::make_tuple(values, absent);
  }
  return signals;
}

}  // namespace velmar::python
