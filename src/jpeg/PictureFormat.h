/// The formats and scales that pictures can be decoded to. The enumerations of both containers have
/// them in this order.
#ifndef VELMAR_JPEG_PICTURE_FORMAT_H
#define VELMAR_JPEG_PICTURE_FORMAT_H

#include <turbojpeg.h>

#include <array>

namespace velmar::detail {

/// 1/1 to 1/8; the last, 1/1 again, serves SCALE_FACTOR_MAX_E.
constexpr std::array<tjscalingfactor, 9> tjSalingFactor = {
    {{1, 1}, {7, 8}, {3, 4}, {5, 8}, {1, 2}, {3, 8}, {1, 4}, {1, 8}, {1, 1}}};

/// RGB, BGR, GRAY.
constexpr std::array<int, 3> tjpfTable = {TJPF_RGB, TJPF_BGR, TJPF_GRAY};

}  // namespace velmar::detail

#endif
