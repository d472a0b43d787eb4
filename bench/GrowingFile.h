/// Recordings of any length that take no room on the disk.
#ifndef VELMAR_BENCH_GROWING_FILE_H
#define VELMAR_BENCH_GROWING_FILE_H

#include <optional>
#include <string>

#include "Bench.h"
#include "Files.h"

/// Keeps a file that is being written sparse: what has been written turns into a hole before it
/// reaches the disk, the file's length stays.
class Hollow {
 public:
  /// \param from  what lies before stays as it is
  Hollow(std::string path, unsigned long from) : path_(std::move(path)), from_(from) {}

  void empty();

 private:
  std::string path_;
  unsigned long from_;
};

/// Adding a frame to a recording that has `framesBefore` already, beside write(2) at the end of a
/// file that is as long.
Row addingRow(Container container, const Frames& frames, unsigned int framesBefore,
              std::optional<double> reach);

#endif
