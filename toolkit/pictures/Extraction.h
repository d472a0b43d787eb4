#ifndef VELMAR_TOOLKIT_EXTRACTION_H
#define VELMAR_TOOLKIT_EXTRACTION_H

#include <atomic>
#include <cstddef>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/frames/FrameLosses.h"
#include "toolkit/frames/PictureSource.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Where pictures go.
struct PictureFolder {
  std::string path;
  bool keepsExisting = false;  ///< pictures that are there are taken for those of an earlier run
  bool hasTable = true;        ///< frames.csv: the pictures' files beside what `frames --csv` shows
};

/// Chooses frames of a recording, in order.
using FrameChoice = std::function<std::vector<unsigned int>(const Recording&)>;

/// Writes frames of a recording as picture files into a folder, once.
class Extraction {
 public:
  /// Throws Failure if there are no such pictures of the frames.
  Extraction(const std::string& file, const FrameChoice& choose, const PictureForm& form,
             PictureFolder folder);

  /// Whether no frame is chosen; then there is nothing to run.
  bool isEmpty() const { return frames_.empty(); }
  /// The files that run() writes; those that are there are replaced or kept.
  std::vector<std::string> outputs() const;

  /// Makes the folder and writes the files, `threads` at a time. The job is told of frames that
  /// cannot be had and of the rest after the wish to stop. Throws Failure, also if no frame can be
  /// had; pictures that are whole stay.
  void run(unsigned int threads, Job& job);

 private:
  std::string pathOf(unsigned int frame) const;
  void runThreads(unsigned int count, Job::Stage& stage);
  template <typename Work>
  void guarded(Work work);
  bool extractNext(PictureSource& source);
  std::string tablePath() const;
  std::string tableHeader() const;
  std::map<std::string, std::string> rowsOfEarlierRuns() const;
  std::string table() const;

  PictureSource source_;
  PictureFolder folder_;
  std::vector<unsigned int> frames_;
  std::vector<char> repeated_;  // which of them have bytes of others
  std::vector<char> written_;   // or kept; each belongs to the thread that extracts its frame
  std::map<std::string, std::string> earlierRows_;  // of the table, by the pictures' names
  std::size_t digits_ = 0;                          // of the numbers in the names
  std::atomic<std::size_t> next_ = 0;
  std::atomic<bool> stopped_ = false;
  FrameLosses losses_;
  std::mutex failureMutex_;
  std::exception_ptr failure_;
};

}  // namespace velmar::toolkit

#endif
