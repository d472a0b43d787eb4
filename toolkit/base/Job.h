#ifndef VELMAR_TOOLKIT_JOB_H
#define VELMAR_TOOLKIT_JOB_H

#include <cstddef>
#include <memory>
#include <string>

namespace velmar::toolkit {

/// Receives progress, losses and notes from long work. Use it from one thread at a time.
class Job {
 public:
  /// Work that may stop only between frames. While a Stage exists, a request to stop is held until
  /// stopRequested() or waitReadable() asks for it. There is one at a time, begun before any
  /// threads are.
  class Stage {
   public:
    virtual ~Stage() = default;
    /// So many frames are done.
    virtual void advance(std::size_t done) = 0;
    virtual bool stopRequested() = 0;
    /// Waits until `fd` can be read (or is at its end); false if the request to stop comes first.
    virtual bool waitReadable(int fd) = 0;
  };

  virtual ~Job() = default;

  /// \param name   of what is made
  /// \param total  frames; 0 if nobody knows yet
  virtual std::unique_ptr<Stage> begin(const std::string& name, std::size_t total) = 0;
  /// Something is lost or skipped.
  virtual void lose(const std::string& what, const std::string& words) = 0;
  /// So is what was still to be done when the request to stop came.
  virtual void loseRest(const std::string& what, std::size_t done, std::size_t wanted) = 0;
  /// Nothing is lost, but somebody may want to know.
  virtual void note(const std::string& what, const std::string& words) = 0;
};

}  // namespace velmar::toolkit

#endif
