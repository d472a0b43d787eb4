#ifndef VELMAR_TOOLKIT_CATALOG_WRITER_H
#define VELMAR_TOOLKIT_CATALOG_WRITER_H

#include <optional>
#include <string>
#include <vector>

#include "toolkit/catalog/Database.h"
#include "toolkit/catalog/RecordingSummary.h"

namespace velmar::toolkit {

/// Changes recordings in a catalogue. All of it throws Failure.
class CatalogWriter {
 public:
  /// The database must outlive it.
  explicit CatalogWriter(Database& database);

  /// In one transaction.
  void write(const std::vector<RecordingSummary>& summaries);
  void markRemoved(const std::vector<std::string>& files);

 private:
  std::optional<std::int64_t> idOf(const std::string& file);
  void clear(std::int64_t recording);
  void write(const RecordingSummary& summary, const std::string& time);
  void writeStretches(std::int64_t recording, const RecordingSummary& summary);
  static void bind(Statement& statement, const Stretch& stretch);

  Database& database_;
  Statement id_;
  Statement clearPlaces_;
  Statement clearStretches_;
  Statement clearSpan_;
  Statement recording_;
  Statement span_;
  Statement stretch_;
  Statement place_;
  Statement removed_;
};

}  // namespace velmar::toolkit

#endif
