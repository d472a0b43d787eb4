#include "toolkit/tables/Track.h"

#include <cmath>

#include "toolkit/text/Joined.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/text/TimeText.h"
#include "velmar_video/rtv/RecordFileToolkit.h"

namespace velmar::toolkit {

namespace {

constexpr double kHundredths = 100;

std::string coordinates(const Place& place) {
  return "[" + degreesText(place.lng) + "," + degreesText(place.lat) + "," +
         fixedText(place.alt, 2) + "]";
}

// Of text that can be printed: XML has neither control characters nor other bytes than UTF-8.
std::string escapedForXml(const std::string& text) {
  std::string escaped;
  for (const char character : printable(text)) {
    switch (character) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      default:
        escaped += character;
    }
  }
  return escaped;
}

}  // namespace

std::string startPositionText(const RecordingDescription& description) {
  const int perMetre = altitudesPerMetre(description.version);
  const double altitude = perMetre == 0 ? 0 : double{1} * description.alt / perMetre;
  return degreesText(RecordFileToolkit::NDS2Degree(description.lng)) + "," +
         degreesText(RecordFileToolkit::NDS2Degree(description.lat)) + "," + fixedText(altitude, 2);
}

GroundScale::GroundScale(double lat)
    : lat_(lat),
      metresPerDegreeEast_(RecordFileToolkit::toRadians(RecordFileToolkit::calculatePr_(lat))),
      metresPerDegreeNorth_(RecordFileToolkit::toRadians(RecordFileToolkit::calculateMr_(lat))) {}

double GroundScale::distance(const Place& one, const Place& other) const {
  const double east = std::remainder(other.lng - one.lng, 360) * metresPerDegreeEast_;
  const double north = (other.lat - one.lat) * metresPerDegreeNorth_;
  return std::sqrt(east * east + north * north);
}

Track::Track(const Recording& recording) : recording_(recording) {
  recording.parser().getStdPosition(start_.lat, start_.lng, start_.alt);
  radii_ = detail::EllipsoidRadii::at(start_.lat);
}

Place Track::at(const FrameTag& tag) const {
  Place place{0, 0, start_.alt + tag.z / kHundredths};
  radii_.rel2Abs(start_.lng, start_.lat, tag.x / kHundredths, tag.y / kHundredths, place.lng,
                 place.lat);
  return place;
}

std::string Track::gpx(const std::vector<unsigned int>& frames) const {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<gpx version=\"1.1\" creator=\"velmar-video\" "
      "xmlns=\"http://www.topografix.com/GPX/1/1\">\n<trk><name>";
  text += escapedForXml(recording_.path()) + "</name><trkseg>\n";
  for (const unsigned int frame : frames) {
    const Place place = at(recording_.tag(frame));
    text += "<trkpt lat=\"" + degreesText(place.lat) + "\" lon=\"" + degreesText(place.lng) +
            "\"><ele>" + fixedText(place.alt, 2) + "</ele><time>" +
            formatTime(recording_.sensorTime(frame)) + "</time></trkpt>\n";
  }
  return text + "</trkseg></trk>\n</gpx>\n";
}

std::string Track::geoJson(const std::vector<unsigned int>& frames) const {
  std::vector<std::string> places;
  std::vector<std::string> times;
  for (const unsigned int frame : frames) {
    places.push_back(coordinates(at(recording_.tag(frame))));
    times.push_back("\"" + formatTime(recording_.sensorTime(frame)) + "\"");
  }
  const bool isLine = places.size() > 1;
  std::string text = R"({"type":"Feature","properties":{"name":)";
  text += toJsonText(recording_.path()) + R"(,"times":[)" + joined(times, ",") + "]},";
  text += isLine ? R"("geometry":{"type":"LineString","coordinates":[)"
                 : R"("geometry":{"type":"Point","coordinates":)";
  return text + joined(places, ",") + (isLine ? "]}}\n" : "}}\n");
}

}  // namespace velmar::toolkit
