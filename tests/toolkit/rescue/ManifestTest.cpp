#include "toolkit/rescue/Manifest.h"

#include <gtest/gtest.h>

#include <fstream>
#include <random>

#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/base/Failure.h"

using namespace velmar::toolkit;

namespace {

bool goOn(std::uint64_t /*bytes*/) { return true; }

std::vector<std::string> differences(const RecordingHashes& then, const std::string& path) {
  std::vector<std::string> found;
  compareHashes(then, hashRecording(path, goOn), [&](const Finding& finding) {
    found.push_back(finding.frame ? std::to_string(*finding.frame) : finding.text.substr(0, 12));
  });
  return found;
}

TEST(Manifest, FindsEveryFlippedBitAndNamesItsFrame) {
  constexpr unsigned int kFrames = 40;
  const TempFolder folder;
  std::vector<std::string> frames;
  for (unsigned int i = 0; i < kFrames; ++i) frames.push_back(numberedJpeg(i, 40 + i));
  for (const char* name : {"a.img", "a.rtv"}) {
    SCOPED_TRACE(name);
    const std::string path = folder / name;
    recordFrames(path, frames);
    const std::vector<FilePlace> places = Recording(path).places();
    writeFile(folder / "manifest", hashRecording(path, goOn).line());
    const Manifest manifest(folder / "manifest");
    const RecordingHashes& then = *manifest.find("copies/" + std::string(name));
    EXPECT_EQ(differences(then, path), std::vector<std::string>());
    const std::string whole = readFile(path);
    std::mt19937 random(1);
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    for (int i = 0; i < 250; ++i) {
      const unsigned int frame = random() % kFrames;
      const std::uint64_t at = places[frame].offset + random() % places[frame].size;
      const auto put = [&](int byte) { file.seekp(at).put(static_cast<char>(byte)).flush(); };
      put(whole[at] ^ 1 << random() % 8);
      EXPECT_EQ(differences(then, path), std::vector{std::to_string(frame)}) << at;
      put(whole[at]);
    }
    // In the time of frame 0, or of all.
    file.seekp(path.ends_with(".img") ? 15 : 30).put('!').flush();
    EXPECT_EQ(differences(then, path), std::vector<std::string>{"what the fil"});
    file.close();
    frames.resize(kFrames - 1);
    recordFrames(folder / ("short" + std::string(name)), frames);
    frames.push_back(numberedJpeg(kFrames - 1, 39 + kFrames));
    const auto shorter = differences(then, folder / ("short" + std::string(name)));
    EXPECT_EQ(shorter.at(shorter.size() - 2), "the manifest");
  }
}

TEST(Manifest, FindsCopiesByTheEndsOfTheirPaths) {
  const TempFolder folder;
  const std::string path = folder / "manifest";
  const auto of = [](const std::string& file) { return RecordingHashes{file, {}, "0"}.line(); };
  writeFile(path, of("/car/1/a.img") + of("/car/2/a.img") + of("/car/2/b.img"));
  const Manifest manifest(path);
  const auto found = [&](const std::string& file) {
    const RecordingHashes* const recording = manifest.find(file);
    return recording == nullptr ? "" : recording->file;
  };
  EXPECT_EQ(found("/car/1/a.img"), "/car/1/a.img");
  EXPECT_EQ(found("copy/2/a.img"), "/car/2/a.img");
  EXPECT_EQ(found("b.img"), "/car/2/b.img");
  EXPECT_EQ(found("c.img"), "");
  EXPECT_THROW(found("3/a.img"), Failure);
  writeFile(path, of("a.img") + "{}\n");
  EXPECT_THROW(Manifest{path}, Failure);
}

}  // namespace
