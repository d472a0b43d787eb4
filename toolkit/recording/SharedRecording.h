#ifndef VELMAR_TOOLKIT_SHARED_RECORDING_H
#define VELMAR_TOOLKIT_SHARED_RECORDING_H

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "toolkit/recording/FramePixels.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// A frame that cannot be had.
struct FrameError {
  std::string path;
  unsigned int index;
  FrameFlaw flaw;
};

/// An open recording for several threads. Decoders are kept for the next frame of the same form.
class SharedRecording {
 public:
  /// Throws Failure.
  explicit SharedRecording(const std::string& path);

  const Recording& recording() const { return recording_; }
  const RecordingDescription& description() const { return description_; }
  /// For calls that are not for several threads.
  std::mutex& mutex() const { return mutex_; }

  /// Throws Failure if the form leaves nothing of the pictures.
  detail::ImageGeometry geometry(const PixelForm& form);
  FrameFlaw decode(unsigned int index, const PixelForm& form, std::uint8_t* pixels);
  /// Throws FrameError.
  std::string jpeg(unsigned int index) const;
  /// Where the frame's bytes are in the file. Throws FrameError if they are not.
  const FilePlace& place(unsigned int index) const;

 private:
  struct Decoder {
    PixelForm form;
    std::unique_ptr<FramePixels> pixels;
  };

  Decoder take(const PixelForm& form);
  void giveBack(Decoder decoder);

  Recording recording_;
  RecordingDescription description_;
  mutable std::mutex mutex_;
  std::vector<Decoder> idle_;
};

/// Decodes frames one behind the other into `pixels`, `threads` at a time.
/// \return the flaws of those that cannot be had, which are zeros then
std::vector<std::pair<std::size_t, FrameFlaw>> decodeMany(SharedRecording& recording,
                                                          const std::vector<unsigned int>& frames,
                                                          const PixelForm& form,
                                                          unsigned int threads, bool stopsAtFlaw,
                                                          std::uint8_t* pixels);

}  // namespace velmar::toolkit

#endif
