#ifndef VELMAR_PYTHON_WRITER_HANDLE_H
#define VELMAR_PYTHON_WRITER_HANDLE_H

#include <pybind11/pybind11.h>

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "toolkit/tables/TagsCsv.h"
#include "toolkit/writing/OutputGuard.h"
#include "toolkit/writing/RecordingWriter.h"

namespace velmar::python {

/// Writes one recording. Thread-safe. One that is let go without finish() keeps its frames in the
/// temporary file.
class WriterHandle {
 public:
  /// \param description  by the names of the package's create()
  /// \param capacity     slots of an rtv's tag table
  /// Throws toolkit::Failure.
  WriterHandle(const std::string& path, const pybind11::dict& description, unsigned int capacity,
               bool overwrite);
  ~WriterHandle() { abandon(); }

  // All below throw toolkit::Failure.

  /// Fails once it is finished or abandoned.
  /// \param tag  values as text by the names of toolkit::tagColumns()
  void add(const pybind11::buffer& jpeg, std::uint64_t captureTime, std::uint64_t arrivalTime,
           const std::map<std::string, std::string>& tag);
  /// Does nothing if it is over.
  void finish();
  /// Leaves the frames in the temporary file. Does not throw.
  void abandon();
  unsigned int frames() const { return frames_; }

 private:
  void open();
  void setValue(toolkit::FrameTag& tag, const std::string& name, const std::string& text) const;

  const std::string path_;
  const unsigned int capacity_;
  std::mutex mutex_;
  toolkit::RecordingDescription description_;
  std::map<std::string, decltype(toolkit::TagColumn::set)> tagColumns_;
  unsigned int frames_ = 0;
  bool isOver_ = false;
  std::optional<toolkit::ReservedOutput> reserved_;
  std::optional<toolkit::RecordingWriter> writer_;
};

}  // namespace velmar::python

#endif
