#include "container/img/ImgMetaData.h"

#include <utility>

#include "container/img/JsonText.h"
#include "velmar_logger/velmar_logger.h"

namespace {

constexpr char kTag[] = "ImgMetaData_tag";

// The value is parsed aside, so that a text that fails leaves no key, into a fresh one, since the
// comments of an earlier text would stay.
bool embed(const std::string& text, Json::Value& root, const char* key) {
  Json::Value value;
  if (!parseJson(text, value)) {
    velmar_logger::e(kTag, "reader.parse error");
    return false;
  }
  root[key] = std::move(value);
  return true;
}

}  // namespace

bool ImgMetaData::toJson(Json::Value& root) const {
  try {
    root["camera_id"] = cameraId;
    root["version"] = velmarVersion2String(version);
    root["frames_count"] = framesCount;
    root["width"] = static_cast<Json::Int>(width);
    root["height"] = static_cast<Json::Int>(height);
    root["frame_format"] = velmarFormat2String(format);
    root["frame_codec"] = velmarCodec2String(codec);
    root["undistorted"] = undistorted;
    return embed(cameraParams, root, "camera_params") && embed(extendedInfo, root, "extendedInfo");
  } catch (...) {
    velmar_logger::e(kTag, "build json throw error");
    return false;
  }
}

bool ImgMetaData::toText(std::string& text) const {
  Json::Value root;
  if (!toJson(root)) return false;
  text = styledText(root);
  // Embedded texts stand deeper here than by themselves, perhaps too deep to be read again, and
  // readers stop at a zero byte, which a comment may hold.
  try {
    Json::Value again;
    if (parseJson(text.c_str(), again)) return true;
  } catch (const Json::Exception&) {
    // As if it were no JSON.
  }
  velmar_logger::e(kTag, "build json throw error");
  return false;
}

bool ImgMetaData::jsonTo(const char* text) {
  try {
    Json::Value parsed;
    if (!parseJson(text, parsed)) {
      velmar_logger::e(kTag, "cMetaData = %s", text);
      return false;
    }
    // Reading by the const operator keeps absent keys absent. It takes null for an empty object.
    const Json::Value& root = parsed;
    if (!root.isObject()) throw Json::LogicError("not an object");
    version = string2VelmarVersion(root["version"].asString());
    cameraId = root["camera_id"].asString();
    framesCount = root["frames_count"].asUInt();
    width = static_cast<std::uint16_t>(root["width"].asUInt());
    height = static_cast<std::uint16_t>(root["height"].asUInt());
    format = string2RvelmarFormat(root["frame_format"].asString());
    codec = string2VelmarCodec(root["frame_codec"].asString());
    undistorted = root["undistorted"].asBool();
    cameraParams = styledText(root["camera_params"]);
    frameIndexDataChecksum = root["frame_index_data_checksum"].asString();
    if (root.isMember("extendedInfo")) extendedInfo = styledText(root["extendedInfo"]);
    return true;
  } catch (...) {
    velmar_logger::e(kTag, "readMetaData throw error");
    return false;
  }
}
