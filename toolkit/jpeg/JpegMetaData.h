#ifndef VELMAR_TOOLKIT_JPEG_META_DATA_H
#define VELMAR_TOOLKIT_JPEG_META_DATA_H

#include <optional>
#include <string>

namespace velmar::toolkit {

/// The JPEG without what tells about it: Exif and XMP (APP1), IPTC (APP13), comments, and what
/// stands between its segments and behind its end. All other bytes stay as they are. Nothing if the
/// segments of its header cannot be told apart.
std::optional<std::string> withoutMetaData(const std::string& jpeg);

}  // namespace velmar::toolkit

#endif
