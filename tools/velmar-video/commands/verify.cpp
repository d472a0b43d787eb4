#include <optional>
#include <vector>

#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/rescue/Verification.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/PrintableText.h"

namespace velmar::tool {

namespace {

struct Options {
  std::vector<std::string> files;
  bool decode = false;
  bool json = false;
};

// What is found in one file.
struct Report {
  unsigned int frames = 0;
  std::uint64_t errors = 0;
  std::uint64_t warnings = 0;
};

const char* nameOf(Finding::Severity severity) {
  return severity == Finding::Severity::Error ? "error" : "warning";
}

std::string textOf(const std::string& file, const Finding& finding) {
  std::string text = printable(file) + ": " + nameOf(finding.severity) + ": ";
  if (finding.lastFrame) {
    text += "frames " + std::to_string(*finding.frame) + " to " +
            std::to_string(*finding.lastFrame) + ", the first ";
  } else if (finding.frame) {
    text += "frame " + std::to_string(*finding.frame) + " ";
  }
  if (finding.offset) text += "at byte " + std::to_string(*finding.offset) + ": ";
  return text + printable(finding.text) + "\n";
}

std::string jsonOf(const Finding& finding) {
  std::string text = std::string("{\"severity\":\"") + nameOf(finding.severity) + "\"";
  if (finding.frame) text += ",\"frame\":" + std::to_string(*finding.frame);
  if (finding.lastFrame) text += ",\"last_frame\":" + std::to_string(*finding.lastFrame);
  if (finding.offset) text += ",\"offset\":" + std::to_string(*finding.offset);
  return text + ",\"text\":" + toJsonText(finding.text) + "}";
}

std::string counted(std::uint64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// Text is shown as it comes, JSON as a whole, even if a failure is the last that is found.
Report verifyFile(const std::string& file, const Options& options, StandardOutput& output) {
  Report report;
  std::string json;
  const auto take = [&](const Finding& finding) {
    (finding.severity == Finding::Severity::Error ? report.errors : report.warnings) +=
        finding.count();
    if (!options.json) return output.write(textOf(file, finding));
    if (!json.empty()) json += ',';
    json += jsonOf(finding);
  };
  std::optional<Failure> failure;
  try {
    report.frames = verify(file, options.decode, take);
  } catch (const Failure& caught) {
    if (!options.json) throw;
    failure = caught;
    take({Finding::Severity::Error, {}, {}, caught.wordsFor(file)});
  }
  if (options.json) {
    output.write("{\"file\":" + toJsonText(file) + ",\"frames\":" + std::to_string(report.frames) +
                 ",\"errors\":" + std::to_string(report.errors) + ",\"warnings\":" +
                 std::to_string(report.warnings) + ",\"findings\":[" + json + "]}\n");
  } else {
    output.write(printable(file) + ": " + counted(report.frames, "frame") + ", " +
                 counted(report.errors, "error") + ", " + counted(report.warnings, "warning") +
                 "\n");
  }
  output.flush();
  if (failure) throw Failure(*failure);
  return report;
}

ExitStatus verifyFiles(const Options& options, CommandJob& job) {
  StandardOutput output;
  std::size_t bad = 0;
  for (const std::string& file : options.files) {
    try {
      if (verifyFile(file, options, output).errors > 0) ++bad;
    } catch (const Failure& failure) {
      job.fail(failure);
      ++bad;
    }
  }
  if (!options.json) {
    output.write(counted(options.files.size(), "file") + " checked, " + std::to_string(bad) +
                 " with errors\n");
    output.flush();
  }
  return bad > 0 ? ExitStatus::Failed : ExitStatus::Done;
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("file", options.files, "The recordings")->required();
  command.add_flag("--decode", options.decode, "Decode every frame, too");
  command.add_flag("--json", options.json,
                   "One JSON object for each recording, on a line of its own");
}

}  // namespace

void addVerifyCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"verify", "Check recordings for damage.",
       "verify drive.img --decode\n\n"
       "Checks that every frame lies in its place, is a JPEG and has the size that the header "
       "says,\nthat times do not run backwards and that header and metadata make sense.\n"
       "Exit status 1 if there is an error, 0 if there are only warnings."},
      {addOptions, verifyFiles});
}

}  // namespace velmar::tool
