#ifndef VELMAR_TOOLKIT_PICTURE_SOURCE_H
#define VELMAR_TOOLKIT_PICTURE_SOURCE_H

#include <optional>
#include <string>

#include "toolkit/frames/FramePixels.h"
#include "toolkit/frames/StoredFrame.h"
#include "toolkit/jpeg/Picture.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// What becomes of a frame. The stored bytes stay as they are; the other kinds are decoded.
struct PictureForm : PixelForm {
  enum class Kind { Stored, Jpeg, Png, Pnm };

  Kind kind = Kind::Stored;
  int quality = 90;     ///< of a JPEG that is encoded again, 1 to 100
  int compression = 1;  ///< of a PNG, 1 (quick) to 12 (small)

  bool decodes() const { return kind != Kind::Stored; }
  /// Of the names of such files.
  const char* extension() const;
};

/// Gives the frames of a recording as contents of picture files. One for each thread.
class PictureSource {
 public:
  /// Throws Failure if the form leaves nothing of the pictures.
  PictureSource(const std::string& path, const PictureForm& form);

  const Recording& recording() const { return recording_; }
  const PictureForm& form() const { return form_; }
  /// Memory that the frames may take as a rule, bytes.
  std::uint64_t memory() const;
  /// No frame may take more to decode.
  void limitMemory(std::uint64_t bytes);
  /// What is wrong with the frame; if nothing is, `bytes` has it.
  FrameFlaw read(unsigned int index, std::string& bytes);

 private:
  PictureForm form_;
  Recording recording_;
  std::optional<FramePixels> pixels_;  // if it decodes
  Picture picture_;
};

}  // namespace velmar::toolkit

#endif
