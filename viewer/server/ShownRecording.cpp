#include "server/ShownRecording.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <numeric>
#include <utility>

#include "server/TemporaryFolder.h"
#include "toolkit/base/Failure.h"
#include "toolkit/copying/CopyFrames.h"
#include "toolkit/pictures/FilmStrip.h"
#include "toolkit/rescue/FindingsJson.h"
#include "toolkit/rescue/Verification.h"
#include "toolkit/tables/ColumnarJson.h"
#include "toolkit/tables/FrameLine.h"
#include "toolkit/tables/RecordingInfo.h"
#include "toolkit/text/JsonText.h"

namespace velmar::viewer {

namespace {

using toolkit::Failure;

constexpr char kJson[] = "application/json";

// Copies frames for a page, to which nothing can be told beside the recording: a loss is a failure.
class SceneJob final : public toolkit::Job {
 public:
  SceneJob(const std::string& path, const std::atomic<bool>& isStopped)
      : path_(path), isStopped_(isStopped) {}

  std::unique_ptr<Stage> begin(const std::string& /*name*/, std::size_t /*total*/) override {
    return std::make_unique<SceneStage>(isStopped_);
  }
  void lose(const std::string& /*what*/, const std::string& words) override {
    throw Failure(path_, words + "; the command cut leaves that out",
                  VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }
  void loseRest(const std::string& what, std::size_t /*done*/, std::size_t /*wanted*/) override {
    lose(what, "the server was stopped");
  }
  void note(const std::string& /*what*/, const std::string& /*words*/) override {}

 private:
  class SceneStage final : public Stage {
   public:
    explicit SceneStage(const std::atomic<bool>& isStopped) : isStopped_(isStopped) {}

    void advance(std::size_t /*done*/) override {}
    bool stopRequested() override { return isStopped_; }
    bool waitReadable(int /*fd*/) override { return !isStopped_; }

   private:
    const std::atomic<bool>& isStopped_;
  };

  const std::string& path_;
  const std::atomic<bool>& isStopped_;
};

// A file that has no name any more, and goes when it has been sent.
struct SentFile {
  explicit SentFile(const std::string& path) : bytes(path) {}

  toolkit::FileBytes bytes;
  detail::MemoryMap map;
};

}  // namespace

// The revision comes first: an edit meanwhile makes it another recording.
ShownRecording::ShownRecording(const std::string& path, const std::atomic<bool>& isStopped)
    : path_(path), isStopped_(isStopped), revision_(revisionOf(path)), recording_(path) {
  const toolkit::FileBytes& file = recording_.recording().file();
  if (!map_.map(file.descriptor(), file.size())) {
    throw Failure::ofSystem(path, "cannot map it", errno);
  }
}

Answer ShownRecording::storedFrame(unsigned int index, bool isSaved) const {
  const toolkit::FilePlace& place = recording_.place(index);
  Answer answer("image/jpeg", shared_from_this(),
                reinterpret_cast<const char*>(map_.data()) + place.offset, place.size);
  answer.etag = "\"" + revision_ + "-" + std::to_string(index) + "\"";
  if (isSaved) answer.fileName = nameOf(index, index + 1, ".jpg");
  return answer;
}

Answer ShownRecording::png(unsigned int index) {
  const toolkit::PixelForm form;
  const auto geometry = recording_.geometry(form);
  toolkit::Picture picture{static_cast<unsigned short>(geometry.width),
                           static_cast<unsigned short>(geometry.rows()), false,
                           std::vector<std::uint8_t>(geometry.size())};
  if (const auto flaw = recording_.decode(index, form, picture.pixels.data())) {
    throw toolkit::FrameFailure(path_, index, flaw);
  }
  constexpr int kQuick = 1;
  Answer answer("image/png", toolkit::encodePng(picture, kQuick));
  answer.fileName = nameOf(index, index + 1, ".png");
  return answer;
}

Answer ShownRecording::strip(const std::vector<unsigned int>& frames, unsigned int height) {
  constexpr int kQuality = 80;
  return {"image/jpeg",
          toolkit::encodeJpeg(toolkit::drawFilmStrip(recording_, frames, height), kQuality)};
}

// Recordings of their own: that of the frames is shared by all threads.
Answer ShownRecording::columns(const std::string& names) const {
  const toolkit::Recording recording(path_);
  if (!names.empty()) {
    return {kJson, toolkit::columnarJson(recording, toolkit::namedColumns(names))};
  }
  std::string list;
  for (const std::string& name : toolkit::columnsWithValues(recording)) {
    list += (list.empty() ? "" : ",") + toolkit::toJsonText(name);
  }
  return {kJson,
          "{\"frames\":" + std::to_string(recording.framesCount()) + ",\"names\":[" + list + "]}"};
}

Answer ShownRecording::scene(unsigned int first, unsigned int end) const {
  const toolkit::Recording recording(path_);
  const TemporaryFolder folder;
  const std::string made = folder.path() + (recording.isRtv() ? "/scene.rtv" : "/scene.img");
  SceneJob job(path_, isStopped_);
  toolkit::copyFrames({{&recording, frames(first, end)}}, made, recording.description(), job);
  const auto sent = std::make_shared<SentFile>(made);
  if (!sent->map.map(sent->bytes.descriptor(), sent->bytes.size())) {
    throw Failure::ofSystem(made, "cannot map it", errno);
  }
  Answer answer("application/octet-stream", sent, reinterpret_cast<const char*>(sent->map.data()),
                sent->bytes.size());
  answer.fileName = nameOf(first, end, recording.isRtv() ? ".rtv" : ".img");
  return answer;
}

Answer ShownRecording::table(unsigned int first, unsigned int end) const {
  const toolkit::Recording recording(path_);
  const toolkit::FrameTable columns = toolkit::columnsOf(recording);
  toolkit::FrameLine line(recording, columns);
  std::string text = toolkit::csvHeader(columns);
  for (const unsigned int index : frames(first, end)) text += line.csv(index);
  Answer answer("text/csv", std::move(text));
  answer.fileName = nameOf(first, end, ".csv");
  return answer;
}

Answer ShownRecording::verification() const {
  toolkit::FindingsJson findings;
  const unsigned int count = toolkit::verify(
      path_, false, [&](const toolkit::Finding& finding) { findings.add(finding); },
      [&](std::uint64_t) { return !isStopped_; });
  return {kJson, findings.text(path_, count)};
}

// Throws Failure unless they are frames of it.
std::vector<unsigned int> ShownRecording::frames(unsigned int first, unsigned int end) const {
  if (first >= end || end > recording_.recording().framesCount()) {
    throw Failure(path_, VELMAR_ERROR_CODE_OUT_RANGE_E);
  }
  std::vector<unsigned int> all(end - first);
  std::iota(all.begin(), all.end(), first);
  return all;
}

std::string ShownRecording::nameOf(unsigned int first, unsigned int end,
                                   const std::string& ending) const {
  std::string name = std::filesystem::path(path_).stem().string() + "-" + std::to_string(first);
  if (end - first > 1) name += "-" + std::to_string(end);
  return name + ending;
}

std::string revisionOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return "";
  const auto text = [](auto number) { return std::to_string(number); };
  return text(status.st_dev) + "-" + text(status.st_ino) + "-" + text(status.st_size) + "-" +
         text(status.st_mtim.tv_sec) + "-" + text(status.st_mtim.tv_nsec);
}

// The revision comes first here, too.
std::string listedRecording(const std::string& path) {
  const std::string name =
      "{\"name\":" + toolkit::toJsonText(std::filesystem::path(path).filename().string());
  try {
    const std::string revision = revisionOf(path);
    const std::string info = toolkit::RecordingInfo(toolkit::Recording(path)).json();
    return name + ",\"revision\":\"" + revision + "\",\"info\":" + info + "}";
  } catch (const Failure& failure) {
    return name + ",\"problem\":" + toolkit::toJsonText(failure.wordsFor(path)) + "}";
  }
}

}  // namespace velmar::viewer
