#include <unistd.h>

#include "program/FollowOption.h"
#include "program/InputOptions.h"
#include "program/SelectionOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/frames/FollowedFrames.h"
#include "toolkit/frames/FrameLosses.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  InputOptions inputs;
  FrameSelection selection;
  bool follow = false;
};

void writeFrames(const Recording& recording, const std::vector<unsigned int>& selected, Job& job) {
  StandardOutput output;
  StoredFrames frames(recording);
  FrameLosses losses;
  std::string frame;
  for (const unsigned int index : selected) {
    if (const FrameFlaw flaw = frames.read(index, frame)) {
      losses.add(index, flaw);
    } else {
      output.write(frame);
    }
  }
  output.flush();
  losses.report(recording.path(), selected.size(), job);
}

void follow(const std::string& file, const FrameSelection& selection, Job& job) {
  FollowedFrames followed(file, selection, false, job);
  StoredFrames frames(followed.recording());
  FrameNews news(file, job);
  std::string frame;
  for (auto selected = followed.next(); !selected.empty(); selected = followed.next()) {
    StandardOutput output;
    for (const unsigned int index : selected) {
      if (const FrameFlaw flaw = frames.read(index, frame)) {
        news.add(index, index, "skipped: " + flaw.text());
      } else {
        output.write(frame);
      }
    }
    output.flush();
  }
  news.finish();
}

ExitStatus cat(const Options& options, CommandJob& job) {
  if (isatty(STDOUT_FILENO) != 0) {
    throw UsageError("cat: standard output is a terminal; send it to a file or to a program");
  }
  const std::vector<std::string> files = options.inputs.files(job);
  for (const std::string& file : files) checkStandardOutput(file);
  if (options.follow) {
    follow(files.at(0), options.selection, job);
    return job.status();
  }
  SelectedFrames selected(options.selection, files.size());
  // One at a time: their frames would not fit into memory.
  for (const std::string& file : files) {
    try {
      const Recording recording = openRecording(file, job, Accept::Running);
      const auto frames = selected.of(recording);
      if (!frames.empty()) writeFrames(recording, frames, job);
    } catch (const OutputFailure&) {
      throw;
    } catch (const Failure& failure) {
      job.fail(failure);
    }
  }
  selected.check(job);
  return job.status();
}

void checkUsage(const Options& options) {
  options.inputs.checkUsage("cat");
  if (options.follow) checkFollowsOne("cat", options.inputs);
}

void addOptions(CLI::App& command, Options& options) {
  options.inputs.addTo(command, InputOptions::kWithRunning);
  addRecordingSelectionOptions(command, options.selection);
  addFollowOption(command, options.follow);
}

}  // namespace

void addCatCommand(Tool& tool) {
  tool.addCommand<Options>({"cat", "Write the stored JPEGs one after another to standard output.",
                            "cat drive.img --range 10:11 >frame.jpg\n"
                            "  velmar-video cat drive.img | ffmpeg -f mjpeg -i - preview.mp4"},
                           {addOptions, cat, checkUsage});
}

}  // namespace velmar::tool
