#include "toolkit/catalog/Catalog.h"

#include <set>

#include "commands/catalog/CatalogProgress.h"
#include "program/InputOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/text/NumberText.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string file;
  InputOptions inputs;
  JobsOption jobs;
  bool verify = false;
};

ExitStatus add(const Options& options, CommandJob& job) {
  Catalog catalog(options.file, Database::Access::Write);
  CatalogInputs inputs;
  std::set<std::string> folders;
  for (InputFile& file : options.inputs.find(job, isRecordingName, "recording")) {
    inputs.files.push_back(std::move(file.path));
    if (!file.folder.empty()) folders.insert(std::move(file.folder));
  }
  inputs.folders.assign(folders.begin(), folders.end());
  inputs.verify = options.verify;
  const std::string name = counted(inputs.files.size(), "recording");
  CatalogProgress progress(name, inputs.files.size(), job);
  const CatalogChanges changes = catalog.add(inputs, options.jobs.count(), progress.reporter());
  if (!changes.isWhole) job.lose(options.file, "stopped by a signal; add goes on from there");
  StandardOutput output;
  output.write(name + ": " + std::to_string(changes.added) + " added, " +
               std::to_string(changes.unchanged) + " unchanged, " +
               std::to_string(changes.unreadable) + " unreadable, " +
               std::to_string(changes.removed) + " removed\n");
  output.flush();
  return job.status();
}

void checkUsage(const Options& options) { options.inputs.checkUsage("catalog add"); }

void addOptions(CLI::App& command, Options& options) {
  command.add_option("database", options.file, "The catalogue, which is made if it is not there")
      ->required();
  options.inputs.addTo(command);
  command.add_flag("--verify", options.verify, "Also keep what verify finds in each recording");
  options.jobs.addTo(command, "recordings");
}

}  // namespace

void addCatalogAddCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"catalog add", "Read recordings that are new or have changed.",
       "catalog add fleet.db day --recursive\n\n"
       "Recordings that are gone from the given folders are marked. The command may be killed at\n"
       "any moment; run again, it goes on from there."},
      {addOptions, add, checkUsage});
}

}  // namespace velmar::tool
