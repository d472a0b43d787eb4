#ifndef VELMAR_TOOLKIT_CATALOG_H
#define VELMAR_TOOLKIT_CATALOG_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/base/Failure.h"
#include "toolkit/catalog/Database.h"
#include "toolkit/catalog/RecordingSummary.h"
#include "toolkit/copying/Scenes.h"
#include "toolkit/frames/FrameSelection.h"

namespace velmar::toolkit {

/// Gets what long work has to tell, in the thread that asked for it.
struct CatalogReporter {
  /// Several times a second, with how many recordings are done; false stops the work.
  std::function<bool(std::size_t done, std::size_t total)> goOn;
  std::function<void(const Failure&)> fail;
  std::function<void(const std::string& file, const std::string& words)> skip;
  std::function<void(const std::string& file, const std::string& words)> note;
};

/// What to add.
struct CatalogInputs {
  std::vector<std::string> files;
  /// Where these were looked for: what the catalogue has in them and is gone is marked as removed.
  std::vector<std::string> folders;
  bool verify = false;
};

/// How many recordings are what.
struct CatalogChanges {
  std::size_t added = 0;  ///< or changed
  std::size_t unchanged = 0;
  std::size_t unreadable = 0;
  std::size_t removed = 0;
  bool isWhole = true;  ///< otherwise it was stopped
};

/// Frames that a question asks for.
struct CatalogQuestion {
  std::string where;  ///< a condition of FrameExpression; empty for all frames
  std::string time;   ///< of FrameSelection::setTime(); empty for any
  SceneForm form;     ///< how neighbouring frames become ranges
};

/// Neighbouring frames that are an answer.
struct FoundFrames {
  std::string file;  ///< absolute
  unsigned int first;
  unsigned int behind;  ///< the last
  std::uint64_t start;  ///< capture of the first, microseconds
  std::uint64_t end;    ///< of the last
  std::uint64_t bytes;  ///< of the frames as stored
};

/// What there is of one container, or of all.
struct CatalogTotals {
  std::string container;
  std::uint64_t recordings = 0;
  std::uint64_t frames = 0;
  std::uint64_t duration = 0;  ///< microseconds
  std::uint64_t bytes = 0;
};

struct CatalogInfo {
  std::vector<CatalogTotals> containers;
  CatalogTotals all;
  std::optional<std::pair<std::uint64_t, std::uint64_t>> span;  ///< first and last capture
  std::uint64_t unreadable = 0;
  std::uint64_t removed = 0;
};

/// A database of what recordings say of themselves and of each second of theirs. Several processes
/// may use one at a time; who writes waits for the others. Use an object from one thread at a time.
/// All of it throws Failure.
class Catalog {
 public:
  /// To write, it is made if it is not there.
  Catalog(const std::string& path, Database::Access access);

  /// Reads what is new or changed by size, time or inode, with so many threads, and writes it from
  /// time to time. What cannot be read is in the catalogue as that.
  CatalogChanges add(const CatalogInputs& inputs, unsigned int jobs,
                     const CatalogReporter& reporter);
  /// In the place of what is there of the same files.
  void put(const std::vector<RecordingSummary>& summaries);
  /// The same with a recording that cannot be read.
  /// \return false, without a change, if there is no such file
  bool putUnreadable(const std::string& file, const std::string& problem);
  /// The same with all of another catalogue.
  /// \return how many recordings it has
  std::size_t take(const std::string& other);

  /// Asks the stretches first, and then those recordings that may have an answer, with so many
  /// threads. Answers come in the order of files and frames. Throws UsageError.
  void find(const CatalogQuestion& question, unsigned int jobs,
            const std::function<void(const FoundFrames&)>& found, const CatalogReporter& reporter);

  CatalogInfo info();
  /// For questions in SQL.
  Database& database() { return database_; }

 private:
  Database database_;
};

}  // namespace velmar::toolkit

#endif
