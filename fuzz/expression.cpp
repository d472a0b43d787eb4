#include <algorithm>
#include <cmath>
#include <memory>

#include "support.h"
#include "toolkit/base/Failure.h"
#include "toolkit/catalog/RangeExpression.h"
#include "toolkit/catalog/RecordingSummary.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/tables/FrameExpression.h"
#include "toolkit/writing/RecordingWriter.h"

using namespace velmar::toolkit;

namespace {

constexpr unsigned int kFrames = 4;

// Of a drive whose frames have more and more values.
class Drive {
 public:
  Drive() {
    RecordingDescription description;
    description.version = RTV_VER_04;
    description.lng = description.lat = 1 << 28;
    RecordingWriter writer(file_.path(), description, kFrames,
                           RecordingWriter::OnFailure::RemoveFrames);
    FrameTag tag;
    for (unsigned int i = 0; i < kFrames; ++i) {
      writer.add(std::string(i + 1, 'x'), {i * 100000ULL, i * 100000ULL}, tag);
      tag.x = 1 << (8 * i);
      tag.speed = static_cast<unsigned short>(1000 * i);
      if (i == 1) tag.can.yaw_rate = 0.5F;
    }
    writer.finish();
    recording_ = std::make_unique<Recording>(file_.path());
  }

  const Recording& recording() const { return *recording_; }

 private:
  const TemporaryFile file_{"rtv"};
  std::unique_ptr<Recording> recording_;
};

// What a catalogue knows of the drive.
KnownFrames knownOf(const Recording& recording, const std::vector<FrameFact>& facts) {
  static const Stretch span = *summaryOf(recording).span;
  const std::vector<FrameFact>& own = ownFacts();
  KnownFrames known;
  known.file = absolutePath(recording.path());
  known.device = recording.deviceId();
  known.place = span.place;
  for (const FrameFact& fact : facts) {
    const auto found = std::find_if(own.begin(), own.end(), [&](const FrameFact& other) {
      return other.source == fact.source && other.signal == fact.signal;
    });
    if (found == own.end()) {
      known.facts.push_back(ValueRange::anything());
      continue;
    }
    const auto at = static_cast<std::size_t>(found - own.begin());
    const bool lacks = (span.lacking >> at & 1) != 0;
    known.facts.push_back(
        std::isnan(span.least[at])
            ? ValueRange::absent()
            : inUnitOf(fact, ValueRange::between(span.least[at], span.greatest[at], lacks)));
  }
  return known;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Drive drive;
  try {
    const auto condition = parseFrameExpression({reinterpret_cast<const char*>(data), size});
    condition->begin(drive.recording());
    bool chosen[kFrames];
    for (unsigned int i = 0; i < kFrames; ++i) chosen[i] = condition->holds(i);
    // Nothing of one recording is kept for the next.
    condition->begin(drive.recording());
    for (unsigned int i = 0; i < kFrames; ++i) require(condition->holds(i) == chosen[i]);
    consume(condition->lack());
    RangeExpression ranges({reinterpret_cast<const char*>(data), size});
    const bool mayHold = ranges.mayHold(knownOf(drive.recording(), ranges.facts()));
    for (const bool holds : chosen) require(mayHold || !holds);
  } catch (const UsageError& error) {
    consume(error.what());
  }
  return 0;
}
