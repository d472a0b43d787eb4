#include "toolkit/jpeg/Picture.h"

#include <libdeflate.h>
#include <turbojpeg.h>

#include <memory>
#include <new>
#include <stdexcept>

#include "jpeg/TjHandle.h"

namespace velmar::toolkit {

namespace {

std::string bigEndian(std::size_t value) {
  return {static_cast<char>(value >> 24), static_cast<char>(value >> 16),
          static_cast<char>(value >> 8), static_cast<char>(value)};
}

// A chunk: its length, its type, the data and a check sum of both.
void appendChunk(std::string& file, const std::string& type, const std::string& data) {
  file += bigEndian(data.size());
  const std::size_t checked = file.size();
  file.append(type).append(data);
  file += bigEndian(libdeflate_crc32(0, &file[checked], file.size() - checked));
}

std::string compressed(const std::string& bytes, int level) {
  const std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> compressor(
      libdeflate_alloc_compressor(level), libdeflate_free_compressor);
  if (!compressor) throw std::bad_alloc();
  std::string data(libdeflate_zlib_compress_bound(compressor.get(), bytes.size()), '\0');
  data.resize(libdeflate_zlib_compress(compressor.get(), bytes.data(), bytes.size(), data.data(),
                                       data.size()));
  return data;
}

// Each row behind the number of its filter, here the difference to the pixel on the left.
std::string filteredRows(const Picture& picture) {
  constexpr char kSub = 1;
  const std::size_t pixel = picture.gray ? 1 : 3;
  const std::size_t length = pixel * picture.width;
  std::string rows;
  rows.reserve((length + 1) * picture.height);
  for (std::size_t at = 0; at < picture.pixels.size(); at += length) {
    const std::uint8_t* const row = &picture.pixels[at];
    rows += kSub;
    rows.append(reinterpret_cast<const char*>(row), pixel);
    for (std::size_t i = pixel; i < length; ++i) rows += static_cast<char>(row[i] - row[i - pixel]);
  }
  return rows;
}

}  // namespace

std::string encodePng(const Picture& picture, int level) {
  const char colors = picture.gray ? 0 : 2;
  const std::string header =
      bigEndian(picture.width) + bigEndian(picture.height) + std::string{8, colors, 0, 0, 0};
  std::string file = "\x89PNG\r\n\x1A\n";
  appendChunk(file, "IHDR", header);
  appendChunk(file, "IDAT", compressed(filteredRows(picture), level));
  appendChunk(file, "IEND", "");
  return file;
}

std::string encodeJpeg(const Picture& picture, int quality) {
  const detail::TjHandle compressor(tjInitCompress());
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  const int status = tjCompress2(compressor.get(), picture.pixels.data(), picture.width, 0,
                                 picture.height, picture.gray ? TJPF_GRAY : TJPF_RGB, &bytes, &size,
                                 picture.gray ? TJSAMP_GRAY : TJSAMP_420, quality, 0);
  const std::unique_ptr<unsigned char, decltype(&tjFree)> owner(bytes, tjFree);
  if (status != 0) {
    throw std::runtime_error(std::string("cannot make a JPEG file: ") +
                             tjGetErrorStr2(compressor.get()));
  }
  return {reinterpret_cast<const char*>(bytes), size};
}

std::string encodePnm(const Picture& picture) {
  std::string file = picture.gray ? "P5\n" : "P6\n";
  file += std::to_string(picture.width) + " " + std::to_string(picture.height) + "\n255\n";
  return file.append(reinterpret_cast<const char*>(picture.pixels.data()), picture.pixels.size());
}

}  // namespace velmar::toolkit
