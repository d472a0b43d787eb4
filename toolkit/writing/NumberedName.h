#ifndef VELMAR_TOOLKIT_NUMBERED_NAME_H
#define VELMAR_TOOLKIT_NUMBERED_NAME_H

#include <cstddef>
#include <string>

namespace velmar::toolkit {

/// The names of several outputs. Where the given name has "%04d" (or "%03d" and so on), they have
/// their number; where it has none, behind a hyphen before the extension: "scene-0001.rtv".
class NumberedName {
 public:
  /// \param path  with an extension
  explicit NumberedName(const std::string& path);

  /// Of the number with leading zeros, counted from 1.
  std::string at(std::size_t number) const;

 private:
  std::string before_;
  std::string behind_;
  std::size_t digits_ = 4;
};

}  // namespace velmar::toolkit

#endif
