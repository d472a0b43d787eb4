#include "toolkit/jpeg/JpegStreamSplitter.h"

#include <gtest/gtest.h>

#include <vector>

using namespace velmar::toolkit;

namespace {

using namespace std::string_literals;

const std::string kStart = "\xFF\xD8"s;
const std::string kEnd = "\xFF\xD9"s;

std::string segment(char marker, const std::string& content) {
  const std::size_t length = content.size() + 2;
  const std::string head{'\xFF', marker, static_cast<char>(length >> 8), static_cast<char>(length)};
  return head + content;
}

// Coded data with a stuffed 0xFF and restart markers.
std::string scan(const std::string& data) {
  return segment('\xDA', "abc") + data + "\xFF\0\xFF\xD0..\xFF\xD7"s + data;
}

std::string frame(const std::string& data) {
  return kStart + segment('\xE0', "head") + segment('\xDB', "table") + scan(data) + kEnd;
}

struct Outcome {
  std::vector<std::string> frames;
  std::uint64_t skipped = 0;
  bool inside = false;

  bool operator==(const Outcome&) const = default;
};

Outcome split(const std::string& stream, std::size_t pieceSize, std::size_t maxFrameSize = 100000) {
  JpegStreamSplitter splitter(maxFrameSize);
  Outcome outcome;
  for (std::size_t at = 0; at < stream.size(); at += pieceSize) {
    splitter.feed(std::string_view(stream).substr(at, pieceSize));
    while (auto found = splitter.next()) outcome.frames.push_back(std::move(*found));
  }
  outcome.skipped = splitter.skippedBytes();
  outcome.inside = splitter.isInsideFrame();
  return outcome;
}

TEST(JpegStreamSplitter, FindsWholeFramesOnly) {
  const std::string one = frame("one");
  const std::string two = frame("two");
  const std::string thumbnail = kStart + segment('\xE1', "Exif" + one) + scan("big") + kEnd;
  const std::string progressive =
      kStart + scan("first") + segment('\xC4', "huffman") + scan("second") + kEnd;
  const std::string filled =
      kStart + "\xFF\xFF"s + segment('\xDB', "q") + scan("f") + "\xFF\xFF" + kEnd;
  const std::string cutInScan = one.substr(0, one.size() - 6);
  const std::string badLength = kStart + "\xFF\xE0\0\1bad"s;
  const std::string longSegment = kStart + "\xFF\xE0\0\x28gone"s;  // reaches over what follows

  // Starts whose segments reach over each other, to the same bytes and into the next frame.
  std::string nested;
  for (char length = 0x50; length > 0; length -= 8)
    nested += kStart + "\xFF\xDA\0"s + length + "xx";
  const std::string fill = kStart + segment('\xE0', "") + std::string(5000, '\xFF');

  const struct {
    const char* what;
    std::string stream;
    Outcome outcome;
  } cases[] = {
      {"nothing", "", {}},
      {"back to back", one + two, {{one, two}}},
      {"padding", "\0\0"s + one + "\xFF\0\xFF"s + two + "\0\xFF"s, {{one, two}}},
      {"other bytes", "abc"s + one + "--boundary\r\n"s + two + "\n", {{one, two}, 16}},
      {"a thumbnail", thumbnail + one, {{thumbnail, one}}},
      {"several scans", progressive + filled, {{progressive, filled}}},
      {"the end inside a scan", one + cutInScan, {{one}, 0, true}},
      {"the end inside a thumbnail", one + thumbnail.substr(0, 60), {{one}, 0, true}},
      {"a frame cut short", cutInScan + two, {{two}, cutInScan.size()}},
      {"a wrong length", badLength + two, {{two}, 7}},
      {"a length that reaches into the next", longSegment + one + two, {{one, two}, 9}},
      {"nested starts", nested + "..\xFF\xE0\0\1"s + one, {{one}, nested.size() + 6}},
      {"filling without end", fill + kEnd + one, {{one}, 6}},
      {"no scan", kStart + segment('\xDB', "q") + kEnd + one, {{one}, 9}},
      {"only a start", kStart, {{}, 0, true}},
      {"half a start", one + "\xFF", {{one}}},
  };
  for (const auto& [what, stream, outcome] : cases) {
    for (const std::size_t pieceSize : {1, 2, 7, 1000}) {
      SCOPED_TRACE(std::string(what) + ", pieces of " + std::to_string(pieceSize));
      EXPECT_EQ(split(stream, pieceSize), outcome);
    }
  }
}

TEST(JpegStreamSplitter, GivesUpFramesWithoutEnd) {
  const std::string endless = kStart + scan(std::string(5000, 'x'));
  const Outcome found = split(endless + frame("good"), 64, 1000);
  EXPECT_EQ(found.frames, std::vector{frame("good")});
  EXPECT_EQ(found.skipped, endless.size() - 5);  // 0x00 and 0xFF may be padding
}

TEST(JpegStreamSplitter, GivesUpFramesThatEndBeyondTheLimit) {
  const std::string smallest = kStart + segment('\xDA', "") + kEnd;
  for (const unsigned int tooMuch : {0U, 1U, 2U}) {
    const Outcome found = split(smallest, 64, smallest.size() - tooMuch);
    EXPECT_EQ(found.frames.size(), tooMuch == 0 ? 1U : 0U) << tooMuch;
  }
}

}  // namespace
