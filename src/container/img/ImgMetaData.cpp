#include "container/img/ImgMetaData.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "container/img/JsonText.h"
#include "container/img/MetaDataKeys.h"
#include "velmar_logger/velmar_logger.h"

using namespace velmar::detail;

namespace {

constexpr char kTag[] = "ImgMetaData_tag";

// Parses into a new value: a text that fails then leaves no key, and the comments of an earlier
// text do not stay.
bool embed(const std::string& text, Json::Value& root, const char* key) {
  Json::Value value;
  if (!parseJson(text, value)) {
    velmar_logger::e(kTag, "reader.parse error");
    return false;
  }
  root[key] = std::move(value);
  return true;
}

// Whether the text can certainly be read again, so that nobody has to try. Embedded texts are
// nested deeper than by themselves, perhaps too deep. They may have comments, and a comment may
// have a zero byte, where readers stop.
bool isPlain(const std::string& text) {
  constexpr std::ptrdiff_t kDeep = 500;  // half of jsoncpp's limit
  const auto opens = [](char character) { return character == '{' || character == '['; };
  return text.find('/') == text.npos && text.find('\0') == text.npos &&
         std::count_if(text.begin(), text.end(), opens) < kDeep;
}

// The members of an object; null for missing ones. (jsoncpp's own operator gives a static object
// for those, which may be destroyed already when an exit handler reads metadata.)
class Members {
 public:
  explicit Members(const Json::Value& object) : object_(object) {}

  const Json::Value& operator[](std::string_view key) const {
    const Json::Value* found = object_.find(key.data(), key.data() + key.size());
    return found != nullptr ? *found : absent_;
  }

 private:
  const Json::Value& object_;
  const Json::Value absent_;
};

}  // namespace

bool ImgMetaData::toJson(Json::Value& root) const {
  try {
    root[kCameraIdKey] = cameraId;
    root[kVersionKey] = velmarVersion2String(version);
    root[kFramesCountKey] = framesCount;
    root[kWidthKey] = static_cast<Json::Int>(width);
    root[kHeightKey] = static_cast<Json::Int>(height);
    root[kFrameFormatKey] = velmarFormat2String(format);
    root[kFrameCodecKey] = velmarCodec2String(codec);
    root[kUndistortedKey] = undistorted;
    return embed(cameraParams, root, kCameraParamsKey) &&
           embed(extendedInfo, root, kExtendedInfoKey);
  } catch (...) {
    velmar_logger::e(kTag, "build json throw error");
    return false;
  }
}

bool ImgMetaData::toText(std::string& text) const {
  Json::Value root;
  if (!toJson(root)) return false;
  text = styledText(root);
  if (isPlain(text)) return true;
  try {
    Json::Value again;
    // A comment that the writer puts in a bad place can swallow what follows it.
    if (parseJson(text.c_str(), again) &&
        styledText(withoutComments(again)) == styledText(withoutComments(root))) {
      return true;
    }
  } catch (const Json::Exception&) {
    // Treated like text that is no JSON.
  }
  velmar_logger::e(kTag, "build json throw error");
  return false;
}

bool ImgMetaData::jsonTo(const char* text) {
  try {
    Json::Value root;
    if (!parseJson(text, root)) {
      velmar_logger::e(kTag, "cMetaData = %s", text);
      return false;
    }
    // null is an object without keys.
    if (!root.isObject() && !root.isNull()) throw Json::LogicError("not an object");
    const Members members(root);
    version = string2VelmarVersion(members[kVersionKey].asString());
    cameraId = members[kCameraIdKey].asString();
    framesCount = members[kFramesCountKey].asUInt();
    width = static_cast<std::uint16_t>(members[kWidthKey].asUInt());
    height = static_cast<std::uint16_t>(members[kHeightKey].asUInt());
    format = string2RvelmarFormat(members[kFrameFormatKey].asString());
    codec = string2VelmarCodec(members[kFrameCodecKey].asString());
    undistorted = members[kUndistortedKey].asBool();
    cameraParams = styledText(members[kCameraParamsKey]);
    frameIndexDataChecksum = members[kIndexChecksumKey].asString();
    if (root.isMember(kExtendedInfoKey)) extendedInfo = styledText(members[kExtendedInfoKey]);
    return true;
  } catch (...) {
    velmar_logger::e(kTag, "readMetaData throw error");
    return false;
  }
}
