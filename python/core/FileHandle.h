#ifndef VELMAR_PYTHON_FILE_HANDLE_H
#define VELMAR_PYTHON_FILE_HANDLE_H

#include <pybind11/numpy.h>

#include <memory>
#include <string>
#include <string_view>

#include "core/SharedRecording.h"

namespace velmar::python {

/// The bytes of a frame in the map of its file, which lives as long as this.
struct FrameBytes {
  std::shared_ptr<SharedRecording> recording;
  std::string_view bytes;

  pybind11::buffer_info buffer() const;
};

/// How frames are decoded, as the package says it: names of the format and the scale, rows.
struct FormArguments {
  std::string format;
  std::string scale;
  long top;
  long bottom;
};

/// A recording that can be closed while other threads use it. They finish what they have begun.
class FileHandle {
 public:
  /// Throws toolkit::Failure.
  explicit FileHandle(const std::string& path);

  void close();
  bool isClosed() const { return get() == nullptr; }

  // All below throw toolkit::Failure once it is closed, and FrameError for a frame.

  /// What the recording says of itself, by name.
  pybind11::dict facts() const;
  pybind11::array times() const;
  pybind11::array tags() const;
  pybind11::array positions() const;
  pybind11::dict signals() const;
  /// (height, width, channels) of the pictures.
  pybind11::tuple shape(const std::string& format, const std::string& scale, long top,
                        long bottom) const;
  /// Into an array of that shape.
  void decode(unsigned int index, const std::string& format, const std::string& scale, long top,
              long bottom, const pybind11::array& out) const;
  /// Into an array of that shape with the number of frames before it.
  /// \param masks  whether frames that cannot be had are zeros; otherwise the first is an error
  /// \return the places of those that cannot be had
  std::vector<std::size_t> decodeMany(const std::vector<unsigned int>& indices,
                                      const std::string& format, const std::string& scale, long top,
                                      long bottom, const pybind11::array& out, unsigned int threads,
                                      bool masks) const;
  pybind11::bytes jpeg(unsigned int index) const;
  pybind11::object jpegView(unsigned int index) const;

 private:
  std::shared_ptr<SharedRecording> get() const;
  std::shared_ptr<SharedRecording> opened() const;

  std::string path_;
  mutable std::mutex mutex_;
  std::shared_ptr<SharedRecording> recording_;
};

}  // namespace velmar::python

#endif
