#ifndef VELMAR_TOOLKIT_PICTURE_SOURCE_H
#define VELMAR_TOOLKIT_PICTURE_SOURCE_H

#include <optional>
#include <string>

#include "jpeg/JpegDecoder.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/jpeg/Picture.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/recording/StoredFrame.h"

namespace velmar::toolkit {

/// What becomes of a frame. The stored bytes stay as they are; the rest is for the other kinds.
struct PictureForm {
  enum class Kind { Stored, Png, Pnm };

  Kind kind = Kind::Stored;
  VELMAR_FORMAT_E format = VELMAR_FORMAT_RGB_E;
  SCALE_FACTOR_E scale = SCALE_FACTOR_1_1_E;
  unsigned short cropTop = 0;     ///< rows, before scaling
  unsigned short cropBottom = 0;  ///< rows, before scaling

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
  void limitMemory(std::uint64_t bytes) { memoryLimit_ = bytes; }
  /// What is wrong with the frame; if nothing is, `bytes` has it.
  FrameFlaw read(unsigned int index, std::string& bytes);

 private:
  void preparePicture();
  /// Of the picture and of what is made of it.
  std::uint64_t pictureMemory() const;
  /// Why the frame that was read is not to be decoded; null if it may be.
  const char* refusal(detail::JpegSize size) const;

  PictureForm form_;
  Recording recording_;
  std::uint64_t memoryLimit_ = UINT64_MAX;
  detail::JpegDecoder decoder_{TJFLAG_LIMITSCANS};
  std::optional<detail::ImageGeometry> geometry_;  // if it decodes
  Picture picture_;
  std::string jpeg_;  // that is decoded
  JpegInspector inspector_;
};

}  // namespace velmar::toolkit

#endif
