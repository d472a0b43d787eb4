#ifndef VELMAR_TOOL_CATALOG_PROGRESS_H
#define VELMAR_TOOL_CATALOG_PROGRESS_H

#include <memory>
#include <string>

#include "program/CommandJob.h"
#include "program/Toolkit.h"
#include "toolkit/catalog/Catalog.h"

namespace velmar::tool {

/// Tells the job what a catalogue has to tell, and shows how far it is.
class CatalogProgress {
 public:
  CatalogProgress(const std::string& name, std::size_t total, CommandJob& job)
      : job_(job), stage_(job.beginFiles(name, total)) {}

  CatalogReporter reporter() {
    return {[this](std::size_t done, std::size_t /*total*/) {
              stage_->advance(done);
              return !stage_->stopRequested();
            },
            [this](const Failure& failure) { job_.fail(failure); },
            [this](const std::string& file, const std::string& words) { job_.lose(file, words); },
            [this](const std::string& file, const std::string& words) { job_.note(file, words); }};
  }

 private:
  CommandJob& job_;
  std::unique_ptr<Job::Stage> stage_;
};

}  // namespace velmar::tool

#endif
