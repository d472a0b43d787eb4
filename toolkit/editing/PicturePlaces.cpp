#include "toolkit/editing/PicturePlaces.h"

#include "toolkit/frames/FrameLosses.h"
#include "toolkit/jpeg/ExifPlace.h"

namespace velmar::toolkit {

void tellPicturePlaces(const Recording& recording, Job& job) {
  constexpr std::uint64_t kStart = 4096;  // where EXIF data begin, if there are any
  constexpr std::uint64_t kExif = 128 << 10;
  const FileBytes& file = recording.file();
  FrameNews news(recording.path(), job);
  std::string bytes;
  // What cannot be read tells nobody anything.
  const auto reads = [&](const FilePlace& frame, std::uint64_t size) {
    const std::uint64_t there = file.sizeWithin(frame.offset, std::min(frame.size, size));
    return file.tryRead({frame.offset, there}, bytes).empty();
  };
  for (unsigned int i = 0; i < recording.framesCount(); ++i) {
    const FilePlace& frame = recording.places()[i];
    if (!reads(frame, kStart) || bytes.find("Exif") == bytes.npos) continue;
    if (reads(frame, kExif) && hasExifPlace(bytes)) {
      news.add(i, i, "kept with the place in the EXIF data of the picture");
    }
  }
  news.finish();
}

}  // namespace velmar::toolkit
