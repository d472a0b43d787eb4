#ifndef VELMAR_TOOLKIT_SHARED_RECORDING_H
#define VELMAR_TOOLKIT_SHARED_RECORDING_H

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "toolkit/base/Failure.h"
#include "toolkit/frames/FramePixels.h"
#include "toolkit/frames/FrameSelection.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// A frame that cannot be read or decoded.
class FrameFailure : public Failure {
 public:
  FrameFailure(const std::string& path, unsigned int index, const FrameFlaw& flaw);

  unsigned int index() const { return index_; }

 private:
  unsigned int index_;
};

/// An open recording for several threads: all members may be called at the same time. Decoders are
/// kept for the next frame of the same form.
class SharedRecording {
 public:
  /// Throws Failure.
  explicit SharedRecording(const std::string& path);

  const Recording& recording() const { return recording_; }
  const RecordingDescription& description() const { return description_; }
  /// Throws Failure if the form leaves nothing of the pictures.
  detail::ImageGeometry geometry(const PixelForm& form);
  /// As FramePixels::read().
  FrameFlaw decode(unsigned int index, const PixelForm& form, std::uint8_t* pixels);
  std::vector<FrameTimes> times() const;
  /// Of an rtv.
  std::vector<FrameTag> tags() const;
  /// As FrameSelection::find().
  std::vector<unsigned int> find(const FrameSelection& selection) const;
  /// Throws FrameFailure.
  std::string jpeg(unsigned int index) const;
  /// Where the frame's bytes are in the file. Throws FrameFailure if they are not.
  const FilePlace& place(unsigned int index) const;

 private:
  struct Decoder {
    PixelForm form;
    FramePixels pixels;
  };

  void checkIndex(unsigned int index) const;
  std::unique_ptr<Decoder> take(const PixelForm& form);
  void giveBack(std::unique_ptr<Decoder> decoder);

  Recording recording_;
  RecordingDescription description_;
  mutable std::mutex mutex_;
  std::vector<std::unique_ptr<Decoder>> idle_;
};

enum class OnFlaw { Stop, Continue };

/// Decodes frames by several threads into `pixels`, geometry(form).size() bytes for each.
/// \param poll  called by the calling thread between frames; what it throws ends the work
/// \return the places in `frames` of those that cannot be had, ascending, and what is wrong; their
///         pixels are zeros. With OnFlaw::Stop those behind may not be decoded.
std::vector<std::pair<std::size_t, FrameFlaw>> decodeMany(
    SharedRecording& recording, const std::vector<unsigned int>& frames, const PixelForm& form,
    unsigned int threads, OnFlaw onFlaw, std::uint8_t* pixels, const std::function<void()>& poll);

}  // namespace velmar::toolkit

#endif
