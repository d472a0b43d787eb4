/// \file
/// Marks what the shared library exports; everything else stays hidden.
#ifndef VELMAR_VIDEO_EXPORT_H
#define VELMAR_VIDEO_EXPORT_H

/// Marks a declaration that the library exports.
#define VELMAR_VIDEO_API __attribute__((visibility("default")))

#endif
