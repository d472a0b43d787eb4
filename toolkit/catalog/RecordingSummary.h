#ifndef VELMAR_TOOLKIT_RECORDING_SUMMARY_H
#define VELMAR_TOOLKIT_RECORDING_SUMMARY_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/recording/Recording.h"
#include "toolkit/tables/ValueRange.h"

namespace velmar::toolkit {

/// Least and greatest of what some neighbouring frames have.
struct Stretch {
  unsigned int first = 0;
  unsigned int behind = 0;  ///< the last
  /// Degrees from the first frame's direction to the last one's, as it turned between them.
  double headingChange = 0;
  std::vector<double> least;     ///< of ownFacts(); kAbsent if no frame has it
  std::vector<double> greatest;  ///< the same
  std::uint64_t lacking = 0;     ///< a bit for each fact that not all frames have
  std::optional<PlaceBox> place;
};

/// By which a file is found to be another one than before.
struct FileState {
  std::int64_t bytes = 0;
  std::int64_t mtime = 0;  ///< nanoseconds since 1970
  std::int64_t inode = 0;

  bool operator==(const FileState&) const = default;
};

/// Nothing if there is no file. Throws Failure if that cannot be told.
std::optional<FileState> fileStateOf(const std::string& path);

/// What a catalogue knows of a recording.
struct RecordingSummary {
  std::string file;  ///< absolute
  FileState state;
  std::string problem;  ///< why it could not be read; all below is empty then
  std::string container;
  std::string version;
  std::string deviceId;
  unsigned int frames = 0;
  std::uint64_t start = 0;  ///< capture of the first frame, microseconds
  std::uint64_t end = 0;    ///< of the last one
  std::uint64_t duration = 0;
  std::string info;                     ///< JSON
  std::optional<std::string> findings;  ///< JSON
  std::optional<Stretch> span;          ///< all frames
  std::vector<Stretch> stretches;       ///< about a second each
};

/// Reads what it says of itself and of its frames. Throws Failure.
RecordingSummary summaryOf(const Recording& recording);

}  // namespace velmar::toolkit

#endif
