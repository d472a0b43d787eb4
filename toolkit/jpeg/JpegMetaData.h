#ifndef VELMAR_TOOLKIT_JPEG_META_DATA_H
#define VELMAR_TOOLKIT_JPEG_META_DATA_H

#include <string>

namespace velmar::toolkit {

/// The JPEG without what tells about it: Exif and XMP (APP1), IPTC (APP13) and comments, as far as
/// they stand before the picture data. All other bytes stay as they are.
std::string withoutMetaData(const std::string& jpeg);

}  // namespace velmar::toolkit

#endif
