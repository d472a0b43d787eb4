#ifndef VELMAR_PYTHON_FILE_HANDLE_H
#define VELMAR_PYTHON_FILE_HANDLE_H

#include <pybind11/numpy.h>

#include <memory>
#include <mutex>
#include <string>

#include "base/MemoryMap.h"
#include "toolkit/frames/SharedRecording.h"

namespace velmar::python {

/// A map of a file, for views of its bytes, which keep it.
class FileMap {
 public:
  /// Throws toolkit::Failure.
  explicit FileMap(const toolkit::FileBytes& file);

  pybind11::buffer_info buffer() const;

 private:
  detail::MemoryMap map_;
  std::size_t size_;
};

/// A recording that can be closed while other threads use it. They finish what they have begun.
class FileHandle {
 public:
  /// Throws toolkit::Failure.
  explicit FileHandle(const std::string& path);

  void close();

  // All below throw toolkit::Failure once it is closed, and toolkit::FrameFailure for a frame.

  /// What the recording says of itself, by name.
  pybind11::dict facts() const;
  /// Plain JSON, "null" for what is none.
  std::string cameraParams() const;
  std::string extendedInfo() const;
  pybind11::array times() const;
  pybind11::array sizes() const;
  pybind11::array tags() const;
  pybind11::array positions() const;
  pybind11::dict signals() const;
  /// (n,) int64: the frames for which the condition holds, perhaps none. See
  /// toolkit::parseFrameExpression.
  pybind11::array find(const std::string& expression) const;
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
  /// A read-only memoryview of the frame's bytes; it keeps the map alive.
  pybind11::object jpegView(unsigned int index);

 private:
  std::shared_ptr<toolkit::SharedRecording> opened() const;

  std::string path_;
  mutable std::mutex mutex_;
  std::shared_ptr<toolkit::SharedRecording> recording_;
  pybind11::object view_;  // of a FileMap, once it has been asked for
};

}  // namespace velmar::python

#endif
