#include "toolkit/rescue/Manifest.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "toolkit/base/ContentHash.h"
#include "toolkit/base/Failure.h"
#include "toolkit/files/InputFile.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/text/JsonText.h"

namespace velmar::toolkit {

namespace {

constexpr char kHashName[] = "xxh3_128";
constexpr std::uint64_t kPiece = 1 << 20;  // bytes to read at once

// The bytes of a file between two places.
void addBytes(const FileBytes& file, std::uint64_t begin, std::uint64_t end, Xxh3Stream& hash,
              const VerificationProgress& progress) {
  while (begin < end) {
    const std::string bytes = file.read(begin, std::min(kPiece, end - begin));
    if (bytes.empty() || !progress(bytes.size())) return;
    hash.add(bytes);
    begin += bytes.size();
  }
}

std::string hashBetween(const FileBytes& file, std::vector<FilePlace> frames,
                        const VerificationProgress& progress) {
  std::sort(frames.begin(), frames.end(),
            [](auto& one, auto& other) { return one.offset < other.offset; });
  Xxh3Stream hash;
  std::uint64_t at = 0;
  for (const FilePlace& frame : frames) {
    if (!file.contains(frame.offset, frame.size)) continue;
    addBytes(file, at, frame.offset, hash, progress);
    at = std::max(at, frame.end());
  }
  addBytes(file, at, file.size(), hash, progress);
  return hash.hash();
}

// How many of the last parts of the paths are the same.
std::ptrdiff_t sameEnd(const std::string& one, const std::string& other) {
  const std::filesystem::path left(one);
  const std::filesystem::path right(other);
  const std::vector<std::string> mine(left.begin(), left.end());
  const std::vector<std::string> theirs(right.begin(), right.end());
  return std::mismatch(mine.rbegin(), mine.rend(), theirs.rbegin(), theirs.rend()).first -
         mine.rbegin();
}

std::vector<std::string> textsOf(const Json::Value& array) {
  std::vector<std::string> texts;
  for (const Json::Value& element : array) {
    if (element.isString()) texts.push_back(element.asString());
  }
  return texts;
}

}  // namespace

std::string RecordingHashes::line() const {
  std::string text;
  for (const std::string& frame : frames) text += (text.empty() ? "\"" : ",\"") + frame + "\"";
  return "{\"file\":" + toJsonText(file) + ",\"hash\":\"" + kHashName + "\",\"frames\":[" + text +
         "],\"rest\":\"" + rest + "\"}\n";
}

RecordingHashes hashRecording(const std::string& path, const VerificationProgress& progress) {
  const Recording recording(path);
  const FileBytes& file = recording.file();
  RecordingHashes hashes{path, {}, {}};
  for (const FilePlace& place : recording.places()) {
    if (!progress(place.size)) return hashes;
    hashes.frames.push_back(contentHash(
        HashKind::Xxh3, file.read(place.offset, file.sizeWithin(place.offset, place.size))));
  }
  hashes.rest = hashBetween(file, recording.places(), progress);
  return hashes;
}

void compareHashes(const RecordingHashes& then, const RecordingHashes& now,
                   const FindingMerger::Report& report) {
  constexpr auto kError = Finding::Severity::Error;
  FindingMerger findings(report);
  const std::size_t count = std::min(then.frames.size(), now.frames.size());
  for (std::size_t i = 0; i < count; ++i) {
    if (then.frames[i] != now.frames[i])
      findings.add({kError, i, {}, "is not that of the manifest"});
  }
  findings.finish();
  if (then.frames.size() != now.frames.size()) {
    report({kError, {}, {}, "the manifest has " + std::to_string(then.frames.size()) + " frames"});
  }
  if (then.rest != now.rest) {
    report({kError, {}, {}, "what the file holds beside the frames is not that of the manifest"});
  }
}

Manifest::Manifest(const std::string& path) : path_(path) {
  std::istringstream lines(readFile(path));
  std::size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    const Json::Value entry = parseJson(line);
    if (!entry.isObject() || entry["hash"] != kHashName || !entry["file"].isString() ||
        !entry["frames"].isArray() || !entry["rest"].isString()) {
      throw Failure(path, "line " + std::to_string(number) + ": it is not of a manifest",
                    VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
    }
    recordings_.push_back(
        {entry["file"].asString(), textsOf(entry["frames"]), entry["rest"].asString()});
  }
}

const RecordingHashes* Manifest::find(const std::string& file) const {
  const RecordingHashes* best = nullptr;
  std::ptrdiff_t most = 0;
  bool isAmbiguous = false;
  for (const RecordingHashes& recording : recordings_) {
    if (recording.file == file) return &recording;
    const std::ptrdiff_t same = sameEnd(recording.file, file);
    if (same == 0 || same < most) continue;
    isAmbiguous = same == most;
    most = same;
    best = &recording;
  }
  if (isAmbiguous) {
    throw Failure(file, "several recordings of " + path_ + " could be this one",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  return best;
}

}  // namespace velmar::toolkit
