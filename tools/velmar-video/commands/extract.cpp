#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "program/OutputGuard.h"
#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/base/Diagnostics.h"
#include "toolkit/base/Losses.h"
#include "toolkit/base/OutputFile.h"
#include "toolkit/base/Progress.h"
#include "toolkit/base/StopSignal.h"
#include "toolkit/jpeg/Picture.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/recording/StoredFrame.h"

namespace {

namespace fs = std::filesystem;

const std::map<std::string, SCALE_FACTOR_E> kScales = {
    {"1/1", SCALE_FACTOR_1_1_E}, {"7/8", SCALE_FACTOR_7_8_E}, {"3/4", SCALE_FACTOR_3_4_E},
    {"5/8", SCALE_FACTOR_5_8_E}, {"1/2", SCALE_FACTOR_1_2_E}, {"3/8", SCALE_FACTOR_3_8_E},
    {"1/4", SCALE_FACTOR_1_4_E}, {"1/8", SCALE_FACTOR_1_8_E}};

const std::map<std::string, VELMAR_FORMAT_E> kFormats = {
    {"rgb", VELMAR_FORMAT_RGB_E}, {"bgr", VELMAR_FORMAT_BGR_E}, {"gray", VELMAR_FORMAT_GRAY_E}};

struct Options {
  std::string file;
  std::string folder;
  FrameSelection selection;
  std::string kind = "jpg";
  std::string format = "rgb";
  std::string scale = "1/1";
  unsigned short cropTop = 0;
  unsigned short cropBottom = 0;
  unsigned int jobs = 1;
  bool force = false;
  bool quiet = false;

  bool decodes() const { return kind != "jpg"; }
  std::string extension() const { return kind == "ppm" && format == "gray" ? "pgm" : kind; }
};

/// A folder with the folders above it, as far as they were missing.
class OutputFolder {
 public:
  explicit OutputFolder(const fs::path& path) {
    for (fs::path missing = path; !missing.empty() && !fs::exists(missing);
         missing = missing.parent_path()) {
      created_.push_back(missing);
    }
    std::error_code error;
    fs::create_directories(path, error);
    if (error) {
      remove();
      throw Failure::ofSystem(path, "cannot create the folder", error.value());
    }
  }

  /// Takes away what was created, as far as it is empty.
  void remove() const {
    for (const fs::path& folder : created_) ::rmdir(folder.c_str());
  }

 private:
  std::vector<fs::path> created_;  // innermost first
};

/// Gives frames as files' contents. One for each thread.
class FrameSource {
 public:
  explicit FrameSource(const Options& options) : options_(options), recording_(options.file) {
    if (options.decodes()) preparePicture();
  }

  const Recording& recording() const { return recording_; }

  /// What is wrong with the frame; if nothing is, `bytes` has it.
  FrameFlaw read(unsigned int index, std::string& bytes) {
    if (!options_.decodes()) return readStoredFrame(recording_, index, bytes);
    // A frame that is smaller than the recording says must not show the one before.
    std::fill(picture_.pixels.begin(), picture_.pixels.end(), std::uint8_t{0});
    const VELMAR_ERROR_CODE_E code = recording_.reader().getImage(
        index, static_cast<unsigned int>(picture_.pixels.size()), picture_.pixels.data(),
        kFormats.at(options_.format), kScales.at(options_.scale), options_.cropTop,
        options_.cropBottom);
    if (code != VELMAR_ERROR_CODE_SUCCESS_E) return FrameFlaw(code);
    bytes = options_.kind == "png" ? encodePng(picture_) : encodePnm(picture_);
    return {};
  }

 private:
  void preparePicture() {
    unsigned int size = 0;
    const VELMAR_ERROR_CODE_E code = recording_.reader().getImageSizeInBytes(
        size, kFormats.at(options_.format), kScales.at(options_.scale), options_.cropTop,
        options_.cropBottom, &picture_.width, &picture_.height);
    if (code == VELMAR_ERROR_CODE_INVALID_PARAMETER_E || (code == 0 && size == 0)) {
      const bool cuts = options_.cropTop > 0 || options_.cropBottom > 0;
      throw Failure(options_.file,
                    cuts ? "cutting the rows leaves nothing of its pictures"
                         : "its header's width and height make no picture",
                    VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
    }
    if (code != VELMAR_ERROR_CODE_SUCCESS_E) throw Failure(options_.file, code);
    picture_.gray = options_.format == "gray";
    picture_.pixels.resize(size);
  }

  const Options& options_;
  Recording recording_;
  Picture picture_;
};

class Extraction {
 public:
  explicit Extraction(const Options& options)
      : options_(options),
        source_(options),
        frames_(options.selection.frames(source_.recording())),
        written_(frames_.size()) {
    // All names get the width of the recording's last one.
    const unsigned int last = source_.recording().framesCount() - 1;
    digits_ = std::max<std::size_t>(6, std::to_string(last).size());
    for (const unsigned int frame : frames_) {
      checkOutput(pathOf(frame), {options.file}, options.force);
    }
  }

  ExitStatus run() {
    const OutputFolder folder(options_.folder);
    runJobs();
    const auto count = static_cast<std::size_t>(std::count(written_.begin(), written_.end(), 1));
    if (failure_ || count == 0) {
      removeWritten();
      folder.remove();
    }
    if (failure_) std::rethrow_exception(failure_);
    const ExitStatus status = losses_.report(options_.file, frames_.size());
    if (count + losses_.count() == frames_.size()) return status;
    Losses stopped;
    stopped.addStopped(options_.file, count, frames_.size());
    return stopped.status();
  }

 private:
  std::string pathOf(unsigned int frame) const {
    std::string number = std::to_string(frame);
    number.insert(0, digits_ - number.size(), '0');
    return fs::path(options_.folder) / ("frame_" + number + "." + options_.extension());
  }

  /// The calling thread is one of them; it alone shows progress and looks for signals.
  void runJobs() {
    StopSignal stop;
    Progress progress(options_.folder, frames_.size(), options_.quiet);
    std::vector<std::jthread> threads;
    const std::size_t jobs = std::min<std::size_t>(options_.jobs, frames_.size());
    for (std::size_t i = 1; i < jobs; ++i) {
      threads.emplace_back([this] {
        guarded([this] {
          FrameSource source(options_);
          while (extractNext(source)) continue;
        });
      });
    }
    guarded([&] {
      while (!stop.requested() && extractNext(source_))
        progress.update(std::min(next_.load(), frames_.size()));
      stopped_ = true;
    });
  }

  /// A thread's work; its failure ends that of the others.
  template <typename Work>
  void guarded(Work work) {
    try {
      work();
    } catch (...) {
      const std::lock_guard lock(failureMutex_);
      if (!failure_) failure_ = std::current_exception();
      stopped_ = true;
    }
  }

  /// False if there is nothing more to do.
  bool extractNext(FrameSource& source) {
    if (stopped_) return false;
    const std::size_t at = next_++;
    if (at >= frames_.size()) return false;
    std::string bytes;
    if (const FrameFlaw flaw = source.read(frames_[at], bytes)) {
      losses_.add(frames_[at], flaw);
    } else {
      writeFile(pathOf(frames_[at]), bytes);
      written_[at] = 1;
    }
    return true;
  }

  void removeWritten() const {
    for (std::size_t i = 0; i < frames_.size(); ++i) {
      if (written_[i] != 0) ::unlink(pathOf(frames_[i]).c_str());
    }
  }

  const Options& options_;
  FrameSource source_;
  std::vector<unsigned int> frames_;
  std::vector<char> written_;  // each element belongs to the thread that extracts its frame
  std::size_t digits_ = 0;
  std::atomic<std::size_t> next_ = 0;
  std::atomic<bool> stopped_ = false;
  FrameLosses losses_;
  std::mutex failureMutex_;
  std::exception_ptr failure_;
};

template <typename Value>
std::vector<std::string> namesOf(const std::map<std::string, Value>& choices) {
  std::vector<std::string> names;
  names.reserve(choices.size());
  for (const auto& choice : choices) names.push_back(choice.first);
  return names;
}

/// The options that make no sense for stored bytes.
std::vector<CLI::Option*> addDecodingOptions(CLI::App& command, Options& options) {
  auto* format = command.add_option("--format", options.format,
                                    "Pixels of png and ppm: rgb, gray, or bgr, which stores blue "
                                    "first although the file type says red; rgb if not given");
  format->type_name("FORMAT")->check(CLI::IsMember(namesOf(kFormats)));
  auto* scale =
      command.add_option("--scale", options.scale, "Size of png and ppm, 1/1 if not given");
  scale->type_name("SCALE")->check(CLI::IsMember(namesOf(kScales)));
  auto* top = command.add_option("--crop-top", options.cropTop,
                                 "Rows to cut at the top, counted before scaling");
  auto* bottom = command.add_option("--crop-bottom", options.cropBottom,
                                    "Rows to cut at the bottom, counted before scaling");
  top->type_name("N");
  bottom->type_name("N");
  return {format, scale, top, bottom};
}

}  // namespace

void addExtractCommand(Tool& tool) {
  CLI::App* command = tool.addCommand(
      "extract", "Write frames as pictures into a folder.",
      "extract drive.img --output pictures --range 0:10 --as png --scale 1/2 --crop-top 100");
  const auto options = std::make_shared<Options>();
  command->add_option("file", options->file, "The recording")->required();
  command->add_option("--output", options->folder, "The folder, made if it is not there")
      ->required()
      ->type_name("DIR");
  command
      ->add_option("--as", options->kind,
                   "jpg: the stored bytes; png, ppm: decoded; jpg if not given")
      ->type_name("KIND")
      ->check(CLI::IsMember({"jpg", "png", "ppm"}));
  const auto decoding = addDecodingOptions(*command, *options);
  addSelectionOptions(*command, options->selection);
  command
      ->add_option("--jobs", options->jobs, "Frames to work on at a time, 1 to 256; 1 if not given")
      ->type_name("N")
      ->check(CLI::Range(1U, 256U).description(""));
  command->add_flag("--force", options->force, "Replace existing pictures");
  command->callback([&tool, options, decoding] {
    for (const CLI::Option* option : decoding) {
      if (!options->decodes() && option->count() > 0) {
        throw UsageError("extract: " + option->get_name() + " needs --as png or --as ppm");
      }
    }
    options->quiet = tool.quiet;
    tool.run = [options] { return Extraction(*options).run(); };
  });
}
