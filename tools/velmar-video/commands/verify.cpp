#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "program/InputOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/base/InOrder.h"
#include "toolkit/files/OutputFile.h"
#include "toolkit/rescue/FindingsJson.h"
#include "toolkit/rescue/Manifest.h"
#include "toolkit/rescue/Verification.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  InputOptions inputs;
  JobsOption jobs;
  bool decode = false;
  bool json = false;
  bool onlyProblems = false;
  bool strict = false;
  std::string manifestOut;
  std::string manifest;
  bool force = false;

  bool needsHashes() const { return !manifestOut.empty() || !manifest.empty(); }
};

// What is found in one file.
struct Report {
  std::string file;
  unsigned int frames = 0;
  FindingsJson findings;
  std::string text;  // lines for standard output
  std::optional<Failure> failure;
  std::optional<RecordingHashes> hashes;
  const RecordingHashes* then = nullptr;  // in the manifest
  bool isWhole = true;
};

std::string textOf(const std::string& file, const Finding& finding) {
  std::string text = printable(file) + ": " + nameOf(finding.severity) + ": ";
  if (finding.frame) {
    text += framesText(*finding.frame, finding.last()) + (finding.lastFrame ? ", the first " : " ");
  }
  if (finding.offset) text += "at byte " + std::to_string(*finding.offset) + ": ";
  return text + printable(finding.text) + "\n";
}

std::string lastLine(const Report& report, const Options& options) {
  const FindingsJson& findings = report.findings;
  if (options.json) return findings.text(report.file, report.frames) + "\n";
  return printable(report.file) + ": " + counted(report.frames, "frame") + ", " +
         counted(findings.errors(), "error") + ", " + counted(findings.warnings(), "warning") +
         "\n";
}

// What the options ask for.
void check(const std::string& file, const Options& options, const std::optional<Manifest>& manifest,
           const FindingMerger::Report& take, const VerificationProgress& progress,
           Report& report) {
  if (manifest) report.then = manifest->find(file);
  report.frames = verify(file, options.decode, take, progress);
  const bool opens = report.frames > 0 || report.findings.errors() == 0;
  if (!options.needsHashes() || !opens || !report.isWhole) return;
  try {
    report.hashes = hashRecording(file, progress);
  } catch (const Failure& failure) {
    return take({Finding::Severity::Error, {}, {}, "has no hashes: " + failure.wordsFor(file)});
  }
  if (!manifest || !report.isWhole) return;
  if (report.then != nullptr) {
    compareHashes(*report.then, *report.hashes, take);
  } else {
    take({Finding::Severity::Warning, {}, {}, "it is not in the manifest"});
  }
}

Report verifyFile(const std::string& file, const Options& options,
                  const std::optional<Manifest>& manifest, const VerificationProgress& progress) {
  Report report;
  report.file = file;
  const auto take = [&](const Finding& finding) {
    report.findings.add(finding);
    if (!options.json) report.text += textOf(file, finding);
  };
  try {
    const auto goOn = [&](std::uint64_t bytes) { return report.isWhole = progress(bytes); };
    check(file, options, manifest, take, goOn, report);
  } catch (const Failure& failure) {
    report.failure = failure;
    if (!options.json) return report;
    take({Finding::Severity::Error, {}, {}, failure.wordsFor(file)});
  }
  const bool isShown =
      report.findings.errors() + report.findings.warnings() > 0 || !options.onlyProblems;
  if (isShown) report.text += lastLine(report, options);
  return report;
}

// How many files are what.
struct Summary {
  std::size_t files = 0;
  std::size_t bad = 0;
  std::size_t withWarnings = 0;

  void add(const Report& report) {
    ++files;
    if (report.findings.errors() > 0 || report.failure) {
      ++bad;
    } else if (report.findings.warnings() > 0) {
      ++withWarnings;
    }
  }
  std::string text(bool json) const {
    if (json) {
      return "{\"files\":" + std::to_string(files) + ",\"bad\":" + std::to_string(bad) +
             ",\"with_warnings\":" + std::to_string(withWarnings) + "}\n";
    }
    return counted(files, "file") + ", " + std::to_string(bad) + " bad, " +
           std::to_string(withWarnings) + " with warnings\n";
  }
};

// Shows how much is done, and asks whether to stop.
class Progress {
 public:
  // The files are read so many times.
  Progress(const std::vector<std::string>& files, std::uint64_t times, CommandJob& job)
      : stage_(job.beginBytes(counted(files.size(), "file"), times * sizeOf(files))) {}

  // In any thread; false to stop.
  bool add(std::uint64_t bytes) {
    done_ += bytes;
    return !isStopped_;
  }
  // In the thread of the job.
  bool show() {
    stage_->advance(done_);
    isStopped_ = isStopped_ || stage_->stopRequested();
    return !isStopped_;
  }

 private:
  static std::uint64_t sizeOf(const std::vector<std::string>& files) {
    std::uint64_t size = 0;
    for (const std::string& file : files) {
      std::error_code error;
      const auto bytes = std::filesystem::file_size(file, error);
      if (!error) size += bytes;
    }
    return size;
  }

  const std::unique_ptr<Job::Stage> stage_;
  std::atomic<std::uint64_t> done_ = 0;
  std::atomic<bool> isStopped_ = false;
};

// Of all files.
struct Results {
  Summary summary;
  std::string manifest;                    // to be written
  std::set<const RecordingHashes*> found;  // of the one that is read
};

Results verifyAll(const std::vector<std::string>& files, const Options& options,
                  const std::optional<Manifest>& manifest, CommandJob& job) {
  StandardOutput output;
  Results results;
  Progress progress(files, options.needsHashes() ? 2 : 1, job);
  const auto work = [&](std::size_t i) {
    return verifyFile(files[i], options, manifest,
                      [&progress](std::uint64_t bytes) { return progress.add(bytes); });
  };
  const auto take = [&](std::size_t, Report& report) {
    if (!report.isWhole) return false;
    results.summary.add(report);
    results.found.insert(report.then);
    if (report.failure) job.fail(*report.failure);
    if (report.hashes) results.manifest += report.hashes->line();
    output.write(report.text);
    output.flush();
    return true;
  };
  inOrder<Report>(files.size(), options.jobs.count(), work, take,
                  [&progress] { return progress.show(); });
  output.write(results.summary.text(options.json));
  output.flush();
  return results;
}

void tellUnchecked(const Manifest& manifest, const std::set<const RecordingHashes*>& found,
                   CommandJob& job) {
  for (const RecordingHashes& recording : manifest.recordings()) {
    if (!found.contains(&recording)) {
      job.lose(recording.file, "the manifest has it, but it was not checked");
    }
  }
}

ExitStatus verifyFiles(const Options& options, CommandJob& job) {
  const std::vector<std::string> files = options.inputs.files(job);
  std::optional<Manifest> manifest;
  if (!options.manifest.empty()) manifest.emplace(options.manifest);
  if (!options.manifestOut.empty()) checkOutput(options.manifestOut, files, options.force);
  const Results results = verifyAll(files, options, manifest, job);
  const Summary& summary = results.summary;
  if (summary.files < files.size()) {
    job.lose("verify", "stopped by a signal after " + counted(summary.files, "file") + " of " +
                           std::to_string(files.size()));
  } else if (!options.manifestOut.empty()) {
    replaceFile(options.manifestOut, results.manifest);
  }
  if (manifest) tellUnchecked(*manifest, results.found, job);
  const bool isBad = summary.bad > 0 || (options.strict && summary.withWarnings > 0);
  return isBad ? ExitStatus::Failed : job.status();
}

void addOptions(CLI::App& command, Options& options) {
  options.inputs.addTo(command, InputOptions::kWithRunning);
  command.add_flag("--decode", options.decode, "Decode every frame, too");
  command.add_flag("--only-problems", options.onlyProblems,
                   "Without a line for recordings in which nothing is found");
  command.add_flag("--strict", options.strict, "Exit status 1 also if there are only warnings");
  command.add_flag(
      "--json", options.json,
      "One JSON object for each recording, on a line of its own, and one that sums up");
  command
      .add_option("--manifest-out", options.manifestOut,
                  "A manifest to write: a hash of each frame and one of all else in a recording")
      ->type_name("FILE");
  command
      .add_option("--against", options.manifest,
                  "A manifest. Bytes that are no more as they were are errors; a copy is found by "
                  "its name and, if need be, by the folders above it")
      ->type_name("FILE");
  command.add_flag("--force", options.force, "Replace an existing manifest");
  options.jobs.addTo(command, "recordings");
}

void checkUsage(const Options& options) { options.inputs.checkUsage("verify"); }

}  // namespace

void addVerifyCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"verify", "Check recordings for damage.",
       "verify drive.img --decode\n\n"
       "Checks that every frame lies in its place, is a JPEG and has the size that the header "
       "says\nand that header and metadata make sense. Warns of times that fall, are equal, leave "
       "gaps "
       "or\ncannot be, and of headings and positions that cannot be.\n"
       "Exit status 1 if there is an error, 0 if there are only warnings."},
      {addOptions, verifyFiles, checkUsage});
}

}  // namespace velmar::tool
