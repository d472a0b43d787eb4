#include <algorithm>
#include <string>

#include "Recovery.h"
#include "container/img/FrameIndex.h"
#include "support.h"

using namespace velmar::detail;

// With the file's own index as the journal, with a part of that, or without: an empty journal is
// like none.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TemporaryFile file("img.tmp");
  static const TemporaryFile journal("img.tmp.index");
  static const Recovery recovery(file.path(), ".img", {"--fps", "30"});
  file.write(data, size);
  const std::size_t indexSize = size - std::min<std::size_t>(size, kFrameIndexStart);
  const std::size_t records = size % 3;
  journal.write(data + size - indexSize, std::min(indexSize, records * sizeof(FrameIndex)));
  recovery.run();
  return 0;
}
