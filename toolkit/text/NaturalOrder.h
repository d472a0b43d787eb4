#ifndef VELMAR_TOOLKIT_NATURAL_ORDER_H
#define VELMAR_TOOLKIT_NATURAL_ORDER_H

#include <string_view>

namespace velmar::toolkit {

/// Whether `left` comes before `right` as people count: "2.jpg" before "10.jpg". Numbers that
/// differ only in leading zeros come in the order of the whole texts.
bool naturalLess(std::string_view left, std::string_view right);

}  // namespace velmar::toolkit

#endif
