#include "toolkit/jpeg/Picture.h"

#include <png.h>

#include <stdexcept>

namespace velmar::toolkit {

std::string encodePng(const Picture& picture) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = picture.width;
  image.height = picture.height;
  image.format = picture.gray ? PNG_FORMAT_GRAY : PNG_FORMAT_RGB;
  image.flags = PNG_IMAGE_FLAG_FAST;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  std::string file(size, '\0');
  if (png_image_write_to_memory(&image, file.data(), &size, 0, picture.pixels.data(), 0, nullptr) ==
      0) {
    throw std::runtime_error(std::string("cannot make a PNG file: ") + image.message);
  }
  file.resize(size);
  return file;
}

std::string encodePnm(const Picture& picture) {
  std::string file = picture.gray ? "P5\n" : "P6\n";
  file += std::to_string(picture.width) + " " + std::to_string(picture.height) + "\n255\n";
  return file.append(reinterpret_cast<const char*>(picture.pixels.data()), picture.pixels.size());
}

}  // namespace velmar::toolkit
