#include "toolkit/catalog/Candidates.h"

#include <algorithm>
#include <map>

#include "toolkit/catalog/RangeExpression.h"
#include "toolkit/tables/FrameFacts.h"
#include "toolkit/text/NumberText.h"

namespace velmar::toolkit {

namespace {

using Source = FrameFact::Source;

// In ownFacts().
std::size_t placeOf(const FrameFact& fact) {
  const std::vector<FrameFact>& own = ownFacts();
  const auto found = std::find_if(own.begin(), own.end(), [&](const FrameFact& other) {
    return other.source == fact.source && other.signal == fact.signal;
  });
  return static_cast<std::size_t>(found - own.begin());
}

// Reads stretches, and asks the expression about them.
class Narrowing {
 public:
  Narrowing(const std::string& where, const FrameSelection& selection) : selection_(selection) {
    if (!where.empty()) expression_.emplace(where);
    if (expression_) facts_ = expression_->facts();
    for (const FrameFact& fact : facts_) columns_.push_back(fact.isOwn() ? columnOf(fact) : -1);
    if (expression_ && expression_->asksPlace()) {
      lng_ = columnOf({"lng_deg", Source::Lng});
      lat_ = columnOf({"lat_deg", Source::Lat});
    }
    if (selection.hasTime()) time_ = columnOf({"sensor_time_us", Source::SensorTime});
  }

  /// Of a stretch `s` of a recording `r`, for all that mayHold() reads.
  std::string columns() const {
    std::string text =
        "r.id, r.file, r.bytes, r.mtime_ns, r.inode, r.container, r.device_id, r.start_us, "
        "r.duration_us, s.first, s.behind, s.lacking";
    for (const std::size_t at : wanted_) {
      const std::string& name = ownFacts()[at].name;
      text.append(", s.").append(name).append("_least, s.").append(name).append("_greatest");
    }
    return text;
  }

  static Candidate candidateAt(const Statement& row) {
    return {row.text(1), {row.number(2), row.number(3), row.number(4)}, {}};
  }
  static FrameSpan framesAt(const Statement& row) {
    return {static_cast<std::uint64_t>(row.number(9)), static_cast<std::uint64_t>(row.number(10))};
  }

  bool mayHold(const Statement& row) {
    if (time_ && !isInTime(row)) return false;
    if (!expression_) return true;
    KnownFrames known;
    known.file = row.text(1);
    known.device = row.text(6);
    for (std::size_t i = 0; i < facts_.size(); ++i) known.facts.push_back(rangeOf(row, i));
    if (lng_ && row.text(5) == "rtv") known.place = boxAt(row);
    return expression_->mayHold(known);
  }

  /// The stretches in the places and the time that are asked for, in SQL; empty if that says
  /// nothing.
  std::string placesQuery() const {
    if (!expression_ || !expression_->places()) return "";
    std::string query;
    const auto span = selection_.fixedTimeSpan();
    for (const PlaceBox& box : *expression_->places()) {
      query += (query.empty() ? "" : " UNION ") + std::string("SELECT stretch FROM places WHERE ") +
               "west <= " + bound(box.east) + " AND east >= " + bound(box.west) +
               " AND south <= " + bound(box.north) + " AND north >= " + bound(box.south);
      if (span) {
        query += " AND start_s <= " + bound(static_cast<double>(span->second) / 1e6) +
                 " AND end_s >= " + bound(static_cast<double>(span->first) / 1e6);
      }
    }
    return query.empty() ? "SELECT NULL" : query;
  }

 private:
  static std::string bound(double value) {
    // SQL has no word for infinity.
    constexpr double kMost = 1e300;
    return numberText(std::clamp(value, -kMost, kMost));
  }

  // Behind those of every row.
  int columnOf(const FrameFact& fact) {
    wanted_.push_back(placeOf(fact));
    return kFirstFact + 2 * static_cast<int>(wanted_.size() - 1);
  }

  bool lacks(const Statement& row, int column) const {
    const std::size_t at = wanted_[static_cast<std::size_t>(column - kFirstFact) / 2];
    return (static_cast<std::uint64_t>(row.number(11)) >> at & 1) != 0;
  }

  bool isInTime(const Statement& row) const {
    const auto [begin, end] = selection_.timeSpan(static_cast<std::uint64_t>(row.number(7)));
    return static_cast<double>(begin) <= row.real(*time_ + 1) &&
           static_cast<double>(end) >= row.real(*time_);
  }

  ValueRange rangeOf(const Statement& row, std::size_t i) const {
    const FrameFact& fact = facts_[i];
    if (fact.source == Source::Index) {
      const FrameSpan frames = framesAt(row);
      return ValueRange::between(static_cast<double>(frames.first),
                                 static_cast<double>(frames.behind - 1), false);
    }
    if (fact.source == Source::Duration) {
      return ValueRange::exactly(static_cast<double>(static_cast<std::uint64_t>(row.number(8))) /
                                 fact.unit);
    }
    const int column = columns_[i];
    if (row.isNull(column)) return ValueRange::absent();
    return inUnitOf(
        fact, ValueRange::between(row.real(column), row.real(column + 1), lacks(row, column)));
  }

  PlaceBox boxAt(const Statement& row) const {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    // Frames without one are taken for anywhere.
    if (lacks(row, *lng_) || lacks(row, *lat_)) {
      return {-kInfinity, kInfinity, -kInfinity, kInfinity};
    }
    PlaceBox box = {row.real(*lng_), row.real(*lng_ + 1), row.real(*lat_), row.real(*lat_ + 1)};
    if (box.west < -180 || box.east > 180) {
      box.west = std::min(box.west, -180.0);
      box.east = std::max(box.east, 180.0);
    }
    return box;
  }

  static constexpr int kFirstFact = 12;  // column

  const FrameSelection& selection_;
  std::optional<RangeExpression> expression_;
  std::vector<FrameFact> facts_;
  std::vector<std::size_t> wanted_;  // own facts whose columns are read
  std::vector<int> columns_;         // of facts_
  std::optional<int> lng_;
  std::optional<int> lat_;
  std::optional<int> time_;
};

void add(Candidate& candidate, const Statement& row) {
  candidate.frames.push_back(Narrowing::framesAt(row));
}

// Through the places.
std::vector<Candidate> candidatesAt(Database& database, Narrowing& narrowing,
                                    const std::string& query) {
  Statement rows(database, "SELECT " + narrowing.columns() +
                               " FROM stretches AS s JOIN recordings AS r ON r.id = s.recording "
                               "WHERE s.id IN (" +
                               query + ")");
  std::map<std::string, Candidate> found;
  while (rows.step()) {
    if (!narrowing.mayHold(rows)) continue;
    Candidate& candidate =
        found.try_emplace(rows.text(1), Narrowing::candidateAt(rows)).first->second;
    add(candidate, rows);
  }
  std::vector<Candidate> candidates;
  candidates.reserve(found.size());
  for (auto& [file, candidate] : found) candidates.push_back(std::move(candidate));
  return candidates;
}

// Each recording as a whole first.
std::vector<Candidate> candidatesAmongAll(Database& database, Narrowing& narrowing) {
  Statement spans(database, "SELECT " + narrowing.columns() +
                                " FROM recordings AS r JOIN spans AS s ON s.recording = r.id "
                                "ORDER BY r.file");
  Statement stretches(database, "SELECT " + narrowing.columns() +
                                    " FROM stretches AS s JOIN recordings AS r ON r.id = "
                                    "s.recording WHERE s.recording = ? ORDER BY s.first");
  std::vector<Candidate> candidates;
  while (spans.step()) {
    if (!narrowing.mayHold(spans)) continue;
    Candidate candidate = Narrowing::candidateAt(spans);
    stretches.bind(spans.number(0));
    while (stretches.step()) {
      if (narrowing.mayHold(stretches)) add(candidate, stretches);
    }
    stretches.run();
    if (!candidate.frames.empty()) candidates.push_back(std::move(candidate));
  }
  return candidates;
}

}  // namespace

std::vector<Candidate> candidatesFor(Database& database, const std::string& where,
                                     const FrameSelection& selection) {
  Narrowing narrowing(where, selection);
  const std::string query = narrowing.placesQuery();
  auto candidates = query.empty() ? candidatesAmongAll(database, narrowing)
                                  : candidatesAt(database, narrowing, query);
  for (Candidate& candidate : candidates) sortRanges(candidate.frames);
  return candidates;
}

}  // namespace velmar::toolkit
