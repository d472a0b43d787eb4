// Recording while what is written does not reach the disk.
#include <gtest/gtest.h>

#include <cerrno>

#include "faults/FaultInjection.h"
#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/writing/RecordingWriter.h"

using namespace velmar::toolkit;

namespace {

void failSync() { arm(Call::SyncData, 1, Extent::Once, EIO); }
void failSecondSync() { arm(Call::SyncData, 2, Extent::Once, EIO); }
void failFolderSync() { arm(Call::SyncFolder, 1, Extent::Once, EIO); }

const struct {
  const char* what;
  const char* extension;
  unsigned int frame;  // before which it happens
  void (*happen)();
  const char* words;
} kCases[] = {
    {"the frames", "img", 3, failSync, "frames 2 to 3 "},
    {"the frames", "rtv", 3, failSync, "frames 2 to 3 "},
    {"the journal", "img", 3, failSecondSync, "frames 2 to 3 "},
    {"the folder", "img", 0, failFolderSync, "frames 0 to 1 "},
    {"the folder", "rtv", 0, failFolderSync, "frames 0 to 1 "},
    {"what was written before the first sync", "img", 1, loseWrites, "frames 0 to 1 "},
    {"what was written before the first sync", "rtv", 1, loseWrites, "frames 0 to 1 "},
};

// How the writer fails, before it has added all frames; empty if it does not.
std::string record(RecordingWriter& writer, unsigned int frame, void (*happen)()) {
  try {
    for (unsigned int i = 0; i < 5; ++i) {
      if (i == frame) happen();
      writer.add(numberedJpeg(i), {i * 1000, i * 1000});
    }
  } catch (const Failure& failure) {
    return failure.words();
  }
  return "";
}

TEST(SyncFaults, AreNeverForgiven) {
  const TempFolder folder;
  const LogCapture quiet;
  for (const auto onFailure :
       {RecordingWriter::OnFailure::KeepFrames, RecordingWriter::OnFailure::RemoveFrames}) {
    const bool keeps = onFailure == RecordingWriter::OnFailure::KeepFrames;
    unsigned int number = 0;
    for (const auto& one : kCases) {
      SCOPED_TRACE(std::string(one.what) + ", " + one.extension);
      const std::string name = std::to_string(keeps) + std::to_string(number++) + ".";
      const std::string path = folder / (name + one.extension);
      writeFile(path, "what was there before");
      {
        RecordingWriter writer(path, RecordingDescription(), 9, onFailure);
        writer.syncEvery(2);
        const std::string words = record(writer, one.frame, one.happen);
        disarm();
        EXPECT_TRUE(words.starts_with(std::string(one.words) +
                                      "may not be on the disk: Input/output error"))
            << words;
        EXPECT_EQ(words.find(".tmp; the command recover") != words.npos, keeps) << words;
        if (keeps) {
          EXPECT_THROW(writer.add("", {}), Failure);
          EXPECT_THROW(writer.finish(), Failure);
        }
      }
      EXPECT_EQ(readFile(path), "what was there before");
      EXPECT_EQ(exists(path + ".tmp"), keeps);
      if (keeps) {
        EXPECT_NE(readFile(path + ".tmp").find(numberedJpeg(one.frame)), std::string::npos);
      }
    }
  }
}

}  // namespace
