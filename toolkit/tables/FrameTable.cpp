#include "toolkit/tables/FrameTable.h"

#include <algorithm>
#include <array>
#include <utility>

#include "toolkit/base/Failure.h"
#include "toolkit/tables/FrameColumns.h"

namespace velmar::toolkit {

namespace {

using Kind = FrameColumn::Kind;

constexpr std::array<std::pair<const char*, Kind>, 3> kTexts = {
    {{"file", Kind::File}, {"captured", Kind::Captured}, {"arrived", Kind::Arrived}}};
constexpr std::array<std::pair<const char*, HashKind>, 2> kHashes = {
    {{"xxh3_128", HashKind::Xxh3}, {"sha256", HashKind::Sha256}}};
// Numbers that are stored in hundredths, and the facts that they are.
constexpr std::array<std::pair<const char*, const char*>, 5> kStored = {
    {{"x", "x_m"},
     {"y", "y_m"},
     {"z", "z_m"},
     {"relative_distance", "relative_distance_m"},
     {"speed", "speed_m_s"}}};

std::optional<FrameColumn> columnNamed(const std::string& name) {
  for (const auto& [text, kind] : kTexts) {
    if (name == text) return FrameColumn{name, kind};
  }
  for (const auto& [hash, kind] : kHashes) {
    if (name == hash) return hashColumn(kind);
  }
  for (const auto& [stored, fact] : kStored) {
    if (name == stored) return FrameColumn{name, Kind::Stored, factNamed(fact)};
  }
  if (const auto fact = factNamed(name)) return FrameColumn{name, Kind::Fact, fact};
  return std::nullopt;
}

std::vector<std::string> namesBesideFacts() {
  std::vector<std::string> names;
  names.reserve(kTexts.size() + kHashes.size() + kStored.size());
  for (const auto& text : kTexts) names.emplace_back(text.first);
  for (const auto& hash : kHashes) names.emplace_back(hash.first);
  for (const auto& stored : kStored) names.emplace_back(stored.first);
  return names;
}

}  // namespace

FrameTable namedColumns(const std::string& names) {
  FrameTable table;
  for (std::size_t begin = 0; begin <= names.size();) {
    const std::size_t end = std::min(names.find(',', begin), names.size());
    const std::string name = names.substr(begin, end - begin);
    const auto column = columnNamed(name);
    if (!column) {
      throw UsageError("--columns: " + (name.empty() ? "a name is missing"
                                                     : unknownFactWords(name, namesBesideFacts())));
    }
    if (std::any_of(table.begin(), table.end(),
                    [&name](const FrameColumn& other) { return other.name == name; })) {
      throw UsageError("--columns: " + name + " is there twice");
    }
    table.push_back(*column);
    begin = end + 1;
  }
  return table;
}

FrameTable columnsForPrograms(bool ofRtv, bool hasCan) {
  return namedColumns(frameColumns(ofRtv, hasCan));
}

FrameTable columnsForPeople(bool ofRtv) {
  // An rtv has no arrival times of its own.
  FrameTable table = namedColumns(ofRtv ? "index,captured,size,speed_m_s,lat_deg,lng_deg"
                                        : "index,captured,arrived,size");
  table.front().title = "frame";
  table[ofRtv ? 2 : 3].title = "bytes";
  if (!ofRtv) return table;
  table[3].title = "m/s";
  table[4].title = "latitude";
  table[5].title = "longitude";
  return table;
}

FrameTable columnsOf(const Recording& recording) {
  return columnsForPrograms(recording.isRtv(), recording.description().version == RTV_VER_04);
}

FrameColumn hashColumn(HashKind kind) {
  const auto* const hash =
      std::find_if(kHashes.begin(), kHashes.end(),
                   [kind](const auto& candidate) { return candidate.second == kind; });
  return {hash->first, Kind::Hash, {}, kind};
}

std::string csvHeader(const FrameTable& table) {
  std::string line;
  for (const FrameColumn& column : table) line.append(line.empty() ? "" : ",").append(column.name);
  return line + "\n";
}

}  // namespace velmar::toolkit
