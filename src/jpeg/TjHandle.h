#ifndef VELMAR_JPEG_TJ_HANDLE_H
#define VELMAR_JPEG_TJ_HANDLE_H

#include <turbojpeg.h>

#include <memory>
#include <type_traits>

namespace velmar::detail {

struct TjDestroy {
  void operator()(tjhandle handle) const { tjDestroy(handle); }
};

/// Owns a TurboJPEG compressor or decompressor.
using TjHandle = std::unique_ptr<std::remove_pointer_t<tjhandle>, TjDestroy>;

}  // namespace velmar::detail

#endif
