#include "toolkit/rescue/RecoverFrames.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "base/PublishFile.h"
#include "toolkit/base/Failure.h"
#include "toolkit/frames/FrameLosses.h"
#include "toolkit/jpeg/FrameInput.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/writing/RecordFrames.h"

namespace velmar::toolkit {

namespace {

// What was not on the disk when the power failed is zeros now, as is a sector that was lost. Other
// pictures without an end marker were recorded like that.
bool endsInZeros(const std::string& jpeg) { return jpeg.ends_with('\0') && !isWholeJpeg(jpeg); }

// Zeros that fill pages of the file and hardly more, as pages that did not come to the disk leave
// them. Most decode without a warning. Those of a picture of one colour end anywhere.
bool lacksPages(std::string_view jpeg, std::uint64_t offset) {
  constexpr std::size_t kByChance = 4;  // zeros beside a page
  std::size_t page = kPage - offset % kPage;
  while (page < jpeg.size()) {
    const std::size_t end = std::min(jpeg.find_first_not_of('\0', page), jpeg.size());
    const std::size_t zeros = end - page;
    const std::size_t before = page - jpeg.find_last_not_of('\0', page - 1) - 1;
    if (zeros >= kPage && zeros % kPage <= kByChance && before <= kByChance) return true;
    page += std::max(zeros / kPage, std::size_t{1}) * kPage;
  }
  return false;
}

// Zeros inside, which a picture of one colour may have as well.
bool hasHole(const std::string& jpeg, std::uint64_t offset) {
  constexpr std::size_t kSector = 512;
  const std::size_t end = jpeg.rfind("\xFF\xD9");
  if (end == jpeg.npos) return false;
  return lacksPages(std::string_view(jpeg).substr(0, end), offset) ||
         (jpeg.find(std::string(kSector, '\0')) < end &&
          !JpegInspector::decodingProblem(jpeg).text.empty());
}

// What is wrong with a frame; nothing if the words are empty.
struct Verdict {
  bool isLost = false;
  std::string words;
};

Verdict lost(const std::string& words) { return {true, "lost: " + words}; }

// Unless the frame is lost, `jpeg` holds it then.
Verdict take(const Rescue& rescue, const LeftoverFrame& frame, std::string& jpeg) {
  if (frame.lostBecause != nullptr) return lost(frame.lostBecause);
  if (frame.size > kMaxFrameSize) return lost("too large for a picture");
  const std::string problem =
      rescue.file.tryRead({frame.offset, rescue.file.sizeWithin(frame.offset, frame.size)}, jpeg);
  if (rescue.keepDamaged) {
    if (problem.empty()) return {};
    jpeg = rescue.file.read(frame.offset, frame.size);
    return {false, "kept with zeros in it: " + problem};
  }
  if (!problem.empty()) return lost(problem + " (--keep-damaged keeps what can be read)");
  if (frame.isCut || endsInZeros(jpeg)) {
    return lost("the picture is cut short (--keep-damaged keeps it)");
  }
  if (hasHole(jpeg, frame.offset)) return lost("the picture has a hole (--keep-damaged keeps it)");
  return {};
}

class RescuedFrames final : public FrameSource {
 public:
  RescuedFrames(const Rescue& rescue, Job& job) : rescue_(rescue), news_(rescue.file.path(), job) {}

  std::size_t count() const override { return rescue_.leftover.frames.size(); }

  bool read(std::size_t at, NewFrame& frame) override {
    const LeftoverFrame& found = rescue_.leftover.frames[at];
    passMissing(found.number);
    const Verdict verdict = take(rescue_, found, frame.jpeg);
    if (!verdict.words.empty()) news_.add(found.number, found.number, verdict.words);
    if (verdict.isLost) return false;
    if (found.caveat != nullptr) news_.add(found.number, found.number, found.caveat);
    frame.times = found.times.value_or(FrameTimes());
    if (!rescue_.leftover.tags.empty()) frame.tag = rescue_.leftover.tags[at];
    if (isMisread(frame.tag.timeFlag.value_or(0))) {
      news_.add(found.number, found.number, std::string("recovered with ") + kMisreadTime);
    }
    return true;
  }

  void finish(std::size_t done) override {
    if (done == count()) passMissing(rescue_.leftover.framesCount);
    news_.finish();
  }

 private:
  void passMissing(std::uint64_t next) {
    if (next > number_) {
      news_.add(number_, next - 1, "lost: neither its record nor its picture is left");
    }
    number_ = next + 1;
  }

  const Rescue& rescue_;
  FrameNews news_;
  std::uint64_t number_ = 0;  // that is next in the recording
};

}  // namespace

std::optional<detail::JpegSize> firstSize(const Rescue& rescue) {
  const JpegInspector inspector;
  std::string jpeg;
  for (const LeftoverFrame& frame : rescue.leftover.frames) {
    if (take(rescue, frame, jpeg).isLost) continue;
    if (const auto size = inspector.size(jpeg)) return size;
  }
  return std::nullopt;
}

unsigned int recoverFrames(const Rescue& rescue, const std::string& output,
                           const RecordingDescription& description, Job& job) {
  const std::string path = recoveringPath(output);
  RescuedFrames frames(rescue, job);
  const unsigned int kept =
      recordFrames(frames, {path, description, rescue.leftover.framesMax, 0, output}, job);
  if (detail::renameFile(path, output)) return kept;
  const int cause = errno;
  ::unlink(path.c_str());
  throw Failure::ofSystem(output, "cannot give it its name", cause);
}

std::string recoveringPath(const std::string& output) {
  const std::size_t extension = output.rfind('.');
  return output.substr(0, extension) + ".recovering" + output.substr(extension);
}

}  // namespace velmar::toolkit
