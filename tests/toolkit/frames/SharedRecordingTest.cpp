#include "toolkit/frames/SharedRecording.h"

#include <gtest/gtest.h>

#include <atomic>
#include <numeric>
#include <thread>

#include "support/Pictures.h"
#include "toolkit/TestJob.h"

using namespace velmar::toolkit;

namespace {

constexpr unsigned int kFrames = 12;

TEST(SharedRecording, ThreadsGetTheFramesThatOneWouldGet) {
  const TempFolder folder;
  std::vector<std::string> jpegs;
  for (unsigned int i = 0; i < kFrames; ++i) jpegs.push_back(numberedJpeg(i, i % 3 * 200));
  jpegs[5] = "no picture";
  recordFrames(folder / "a.img", jpegs);
  SharedRecording recording(folder / "a.img");
  const PixelForm forms[] = {{}, {VELMAR_FORMAT_GRAY_E, SCALE_FACTOR_1_2_E}};
  std::vector<unsigned int> all(kFrames);
  std::iota(all.begin(), all.end(), 0U);
  std::vector<std::uint8_t> expected[2];
  for (int form : {0, 1}) {
    expected[form].resize(kFrames * recording.geometry(forms[form]).size());
    const auto flaws =
        decodeMany(recording, all, forms[form], 1, OnFlaw::Continue, expected[form].data(), [] {});
    ASSERT_EQ(flaws.size(), 1U);
    EXPECT_EQ(flaws[0].first, 5U);
  }

  std::atomic<int> wrong = 0;
  const auto read = [&](unsigned int seed) {
    for (unsigned int step = 0; step < 60; ++step) {
      const unsigned int frame = (seed * 7 + step * 5) % kFrames;
      const int form = static_cast<int>(seed + step) % 2;
      const std::size_t size = recording.geometry(forms[form]).size();
      std::vector<std::uint8_t> pixels(kFrames * size);
      if (step % 10 == 0) {
        decodeMany(recording, all, forms[form], 3, OnFlaw::Continue, pixels.data(), [] {});
        wrong += pixels != expected[form];
      } else if (!recording.decode(frame, forms[form], pixels.data())) {
        wrong += !std::equal(&pixels[0], &pixels[size], &expected[form][frame * size]);
        wrong += recording.jpeg(frame) != jpegs[frame];
      } else {
        wrong += frame != 5;
      }
    }
  };
  {
    std::vector<std::jthread> threads;
    for (unsigned int i = 0; i < 8; ++i) threads.emplace_back(read, i);
  }
  EXPECT_EQ(wrong, 0);
}

TEST(SharedRecording, SaysWhichFrameIsMissing) {
  const TempFolder folder;
  recordFrames(folder / "a.rtv", std::vector<std::string>(30, "no picture"));
  SharedRecording recording(folder / "a.rtv");
  std::vector<std::uint8_t> pixels(2 * recording.geometry({}).size(), 7);
  const auto flaws = decodeMany(recording, {4, 3}, {}, 1, OnFlaw::Stop, pixels.data(), [] {});
  ASSERT_EQ(flaws.size(), 1U);
  EXPECT_EQ(flaws[0].first, 0U);
  EXPECT_TRUE(std::all_of(pixels.begin(), pixels.begin() + pixels.size() / 2,
                          [](std::uint8_t value) { return value == 0; }));
}

}  // namespace
