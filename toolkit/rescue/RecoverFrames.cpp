#include "toolkit/rescue/RecoverFrames.h"

#include <unistd.h>

#include <cerrno>

#include "base/PublishFile.h"
#include "toolkit/base/Failure.h"
#include "toolkit/jpeg/FrameInput.h"

namespace {

/// What was not on the disk when the power failed is zeros now, as is a sector that was lost. Other
/// pictures without an end marker were recorded like that.
bool endsInZeros(const std::string& jpeg) { return jpeg.ends_with('\0') && !isWholeJpeg(jpeg); }

}  // namespace

LeftoverFrames::LeftoverFrames(const FileBytes& file, const Leftover& leftover, bool keepDamaged,
                               Job& job)
    : file_(file), leftover_(leftover), keepDamaged_(keepDamaged), news_(file.path(), job) {}

std::optional<JpegSize> LeftoverFrames::firstSize() const {
  std::string jpeg;
  for (std::size_t i = 0; i < count(); ++i) {
    if (!take(i, jpeg).empty()) continue;
    if (const auto size = inspector_.size(jpeg)) return size;
  }
  return std::nullopt;
}

bool LeftoverFrames::read(std::size_t at, NewFrame& frame) {
  const LeftoverFrame& found = leftover_.frames[at];
  passMissing(found.number);
  const std::string flaw = take(at, frame.jpeg);
  if (!flaw.empty()) {
    news_.add(found.number, found.number, "lost: " + flaw);
    return false;
  }
  frame.times = found.times.value_or(FrameTimes());
  if (!leftover_.tags.empty()) frame.tag = leftover_.tags[at];
  return true;
}

void LeftoverFrames::finish(std::size_t done) {
  if (done == count()) passMissing(leftover_.framesCount);
  news_.finish();
}

/// Why the frame is lost; empty if `jpeg` holds it.
std::string LeftoverFrames::take(std::size_t at, std::string& jpeg) const {
  const LeftoverFrame& frame = leftover_.frames[at];
  if (frame.flaw != nullptr) return frame.flaw;
  if (frame.size > kMaxFrameSize) return "too large for a picture";
  jpeg = file_.read(frame.offset, frame.size);
  if (keepDamaged_) return "";
  if (frame.isCut || endsInZeros(jpeg)) {
    return "the picture is cut short (--keep-damaged keeps such)";
  }
  if (hasHole(jpeg)) return "the picture has a hole (--keep-damaged keeps such)";
  return "";
}

/// Zeros inside, which a picture of one colour may have as well.
bool LeftoverFrames::hasHole(const std::string& jpeg) const {
  constexpr std::size_t kSector = 512;
  const std::size_t end = jpeg.rfind("\xFF\xD9");
  return end != jpeg.npos && jpeg.find(std::string(kSector, '\0')) < end &&
         !inspector_.decodingProblem(jpeg).text.empty();
}

void LeftoverFrames::passMissing(std::uint64_t next) {
  if (next > number_) {
    news_.add(number_, next - 1, "lost: neither its record nor its picture is left");
  }
  number_ = next + 1;
}

std::string recoveringPath(const std::string& output) {
  const std::size_t extension = output.rfind('.');
  return output.substr(0, extension) + ".recovering" + output.substr(extension);
}

unsigned int recoverFrames(LeftoverFrames& frames, const std::string& output,
                           const RecordingDescription& description, unsigned int framesMax,
                           Job& job) {
  const std::string path = recoveringPath(output);
  const unsigned int kept = recordFrames(frames, {path, description, framesMax, 0, output}, job);
  if (renameFile(path, output)) return kept;
  const int cause = errno;
  ::unlink(path.c_str());
  throw Failure::ofSystem(output, "cannot give it its name", cause);
}
