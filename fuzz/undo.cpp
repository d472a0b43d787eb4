// An undo file beside a recording. An input is the length of the recording, in 2 bytes, its bytes,
// then those of the undo file.
#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>

#include "support.h"
#include "toolkit/base/Failure.h"
#include "toolkit/files/UndoFile.h"
#include "velmar_video/VelmarVideoCommDef.h"

using namespace velmar::toolkit;

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

constexpr std::size_t kSizeAt = 12;
constexpr std::size_t kHeadEndAt = 20;
constexpr std::size_t kTailStartAt = 28;
constexpr std::size_t kSumAt = 36;
constexpr std::size_t kPartsAt = 44;
constexpr std::size_t kShortest = kPartsAt + 8;

struct Input {
  std::string recording, undo;
};

std::optional<Input> split(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return std::nullopt;
  const std::size_t length = data[0] * 256 + data[1];
  if (length > size - 2) return std::nullopt;
  const std::string rest(reinterpret_cast<const char*>(data) + 2, size - 2);
  return Input{rest.substr(0, length), rest.substr(length)};
}

std::uint64_t numberAt(const std::string& text, std::size_t at) {
  std::uint64_t number = 0;
  std::memcpy(&number, text.data() + at, sizeof number);
  return ntohll(number);
}

void putNumber(std::string& text, std::size_t at, std::uint64_t number) {
  number = htonll(number);
  std::memcpy(text.data() + at, &number, sizeof number);
}

std::uint64_t checkSum(std::string_view bytes) {
  std::uint64_t sum = 0xCBF29CE484222325;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
  return sum;
}

bool isWhole(const std::string& undo) {
  return undo.size() >= 20 && undo.starts_with("velmar.undo\1") &&
         numberAt(undo, undo.size() - 8) ==
             checkSum(std::string_view(undo).substr(0, undo.size() - 8));
}

// What the recording is when all parts that make sense are back.
std::string restored(const Input& input) {
  const std::string& undo = input.undo;
  std::string recording = input.recording;
  recording.resize(numberAt(undo, kSizeAt));
  const std::size_t end = undo.size() - 8;
  for (std::size_t at = kPartsAt; at + 16 <= end;) {
    const std::uint64_t offset = numberAt(undo, at);
    const std::uint64_t length = numberAt(undo, at + 8);
    at += 16;
    if (length > end - at || offset > recording.size() || length > recording.size() - offset) break;
    recording.replace(offset, length, undo, at, length);
    at += length;
  }
  return recording;
}

// Makes sizes, places and check sums fit each other.
void mend(Input& input) {
  std::string& undo = input.undo;
  undo.resize(std::max(undo.size(), kShortest));
  undo.replace(0, kSizeAt, "velmar.undo\1");
  const std::uint64_t most = input.recording.size() + undo.size() - kShortest;
  const std::uint64_t size = numberAt(undo, kSizeAt) % (most + 1);
  const std::uint64_t headEnd = numberAt(undo, kHeadEndAt) % (size + 1);
  putNumber(undo, kSizeAt, size);
  putNumber(undo, kHeadEndAt, headEnd);
  const std::string old = restored(input);
  const std::uint64_t tailStart = std::max(headEnd, numberAt(undo, kTailStartAt));
  putNumber(undo, kSumAt, checkSum(old.substr(0, headEnd) + old.substr(std::min(tailStart, size))));
  putNumber(undo, undo.size() - 8, checkSum(std::string_view(undo).substr(0, undo.size() - 8)));
}

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void write(const TemporaryFile& file, const std::string& bytes) {
  file.write(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

// What there was; Foreign if it was refused.
UndoState apply(const std::string& path) {
  try {
    return undoEdit(path, FileLock(path, FileLock::Kind::Edit));
  } catch (const Failure& failure) {
    consume(failure.what());
    return UndoState::Foreign;
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned int seed) {
  size = LLVMFuzzerMutate(data, size, maxSize);
  auto input = split(data, size);
  if (seed % 4 == 0 || !input) return size;
  mend(*input);
  const std::size_t newSize = std::min(maxSize, 2 + input->recording.size() + input->undo.size());
  std::memcpy(data + 2 + input->recording.size(), input->undo.data(),
              newSize - 2 - input->recording.size());
  return newSize;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TemporaryFile recording("img");
  static const TemporaryFile undo("img.undo");
  const auto input = split(data, size);
  if (!input) return 0;
  write(recording, input->recording);
  write(undo, input->undo);

  const UndoState state = undoState(recording.path());
  require(state != UndoState::None && state == apply(recording.path()));
  const std::string after = readFile(recording.path());
  if (state == UndoState::Pending) {
    require(isWhole(input->undo) && after == restored(*input));
  } else {
    require(after == input->recording);
    require(state == UndoState::Foreign || !isWhole(input->undo));
  }
  require(readFile(undo.path()) == (state == UndoState::Foreign ? input->undo : ""));
  return 0;
}
