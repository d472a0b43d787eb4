#include "velmar_video/VelmarVideoCommDef.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace {

// All tables are compile-time constants: valid before any constructor has run and after every
// destructor.

// Indexed by the enumeration's value; the MAX member's name is empty.
constexpr std::array<std::string_view, VELMAR_VERSION_MAX_E + 1> s_velmarVersionMap = {
    "0.1", "0.2", "0.3", "0.4", "1.0", ""};
constexpr std::array<std::string_view, VELMAR_CODEC_MAX_E + 1> s_velmarCodecMap = {"H264", "JPG",
                                                                                   ""};
constexpr std::array<std::string_view, VELMAR_FORMAT_MAX_E + 1> s_velmarFormatMap = {
    "YUV420", "RGB", "BGR", "GRAY", ""};

template <typename Enum, std::size_t N>
using Names = std::array<std::pair<std::string_view, Enum>, N>;

constexpr Names<VELMAR_FORMAT_E, VELMAR_FORMAT_MAX_E> s_mapFormat = {
    {{"YUV420", VELMAR_FORMAT_YUV420_E},
     {"RGB", VELMAR_FORMAT_RGB_E},
     {"BGR", VELMAR_FORMAT_BGR_E},
     {"GRAY", VELMAR_FORMAT_GRAY_E}}};
constexpr Names<VELMAR_VERSION_E, VELMAR_VERSION_MAX_E> s_mapVersion = {
    {{"0.1", VELMAR_VERSION_0_1_E},
     {"0.2", VELMAR_VERSION_0_2_E},
     {"0.3", VELMAR_VERSION_0_3_E},
     {"0.4", VELMAR_VERSION_0_4_E},
     {"1.0", VELMAR_VERSION_1_0_E}}};
constexpr Names<VELMAR_CODEC_E, VELMAR_CODEC_MAX_E> s_mapCodec = {
    {{"H264", VELMAR_CODEC_H264_E}, {"JPG", VELMAR_CODEC_JPG_E}}};

// A negative value becomes a huge one, which is out of range, too.
template <std::size_t N>
std::string nameOf(const std::array<std::string_view, N>& names, std::size_t value) {
  return value < N ? std::string(names[value]) : std::string();
}

template <typename Enum, std::size_t N>
Enum valueOf(const Names<Enum, N>& values, const std::string& name, Enum unknown) {
  const auto found = std::find_if(values.begin(), values.end(),
                                  [&](const auto& value) { return value.first == name; });
  return found == values.end() ? unknown : found->second;
}

}  // namespace

std::string velmarVersion2String(VELMAR_VERSION_E version) {
  return nameOf(s_velmarVersionMap, static_cast<std::size_t>(version));
}

VELMAR_VERSION_E string2VelmarVersion(std::string text) {
  return valueOf(s_mapVersion, text, VELMAR_VERSION_MAX_E);
}

std::string velmarCodec2String(VELMAR_CODEC_E codec) { return nameOf(s_velmarCodecMap, codec); }

VELMAR_CODEC_E string2VelmarCodec(std::string text) {
  return valueOf(s_mapCodec, text, VELMAR_CODEC_MAX_E);
}

std::string velmarFormat2String(VELMAR_FORMAT_E format) {
  return nameOf(s_velmarFormatMap, format);
}

VELMAR_FORMAT_E string2RvelmarFormat(std::string text) {
  return valueOf(s_mapFormat, text, VELMAR_FORMAT_MAX_E);
}
