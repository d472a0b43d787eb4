#include "toolkit/rescue/Verification.h"

#include <gtest/gtest.h>

#include <ctime>
#include <fstream>

#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/writing/RecordingWriter.h"

using namespace velmar::detail;
using namespace velmar::toolkit;

namespace {

using namespace std::string_literals;

constexpr unsigned int kFrames = 4;
constexpr std::size_t kImgIndexEnd = 8 + 28 * kFrames;

// Of version 04 unless said otherwise.
void record(const std::string& path, version_e version = RTV_VER_04) {
  std::vector<std::string> frames;
  for (unsigned int i = 0; i < kFrames; ++i) frames.push_back(numberedJpeg(i, 40 + i % 2 * 100));
  recordFrames(path, frames, {32, 16}, version, kFrames + 2);
}

RecordingDescription sized() {
  RecordingDescription description;
  description.setSize({32, 16});
  return description;
}

std::vector<std::string> findingsOf(const std::string& path) {
  std::vector<std::string> found;
  verify(path, true, [&](const Finding& finding) {
    std::string frame = finding.frame ? std::to_string(*finding.frame) + " " : "";
    if (finding.lastFrame) frame += "to " + std::to_string(*finding.lastFrame) + " ";
    found.push_back((finding.severity == Finding::Severity::Error ? "E " : "w ") + frame +
                    finding.text);
  });
  return found;
}

TEST(Verification, NamesWhatIsWrong) {
  const TempFolder folder;
  record(folder / "whole.img");
  record(folder / "whole.rtv");
  const FramePlaces img(Recording(folder / "whole.img"));
  const FramePlaces rtv(Recording(folder / "whole.rtv"));
  const std::string text = readFile(folder / "whole.img");
  const std::size_t metaData = img.room.end();
  const auto in = [&](const char* words) { return text.find(words, metaData); };
  const auto record = [](unsigned int frame, std::size_t field) { return 8 + 28 * frame + field; };
  const auto tag = [](unsigned int frame, std::size_t field) { return 72 + 145 * frame + field; };
  // Behind the index lies what is left of frame 0, then frame 1.
  const auto unclaimed = [&](std::size_t from) {
    return "w " + std::to_string(img.frames[2].offset - from) + " bytes belong to no frame";
  };

  const LogCapture quiet;
  const auto check = [&](const char* extension, std::size_t offset, const std::string& patch,
                         const std::vector<std::string>& findings) {
    const std::string path = folder / "case."s + extension;
    std::string bytes = readFile(folder / "whole."s + extension);
    writeFile(path, bytes.replace(offset, patch.size(), patch));
    EXPECT_EQ(findingsOf(path), findings) << extension << " at " << offset;
  };

  check("img", 0, "", {});
  check("rtv", 0, "", {});
  check("img", 4, "\x01",
        {"E does not open: it is cut short: it has " + std::to_string(text.size()) +
         " bytes, but its metadata were at byte " + std::to_string((1ULL << 24) + metaData) +
         " (VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E)"});
  check("img", 0, "\xFF",
        {"E does not open: it is cut short, damaged or unfinished "
         "(VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E)"});
  check("img", record(1, 24), "\x10",
        {"E 1 reaches past the end of the file", unclaimed(kImgIndexEnd)});
  check("img", record(1, 16), bigEndianBytes(40, 8),
        {"E 1 lies over the header or the index", unclaimed(40 + img.frames[1].size),
         "E 1 does not begin as a JPEG"});
  check("img", record(1, 24), bigEndianBytes(img.frames[1].size + 1, 4), {"E 2 overlaps frame 1"});
  check("img", record(2, 8), bigEndianBytes(0, 8), {"w 2 arrived before the frame before it"});
  check("img", record(2, 0), bigEndianBytes(0, 8),
        {"w 2 was captured before the year 2000", "w 2 was captured before the frame before it"});
  check("img", img.frames[3].offset, "\xFE", {"E 3 does not begin as a JPEG"});
  check("img", img.frames[3].offset + 2, "\0"s, {"E 3 has no JPEG header that can be read"});
  check("img", img.frames[3].end() - 60, std::string(30, '\xFF') + "\xD9",
        {"w 3 decodes with a warning: Corrupt JPEG data: premature end of data segment"});
  check("img", in("16"), "17", {"w 0 to 3 is 32x16, but the header says 32x17"});
  check("img", img.frames[1].offset,
        std::string(img.frames[3].offset - img.frames[1].offset - 1, '\0') + "?\xFE",
        {"E 1 to 3 does not begin as a JPEG"});
  check("img", in("frames_count"), "frames_found",
        {"E there is no frame", "w " + std::to_string(metaData - 8) + " bytes belong to no frame",
         "w metadata: \"frames_count\" is missing",
         "w metadata: \"frames_found\" is unknown, an edit would lose it"});
  check("img", in("BGR"), "BGX", {"w metadata: \"frame_format\" is \"BGX\", read as \"\""});
  check("rtv", 0, "velmar.xyz", {"w the magic code differs"});
  check(
      "rtv", 60, "\x07",
      {"E 0 lies over the header or the index", "w the tags behind the last frame's are not zero"});
  check("rtv", 66, "\x63\x63", {"w the frame format is unknown", "w the frame codec is unknown"});
  check("rtv", tag(1, 0), "\xFF\xFF\xFF\xFF",
        {"w 1 has a time before the start or more than 24 days after it, which readers misread"});
  check("rtv", tag(kFrames + 1, 3), "\x01", {"w the tags behind the last frame's are not zero"});
}

TEST(Verification, WarnsOfWhatNoDriveHas) {
  const TempFolder folder;
  constexpr std::uint64_t kStart = 1'700'000'000'000'000;
  constexpr std::uint64_t kUsual = 33'000;
  const auto future = static_cast<std::uint64_t>(std::time(nullptr) + 90'000) * 1'000'000;
  const struct {
    std::vector<std::uint64_t> times;
    std::vector<std::string> findings;
  } cases[] = {
      {{0, kUsual, 2 * kUsual, 5 * kUsual, 5 * kUsual + 1000}, {}},
      {{0, kUsual, 2 * kUsual, 5 * kUsual + 3, 6 * kUsual},
       {"w 3 was captured 0.099 s after the frame before it; 0.033 s is usual"}},
      {{0, kUsual, kUsual, kUsual, 2 * kUsual},
       {"w 2 to 3 was captured at the same time as the frame before it"}},
      {{0, kUsual, kUsual - 1, 2 * kUsual, 3 * kUsual},
       {"w 2 was captured before the frame before it"}},
      {{0, kUsual, kUsual + 999, 2 * kUsual, 3 * kUsual},
       {"w 2 was captured less than a millisecond after the frame before it"}},
      {{0, kUsual, 946'684'799'999'999 - kStart, 2 * kUsual, 3 * kUsual},
       {"w 2 was captured before the year 2000", "w 2 was captured before the frame before it",
        "w 3 was captured 753315200.066 s after the frame before it; 0.033 s is usual"}},
      {{future - kStart, future - kStart + kUsual}, {"w 0 to 1 was captured in the future"}},
  };
  for (const auto& one : cases) {
    const std::string path = folder / "a.img";
    RecordingWriter writer(path, sized(), 0, RecordingWriter::OnFailure::RemoveFrames);
    for (const std::uint64_t time : one.times) {
      writer.add(numberedJpeg(1), {kStart + time, kStart + writer.frames()});
    }
    writer.finish();
    EXPECT_EQ(findingsOf(path), one.findings);
  }
  const std::string path = folder / "a.rtv";
  RecordingDescription description = sized();
  description.startTime = kStart;
  RecordingWriter writer(path, description, 6, RecordingWriter::OnFailure::RemoveFrames);
  // Hundredths of a metre; 15 m in 0.1 s are 150 m/s, and 0, 0 is no position.
  const int x[] = {0, 99'000, 100'500, 102'001, 0, 300'000};
  for (unsigned int i = 0; i < 6; ++i) {
    FrameTag tag;
    tag.x = x[i];
    tag.direction = i < 2 ? 360 : i < 4 ? 361 : 0;
    writer.add(numberedJpeg(i), {kStart + i * 100'000, kStart + i * 100'000}, tag);
  }
  writer.finish();
  EXPECT_EQ(findingsOf(path),
            (std::vector<std::string>{"w 2 to 3 has a heading of more than 360 degrees",
                                      "w 3 lies too far from the frame before it for 150 m/s"}));
}

// What a reader answers of the pictures; empty if it does not open the recording.
std::vector<std::string> picturesIn(const std::string& path) {
  const auto reader = makeVelmarVideoFileReader(path);
  if (reader->open() != VELMAR_ERROR_CODE_SUCCESS_E) return {};
  const unsigned int count = got(*reader, &VelmarVideoFileReader::getFramesCount);
  unsigned short width = 0, height = 0;
  reader->getImageResolution(width, height);
  std::vector answers{std::to_string(count) + " " + std::to_string(width << 16 | height)};
  for (unsigned int i = 0; i < count && i < 100; ++i) {
    reader->getRawImage(i, answers.emplace_back());
  }
  return answers;
}

// Every bit of what is not a picture: no reader may answer another picture, size or number of
// pictures without a finding.
TEST(Verification, NoticesEveryFlipThatChangesAPicture) {
  const std::pair<const char*, version_e> files[] = {{"a.img", RTV_VER_MAX},
                                                     {"02.rtv", RTV_VER_02},
                                                     {"03.rtv", RTV_VER_03},
                                                     {"04.rtv", RTV_VER_04}};
  for (const auto& [name, version] : files) {
    const LogCapture quiet;
    const TempFolder folder;
    const std::string path = folder / name;
    record(path, version);
    const std::string whole = readFile(path);
    const std::vector<std::string> right = picturesIn(path);
    const FramePlaces places{Recording(path)};
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    std::size_t changed = 0;
    for (std::size_t at = 0; at < whole.size(); ++at) {
      if (at == places.room.offset) at = places.room.end();
      for (unsigned int bit = 0; bit < 8 && at < whole.size(); ++bit) {
        const auto put = [&](int byte) { file.seekp(at).put(static_cast<char>(byte)).flush(); };
        put(whole[at] ^ 1 << bit);
        const bool isChanged = picturesIn(path) != right;
        const bool isNoticed = !isChanged || !findingsOf(path).empty();
        put(whole[at]);
        changed += isChanged;
        EXPECT_TRUE(isNoticed) << name << ", bit " << bit << " of byte " << at;
      }
    }
    EXPECT_GT(changed, 0U);
  }
}

}  // namespace
