#include "support/Pictures.h"

#include "SampleScene.h"

std::string numberedJpeg(unsigned int number, std::size_t commentSize) {
  static const std::string picture = SampleScene(32, 16).jpeg(0);
  std::string comment = "\xFF\xD8\xFF\xD9" + std::to_string(number);
  comment.resize(commentSize, '.');
  const std::size_t length = comment.size() + 2;
  return picture.substr(0, 2) + "\xFF\xFE" + static_cast<char>(length >> 8) +
         static_cast<char>(length) + comment + picture.substr(2);
}
