#ifndef VELMAR_PYTHON_WRITER_HANDLE_H
#define VELMAR_PYTHON_WRITER_HANDLE_H

#include <pybind11/pybind11.h>

#include <mutex>
#include <optional>
#include <string>

#include "toolkit/recording/OutputGuard.h"
#include "toolkit/recording/RecordingWriter.h"

namespace velmar::python {

/// Writes one recording. Any thread.
class WriterHandle {
 public:
  /// \param description  by the names of the package's create()
  /// \param capacity     slots of an rtv's tag table
  /// Throws toolkit::Failure.
  WriterHandle(const std::string& path, const pybind11::dict& description, unsigned int capacity,
               bool overwrite);
  ~WriterHandle();

  // All below throw toolkit::Failure, also once it is finished or abandoned.

  void add(const pybind11::buffer& jpeg, std::uint64_t captureTime, std::uint64_t arrivalTime,
           const pybind11::dict& tag, const pybind11::dict& signals);
  void finish();
  /// Leaves the frames in the temporary file.
  void abandon();
  unsigned int frames() const { return frames_; }

 private:
  toolkit::RecordingWriter& opened();

  std::string path_;
  std::mutex mutex_;
  toolkit::RecordingDescription description_;
  unsigned int frames_ = 0;
  std::optional<toolkit::ReservedOutput> reserved_;
  std::optional<toolkit::RecordingWriter> writer_;
};

}  // namespace velmar::python

#endif
