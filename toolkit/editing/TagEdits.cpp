#include <algorithm>
#include <string_view>

#include "toolkit/editing/EditDraft.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/TagsCsv.h"
#include "toolkit/tables/Track.h"

namespace velmar::toolkit {

namespace {

bool isSignal(std::string_view name) {
  return std::any_of(canSignals().begin(), canSignals().end(),
                     [name](const CanField& signal) { return signal.name == name; });
}

// Whether the value of a tag is one of those contents.
bool belongsTo(Contents contents, std::string_view name) {
  switch (contents) {
    case Contents::Speed:
      return name.ends_with("speed") || name.starts_with("wheel_");
    case Contents::Can:
      return isSignal(name);
    default:
      return false;
  }
}

void clear(Contents contents, std::vector<FrameTag>& tags, RecordingDescription& description) {
  if (contents == Contents::Positions) {
    description.lng = description.lat = description.alt = 0;
    for (FrameTag& tag : tags) tag.clearPosition();
  }
  for (const TagColumn& column : tagColumns(description.version)) {
    if (!belongsTo(contents, column.name)) continue;
    for (FrameTag& tag : tags) column.clear(tag);
  }
}

void setStartPosition(const StartPosition& start, RecordingDescription& description,
                      const EditDraft& draft) {
  constexpr char kOption[] = "--start-position";
  description.lng = start.lng;
  description.lat = start.lat;
  if (!start.alt) return;
  if (description.version == RTV_VER_02) {
    draft.refuse(kOption, "version 02 of rtv holds no altitude");
  }
  const StoredAltitude altitude = storedAltitude(*start.alt, description.version);
  if (!altitude.isExact) {
    draft.refuse(kOption, description.version == RTV_VER_03
                              ? "version 03 of rtv holds whole metres"
                              : "version 04 of rtv holds hundredths of a metre");
  }
  description.alt = altitude.units;
}

bool changesTags(const EditRequest& request) {
  const auto isOfTags = [](Contents contents) {
    return contents != Contents::DeviceId && contents != Contents::ExtendedInfo;
  };
  return request.startPosition || request.changeTags ||
         std::any_of(request.cleared.begin(), request.cleared.end(), isOfTags);
}

// An img has none, so that there is nothing to clear.
void refuseForImg(const EditRequest& request, const EditDraft& draft) {
  constexpr char kWords[] = "an img holds neither positions nor CAN signals";
  if (request.startPosition) draft.refuse("--start-position", kWords);
  if (request.changeTags) draft.refuse(request.changeTagsOption, kWords);
}

}  // namespace

void planTags(const EditRequest& request, EditDraft& draft) {
  if (!changesTags(request)) return;
  const Recording& recording = draft.recording;
  if (!recording.isRtv()) return refuseForImg(request, draft);
  std::vector<std::uint64_t> times;
  std::vector<FrameTag> tags;
  for (unsigned int i = 0; i < recording.framesCount(); ++i) {
    times.push_back(recording.sensorTime(i));
    tags.push_back(recording.tag(i));
  }
  RecordingDescription changed = draft.description;
  for (const Contents contents : request.cleared) clear(contents, tags, changed);
  if (request.startPosition) setStartPosition(*request.startPosition, changed, draft);
  if (request.changeTags) request.changeTags(times, tags, changed);

  draft.patches = tagPatches(recording, tags);
  const std::size_t count = draft.patches.size();
  for (const FilePatch& patch : draft.patches) {
    draft.places.overwrite({patch.offset, patch.bytes.size()});
  }
  const std::string before = startPositionText(draft.description);
  const std::string after = startPositionText(changed);
  if (before != after) {
    // The header is kept for undoing in any case.
    draft.patches.push_back(startPositionPatch(changed));
    draft.addWords("start position", before, after);
  }
  if (count == 0) return;
  const std::string of = " of " + std::to_string(tags.size()) + " frames";
  draft.addWords("tags", "as recorded", std::to_string(count) + of + " changed");
}

}  // namespace velmar::toolkit
