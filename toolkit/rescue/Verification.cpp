#include "toolkit/rescue/Verification.h"
#include "toolkit/files/RecorderFiles.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "container/img/MetaDataKeys.h"
#include "container/rtv/RtvLayout.h"
#include "toolkit/base/Failure.h"
#include "toolkit/files/FileBytes.h"
#include "toolkit/files/LockHolder.h"
#include "toolkit/jpeg/FrameInput.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/rescue/Plausibility.h"
#include "toolkit/text/JsonText.h"

namespace velmar::toolkit {

namespace {

using Severity = Finding::Severity;

// Checks a recording that opens.
class Verifier {
 public:
  Verifier(const Recording& recording, bool decode, const VerificationProgress& progress,
           FindingMerger& findings)
      : recording_(recording),
        file_(recording.file()),
        places_(recording_),
        description_(recording_.description()),
        decode_(decode),
        progress_(progress),
        findings_(findings) {}

  unsigned int run() {
    checkPlaces();
    checkNeighbours();
    SharedBytes shared(file_);
    for (unsigned int i = 0; i < count(); ++i) {
      if (!shared.repeats(places_.frames[i])) checkPicture(i);
      if (progress_ && !progress_(places_.frames[i].size)) return count();
    }
    checkPlausibility(recording_, findings_);
    if (!recording_.isFinished()) return count();
    if (!recording_.isRtv()) {
      checkMetaData();
    } else {
      checkRtv();
    }
    return count();
  }

 private:
  unsigned int count() const { return static_cast<unsigned int>(places_.frames.size()); }
  bool isRecorded() const { return recorderOf(recording_).state == Recorder::State::AtWork; }
  bool isInside(const FilePlace& place) const { return file_.contains(place.offset, place.size); }

  unsigned char byteAt(std::uint64_t offset) const {
    return static_cast<unsigned char>(file_.read(offset, 1).at(0));
  }

  void reportFrame(Severity severity, unsigned int index, const std::string& text) const {
    findings_.add({severity, index, places_.frames[index].offset, text});
  }
  void reportBytes(std::uint64_t from, std::uint64_t to) const {
    findings_.add(
        {Severity::Warning, {}, from, std::to_string(to - from) + " bytes belong to no frame"});
  }

  void checkPlaces() const {
    if (count() == 0 && !isRecorded())
      findings_.add({Severity::Error, {}, {}, "there is no frame"});
    for (unsigned int i = 0; i < count(); ++i) {
      const FilePlace& place = places_.frames[i];
      if (!isInside(place)) {
        reportFrame(Severity::Error, i, "reaches past the end of the file");
      } else if (place.offset < places_.room.offset) {
        reportFrame(Severity::Error, i, "lies over the header or the index");
      } else if (place.end() > places_.room.end()) {
        reportFrame(Severity::Error, i, "lies over the metadata");
      }
    }
  }

  // In the order in which they lie in the file, frames must not overlap and leave nothing out.
  void checkNeighbours() const {
    std::vector<unsigned int> order(count());
    std::iota(order.begin(), order.end(), 0U);
    std::erase_if(order, [this](unsigned int i) { return !isInside(places_.frames[i]); });
    std::stable_sort(order.begin(), order.end(), [this](unsigned int one, unsigned int other) {
      return places_.frames[one].offset < places_.frames[other].offset;
    });
    std::uint64_t end = places_.room.offset;
    std::uint64_t gap = 0;  // that may be there
    if (places_.mayBeginWithGap && !order.empty()) gap = places_.frames[order.back()].size;
    std::optional<unsigned int> before;
    for (const unsigned int i : order) {
      const FilePlace& place = places_.frames[i];
      if (before && place.size > 0 && place.offset < end) {
        reportFrame(Severity::Error, i, "overlaps frame " + std::to_string(*before));
      } else if (place.offset > end && place.offset - end >= std::max<std::uint64_t>(gap, 1)) {
        reportBytes(end, place.offset);
      }
      gap = 0;
      if (place.end() >= end) before = i;
      end = std::max(end, place.end());
    }
    if (end < places_.room.end()) reportBytes(end, places_.room.end());
  }

  void checkPicture(unsigned int index) const {
    if (!isInside(places_.frames[index])) return;
    try {
      checkStoredPicture(index);
    } catch (const Failure& failure) {
      reportFrame(Severity::Error, index, failure.words());
    }
  }

  // The start and the end of the frame are enough for most pictures. Throws Failure if it cannot be
  // read.
  void checkStoredPicture(unsigned int index) const {
    constexpr std::uint64_t kStart = 4096;
    constexpr std::uint64_t kEnd = 256;
    const FilePlace& place = places_.frames[index];
    // A recorder that finishes moves frames.
    const bool isAllRead = decode_ || !recording_.isFinished();
    std::string jpeg =
        isAllRead ? whole(index) : file_.read(place.offset, std::min(place.size, kStart));
    if (!beginsAsJpeg(jpeg)) return reportFrame(Severity::Error, index, "does not begin as a JPEG");
    auto size = inspector_.size(jpeg);
    if (!size && jpeg.size() < place.size) {
      jpeg = whole(index);
      size = inspector_.size(jpeg);
    }
    if (!size) return reportFrame(Severity::Error, index, "has no JPEG header that can be read");
    if (!(*size == description_.size())) {
      reportFrame(Severity::Warning, index,
                  "is " + toText(*size) + ", but the header says " + toText(description_.size()));
    }
    const std::uint64_t tail = std::min(place.size, kEnd);
    const std::string end = isAllRead ? jpeg : file_.read(place.end() - tail, tail);
    if (!endsAsJpeg(end) && !isWholeJpeg(whole(index))) {
      reportFrame(Severity::Warning, index, "has no end marker");
    }
    if (decode_) checkDecoding(index, jpeg);
  }

  std::string whole(unsigned int index) const {
    std::string jpeg;
    const std::string problem = recording_.tryReadFrame(index, jpeg);
    if (problem.empty()) return jpeg;
    throw Failure(recording_.path(), problem, VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }

  void checkDecoding(unsigned int index, const std::string& jpeg) const {
    const auto problem = JpegInspector::decodingProblem(jpeg);
    if (problem.text.empty()) return;
    reportFrame(
        problem.isFatal ? Severity::Error : Severity::Warning, index,
        (problem.isFatal ? "does not decode: " : "decodes with a warning: ") + problem.text);
  }

  // What an edit would write must say what the file says.
  void checkMetaData() const {
    const std::uint64_t offset = places_.room.end();
    const auto warn = [&](const std::string& text) {
      findings_.add({Severity::Warning, {}, offset, "metadata: " + text});
    };
    const Json::Value stored = parseJson(file_.read(offset, file_.size() - offset));
    if (!stored.isObject()) return warn("it is not strict JSON");
    const Json::Value read = parseJson(recording_.reader().getMetaInfo());
    for (const std::string& key : read.getMemberNames()) {
      if (!stored.isMember(key)) {
        if (key != detail::kExtendedInfoKey) warn("\"" + key + "\" is missing");
      } else if (stored[key] != read[key]) {
        warn("\"" + key + "\" is " + toJsonText(stored[key]) + ", read as " +
             toJsonText(read[key]));
      }
    }
    for (const std::string& key : stored.getMemberNames()) {
      if (!read.isMember(key) && key != detail::kIndexChecksumKey) {
        warn("\"" + key + "\" is unknown, an edit would lose it");
      }
    }
  }

  void checkRtv() const {
    const auto warn = [this](std::uint64_t offset, const std::string& text) {
      findings_.add({Severity::Warning, {}, offset, text});
    };
    const detail::RtvLayout layout = detail::rtvLayout(description_.version);
    if (file_.read(detail::kMagicCodeAt, detail::kRtvMagic.size()) != detail::kRtvMagic)
      warn(detail::kMagicCodeAt, "the magic code differs");
    if (byteAt(layout.frameFormatAt()) > RTV_FMT_GRAY) {
      warn(layout.frameFormatAt(), "the frame format is unknown");
    }
    if (byteAt(layout.frameCodecAt()) > RTV_CODEC_JPG) {
      warn(layout.frameCodecAt(), "the frame codec is unknown");
    }
    for (unsigned int i = 0; i < count(); ++i) {
      if (isMisread(recording_.timeFlag(i))) {
        reportFrame(Severity::Warning, i, std::string("has ") + kMisreadTime);
      }
    }
    unsigned short slots = 0;
    recording_.parser().getFramesMax(slots);  // does not fail on an open parser
    if (slots < count()) {
      findings_.add({Severity::Error, {}, layout.framesMaxAt(), "there are more frames than tags"});
      return;
    }
    const std::uint64_t unused = layout.tagAt(count());
    const std::string tags = file_.read(unused, layout.tagAt(slots) - unused);
    const auto found = tags.find_first_not_of('\0');
    if (found != tags.npos) {
      warn(unused + found, "the tags behind the last frame's are not zero");
    }
  }

  const Recording& recording_;
  const FileBytes& file_;
  const FramePlaces places_;
  const RecordingDescription description_;
  const bool decode_;
  const VerificationProgress& progress_;
  FindingMerger& findings_;
  const JpegInspector inspector_;
};

// Nothing if it does not open, which is a finding.
std::optional<Recording> opened(const std::string& path, const FindingMerger::Report& report) {
  std::string words = "its name has to end in .img or .rtv";
  try {
    if (isRecordingName(finalPath(path))) return Recording(path, Accept::Running);
  } catch (const Failure& failure) {
    words = failure.wordsFor(path);
  }
  report({Severity::Error, {}, {}, "does not open: " + words});
  return std::nullopt;
}

}  // namespace

unsigned int verify(const std::string& path, bool decode, const FindingMerger::Report& report,
                    const VerificationProgress& progress) {
  // All the time: an edit meanwhile would look like damage. Nobody edits a temporary file.
  std::optional<FileLock> lock;
  if (!isTemporaryPath(path)) lock.emplace(path, FileLock::Kind::Read);
  const auto recording = opened(path, report);
  if (!recording) return 0;
  const std::string words = undoWords(path, recording->undoState());
  if (!words.empty()) report({Severity::Error, {}, {}, words});
  const Recorder recorder = recorderOf(*recording);
  if (recorder.state != Recorder::State::Done) {
    const bool isAtWork = recorder.state == Recorder::State::AtWork;
    report({isAtWork ? Severity::Warning : Severity::Error, {}, {}, recorder.words});
  }
  FindingMerger findings(report);
  try {
    const unsigned int count = Verifier(*recording, decode, progress, findings).run();
    findings.finish();
    return count;
  } catch (const Failure&) {
    findings.finish();
    throw;
  }
}

}  // namespace velmar::toolkit
