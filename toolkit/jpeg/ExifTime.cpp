#include "toolkit/jpeg/ExifTime.h"

#include <libexif/exif-data.h>
#include <libexif/exif-loader.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "toolkit/base/Failure.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/text/TimeFormat.h"

namespace velmar::toolkit {

namespace {

struct ExifDelete {
  void operator()(ExifLoader* loader) const { exif_loader_unref(loader); }
  void operator()(ExifData* data) const { exif_data_unref(data); }
};

// The text of a tag; empty if it is not there.
std::string textOf(ExifData& data, ExifTag tag) {
  const ExifEntry* const entry = exif_content_get_entry(data.ifd[EXIF_IFD_EXIF], tag);
  if (entry == nullptr || entry->format != EXIF_FORMAT_ASCII) return "";
  const std::string text(reinterpret_cast<const char*>(entry->data), entry->size);
  return text.substr(0, text.find_last_not_of(std::string_view(" \0", 2)) + 1);
}

}  // namespace

std::uint64_t exifTime(const std::string& path) {
  const std::unique_ptr<ExifLoader, ExifDelete> loader(exif_loader_new());
  if (!loader) throw std::bad_alloc();
  exif_loader_write_file(loader.get(), path.c_str());
  const std::unique_ptr<ExifData, ExifDelete> data(exif_loader_get_data(loader.get()));
  std::string text = data ? textOf(*data, EXIF_TAG_DATE_TIME_ORIGINAL) : "";
  if (text.empty()) {
    throw Failure(path, "its EXIF data do not say when it was taken (DateTimeOriginal)",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  const std::string fraction = textOf(*data, EXIF_TAG_SUB_SEC_TIME_ORIGINAL);
  const std::string offset = textOf(*data, EXIF_TAG_OFFSET_TIME_ORIGINAL);
  std::string pattern = "%Y:%m:%d %H:%M:%S";
  if (!fraction.empty()) text += "." + fraction;
  // Of blanks and a colon if it is not known.
  if (offset.find_first_of("0123456789Z") != offset.npos) {
    pattern += "%z";
    text += offset;
  }
  const auto time = TimeFormat::named(pattern)->parse(text);
  if (time && *time >= 0) return static_cast<std::uint64_t>(*time);
  throw Failure(path, "its EXIF data name no time: " + printable(text),
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

std::vector<std::uint64_t> sortByExifTimes(std::vector<std::string>& files) {
  std::vector<std::pair<std::uint64_t, std::string>> taken;
  taken.reserve(files.size());
  for (const std::string& file : files) taken.emplace_back(exifTime(file), file);
  std::stable_sort(taken.begin(), taken.end(),
                   [](auto& one, auto& other) { return one.first < other.first; });
  std::vector<std::uint64_t> times;
  times.reserve(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    times.push_back(taken[i].first);
    files[i] = taken[i].second;
  }
  return times;
}

}  // namespace velmar::toolkit
