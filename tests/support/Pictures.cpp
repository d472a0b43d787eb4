#include "support/Pictures.h"

#include <turbojpeg.h>

#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include "scene/SampleScene.h"

namespace {

// The segments between the start of a JPEG and its scan, with their markers.
std::vector<std::string> headerOf(const std::string& jpeg) {
  std::vector<std::string> segments;
  for (std::size_t at = 2; jpeg[at + 1] != '\xDA';) {
    const std::size_t length = static_cast<unsigned char>(jpeg[at + 2]) * 256 +
                               static_cast<unsigned char>(jpeg[at + 3]) + 2;
    segments.push_back(jpeg.substr(at, length));
    at += length;
  }
  return segments;
}

bool isOneOf(const std::string& segment, std::string_view markers) {
  return markers.find(segment[1]) != markers.npos;
}

constexpr std::string_view kHuffmanTables = "\xC4";
constexpr std::string_view kTables = "\xC4\xCC\xDB";
constexpr std::string_view kFrameHeaders = "\xC0\xC1\xC2\xC9\xCA";

}  // namespace

std::string numberedJpeg(unsigned int number, std::size_t commentSize) {
  static const std::string picture = SampleScene(32, 16).jpeg(0);
  std::string comment = "\xFF\xD8\xFF\xD9" + std::to_string(number);
  comment.resize(commentSize, '.');
  const std::size_t length = comment.size() + 2;
  return picture.substr(0, 2) + "\xFF\xFE" + static_cast<char>(length >> 8) +
         static_cast<char>(length) + comment + picture.substr(2);
}

std::string uniformJpeg(int width, int height, Coding coding) {
  // The compressor takes these from the environment only.
  const std::pair<const char*, bool> variables[] = {
      {"TJ_OPTIMIZE", coding == Coding::Optimized},
      {"TJ_ARITHMETIC", coding == Coding::Arithmetic || coding == Coding::ArithmeticProgressive},
      {"TJ_PROGRESSIVE", coding == Coding::Progressive || coding == Coding::ArithmeticProgressive}};
  for (const auto& [name, isSet] : variables) ::setenv(name, isSet ? "1" : "0", 1);
  const std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * height, 128);
  unsigned char* jpeg = nullptr;
  unsigned long size = 0;
  tjhandle compressor = tjInitCompress();
  tjCompress2(compressor, pixels.data(), width, 0, height, TJPF_GRAY, &jpeg, &size, TJSAMP_GRAY, 90,
              0);
  for (const auto& variable : variables) ::unsetenv(variable.first);
  std::string bytes(reinterpret_cast<const char*>(jpeg), size);
  tjFree(jpeg);
  tjDestroy(compressor);
  return bytes;
}

std::string withoutHuffmanTables(const std::string& jpeg) {
  std::string kept = jpeg.substr(0, 2);
  std::size_t headerSize = 2;
  for (const std::string& segment : headerOf(jpeg)) {
    headerSize += segment.size();
    if (!isOneOf(segment, kHuffmanTables)) kept += segment;
  }
  return kept + jpeg.substr(headerSize);
}

std::string tablesOf(const std::string& jpeg) {
  std::string kept = jpeg.substr(0, 2);
  for (const std::string& segment : headerOf(jpeg)) {
    if (isOneOf(segment, kTables)) kept += segment;
  }
  return kept + "\xFF\xD9";
}

std::string claiming(unsigned int width, unsigned int height, std::string jpeg) {
  std::size_t at = 2;
  for (const std::string& segment : headerOf(jpeg)) {
    if (isOneOf(segment, kFrameHeaders)) {
      for (const unsigned int value : {height >> 8, height & 255, width >> 8, width & 255}) {
        jpeg[at++ + 5] = static_cast<char>(value);
      }
      break;
    }
    at += segment.size();
  }
  return jpeg;
}
