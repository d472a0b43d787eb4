/// Hashes by which a copy of a recording is found to be one.
#ifndef VELMAR_TOOLKIT_MANIFEST_H
#define VELMAR_TOOLKIT_MANIFEST_H

#include <string>
#include <vector>

#include "toolkit/base/Finding.h"
#include "toolkit/rescue/Verification.h"

namespace velmar::toolkit {

/// XXH3 of all of a recording's bytes.
struct RecordingHashes {
  std::string file;
  std::vector<std::string> frames;  ///< of each as it is stored
  std::string rest;                 ///< of all bytes that belong to no frame, in order

  /// One JSON object, as a manifest has it.
  std::string line() const;
};

/// Reads the whole file. Throws Failure.
RecordingHashes hashRecording(const std::string& path, const VerificationProgress& progress);

/// What is no more as it was.
void compareHashes(const RecordingHashes& then, const RecordingHashes& now,
                   const FindingMerger::Report& report);

/// The hashes of recordings, a line each.
class Manifest {
 public:
  /// Throws Failure.
  explicit Manifest(const std::string& path);

  /// That of a recording or of the one that it was copied from: whose path has most in common with
  /// this one's end. Null if none has even the name. Throws Failure if several have as much.
  const RecordingHashes* find(const std::string& file) const;
  const std::vector<RecordingHashes>& recordings() const { return recordings_; }

 private:
  std::string path_;
  std::vector<RecordingHashes> recordings_;
};

}  // namespace velmar::toolkit

#endif
