#include "server/Router.h"

#include <algorithm>
#include <new>
#include <optional>
#include <utility>

#include "server/PageFiles.h"
#include "toolkit/base/Failure.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::viewer {

namespace {

constexpr unsigned int kSmallPicturesMax = 200;
constexpr unsigned int kHeightMin = 16;
constexpr unsigned int kHeightMax = 240;

// A request that means nothing.
class BadRequest : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts(1);
  for (const char character : text) {
    if (character == separator) {
      parts.emplace_back();
    } else {
      parts.back() += character;
    }
  }
  return parts;
}

std::optional<unsigned int> numberOf(const std::string& text) {
  const auto number = toolkit::parseNumber(text);
  if (!number || *number > UINT32_MAX) return std::nullopt;
  return static_cast<unsigned int>(*number);
}

unsigned int parameterNumber(const std::string& text, const char* name) {
  if (const auto number = numberOf(text)) return *number;
  throw BadRequest(std::string(name) + " is a number");
}

std::vector<unsigned int> smallFrames(const std::string& text) {
  std::vector<unsigned int> frames;
  for (const std::string& part : split(text, ',')) {
    frames.push_back(parameterNumber(part, "each of frames"));
    if (frames.size() > kSmallPicturesMax) {
      throw BadRequest("there are more than " + std::to_string(kSmallPicturesMax) + " frames");
    }
  }
  return frames;
}

// "A:B"
std::pair<unsigned int, unsigned int> rangeOf(const std::string& text) {
  const std::vector<std::string> ends = split(text, ':');
  if (ends.size() != 2) throw BadRequest("range is A:B");
  return {parameterNumber(ends[0], "A"), parameterNumber(ends[1], "B")};
}

// 404 if there is no such frame, else that it cannot be had.
int statusOf(const toolkit::Failure& failure) {
  switch (failure.code()) {
    case VELMAR_ERROR_CODE_OUT_RANGE_E:
      return 404;
    case VELMAR_ERROR_CODE_INVALID_PARAMETER_E:
      return 400;
    default:
      return 422;
  }
}

Answer unknownPath() { return Answer::problem(404, "there is nothing at this address"); }

}  // namespace

Router::Router(RecordingShelf& shelf, std::string tiles)
    : shelf_(shelf), tiles_(std::move(tiles)) {}

Answer Router::answer(const Request& request) const {
  try {
    return answerOrThrow(request);
  } catch (const ReplacedFailure& failure) {
    return Answer::problem(410, failure.what());
  } catch (const toolkit::Failure& failure) {
    return Answer::problem(statusOf(failure), failure.what());
  } catch (const toolkit::UsageError& error) {
    return Answer::problem(400, error.what());
  } catch (const BadRequest& error) {
    return Answer::problem(400, error.what());
  } catch (const std::bad_alloc&) {
    return Answer::problem(503, "there is not enough memory");
  } catch (const std::exception& error) {
    return Answer::problem(500, error.what());
  }
}

Answer Router::answerOrThrow(const Request& request) const {
  if (const PageFile* file = pageFile(request.path.empty() ? "index.html" : request.path)) {
    return {file->type, nullptr, file->bytes.data(), file->bytes.size()};
  }
  if (request.path == "recordings") {
    const std::string tiles = tiles_.empty() ? "null" : toolkit::toJsonText(tiles_);
    return {"application/json", "{\"tiles\":" + tiles + ",\"recordings\":[" + shelf_.list() + "]}"};
  }
  const std::vector<std::string> parts = split(request.path, '/');
  const auto number = numberOf(parts.front());
  if (!number || *number >= shelf_.size() || parts.size() < 2) return unknownPath();
  return ofRecording(*number, parts, request);
}

Answer Router::ofRecording(std::size_t number, const std::vector<std::string>& parts,
                           const Request& request) const {
  const std::string& what = parts[1];
  const auto recording = [&] { return shelf_.get(number, request.parameter("revision")); };
  if (parts.size() == 3 && what == "frames") {
    const std::string& name = parts[2];
    const std::string stem = name.substr(0, name.size() - std::min<std::size_t>(name.size(), 4));
    const auto index = numberOf(stem);
    const bool isSaved = !request.parameter("save").empty();
    if (index && name.ends_with(".jpg")) return recording()->storedFrame(*index, isSaved);
    if (index && name.ends_with(".png")) return recording()->png(*index);
    return unknownPath();
  }
  if (parts.size() != 2) return unknownPath();
  if (what == "columns") return recording()->columns(request.parameter("names"));
  if (what == "small") {
    const unsigned int height = parameterNumber(request.parameter("height"), "height");
    return recording()->strip(smallFrames(request.parameter("frames")),
                              std::clamp(height, kHeightMin, kHeightMax));
  }
  if (what == "table") {
    const auto [first, end] = rangeOf(request.parameter("range"));
    return recording()->table(first, end);
  }
  if (what != "verify" && what != "scene") return unknownPath();
  const std::unique_lock lock(longWork_, std::try_to_lock);
  if (!lock.owns_lock()) return Answer::problem(503, "another scene or check is not done yet");
  if (what == "verify") return recording()->verification();
  const auto [first, end] = rangeOf(request.parameter("range"));
  return recording()->scene(first, end);
}

}  // namespace velmar::viewer
