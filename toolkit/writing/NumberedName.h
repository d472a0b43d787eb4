#ifndef VELMAR_TOOLKIT_NUMBERED_NAME_H
#define VELMAR_TOOLKIT_NUMBERED_NAME_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace velmar::toolkit {

/// The names of several outputs. Where the file name that is given has "%04d" (or "%03d" and so
/// on), they have their number; %Y, %m, %d, %H, %M and %S in it are year, month, day, hour, minute
/// and second of a time in UTC. Where it has nothing of these, the number is behind a hyphen before
/// the extension: "scene-0001.rtv".
class NumberedName {
 public:
  /// \param path       with an extension
  /// \param isPattern  otherwise the number is added, whatever the name has
  explicit NumberedName(const std::string& path, bool isPattern = true);

  /// Of the number with leading zeros, counted from 1.
  /// \param time  microseconds since 1970
  std::string at(std::size_t number, std::uint64_t time) const;

 private:
  std::string start_;    ///< of the path, as it is
  std::string pattern_;  ///< of the rest
};

}  // namespace velmar::toolkit

#endif
